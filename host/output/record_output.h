#pragma once

#include "host/console.h"

#include <QDateTime>
#include <QJsonArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace host {

enum class OutputForm {
    /// For people: aligned columns, or a line for each field where the columns are wider than the
    /// terminal. Shown when all records are there.
    Table,
    /// A JSON object a line.
    JsonLines,
    /// RFC 4180, with the fields' names in the first line.
    Csv,
};

/// One field of the records that a command shows.
struct Field {
    /// Key in JSON, first line in CSV.
    QString name;
    /// Heading in a table; a field without one is in the other forms only.
    QString title;
    bool number = false;
    /// In a table, longer text is cut at so many characters; 0 for never.
    int widest = 0;
};

/// Shows the records of a command, in the form that its user has chosen. Borrows the console.
class RecordOutput {
public:
    RecordOutput(Console& console, OutputForm form, std::vector<Field> fields);

    /// One record: what each field holds, null for nothing. JSON shows the cells as they are; the
    /// other forms show objects and lists as their JSON text.
    void add(const QJsonArray& cells);

    /// After the last record: a table is shown now. Whether all of it has arrived, the console
    /// knows (Console::requireWritten()).
    void finish();

private:
    void addRow(const QJsonArray& cells);
    void addLine(const QJsonArray& cells);
    void addCsv(const QStringList& cells);

    Console& m_console;
    OutputForm m_form;
    std::vector<Field> m_fields;
    std::vector<QStringList> m_rows;
};

/// The instant in ISO 8601 with its zone, with milliseconds if it has any; null for an invalid one.
QJsonValue timeCell(const QDateTime& time, bool local);

} // namespace host
