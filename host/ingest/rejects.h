#pragma once

#include "host/ingest/account.h"
#include "host/ingest/uplink.h"

#include <QFile>
#include <QString>

namespace host {

class Console;

/// The lines that were refused: counts them, says the first of them, and keeps all in a file if
/// there is one, a JSON object a line: {"file", "line_number", "reason", "line"}. Borrows what it
/// is given.
class Rejects {
public:
    /// Adds to the file, unless its name is empty. Throws Failure if it cannot be opened.
    Rejects(const QString& file, IngestAccount& account, Console& remarks);

    /// Throws Failure if the file does not take it.
    void add(const Source& source, const QString& reason);

private:
    QFile m_file;
    IngestAccount& m_account;
    Console& m_remarks;
};

} // namespace host
