#pragma once

#include <QString>
#include <QStringList>

#include <ostream>
#include <vector>

namespace host {

class Progress;

/// Where the program writes its results. On a terminal with bold headings and moving progress bars;
/// elsewhere plain lines without any control characters, the same in every run on the same input.
///
/// Borrows the stream.
class Console {
public:
    enum class Kind { Terminal, Plain };

    struct Column {
        QString title;
        bool number = false;
    };

    Console(std::ostream& stream, Kind kind) : m_stream(stream), m_kind(kind) {}

    /// The program's standard output.
    static Console standardOutput();

    void line(const QString& text = {});

    /// An empty line and the title of what follows.
    void heading(const QString& title);

    /// The first of the texts, one a line, and how many more there are; nothing if there are none.
    void complaints(const QStringList& texts);

    /// Each row must have as many cells as there are columns.
    void table(const std::vector<Column>& columns, const std::vector<QStringList>& rows);

    /// A bar of `total` steps, to be advanced by the caller while it lives. One at a time.
    Progress progress(const QString& title, int total);

private:
    friend class Progress;

    std::ostream& m_stream;
    Kind m_kind;
};

} // namespace host
