#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>
#include <string>
#include <vector>

namespace host {

class Progress;

/// Where the program writes its results, or what it remarks on them. On a terminal with bold
/// headings and moving progress bars; elsewhere plain lines without any control characters, the
/// same in every run on the same input.
///
/// Borrows the stream.
class Console {
public:
    enum class Kind { Terminal, Plain };

    struct Column {
        QString title;
        bool number = false;
        /// Longer text is cut at so many characters, and before that where the terminal is too
        /// narrow for the row; 0 for a column whose text is never cut.
        int widest = 0;
    };

    /// `width` is a terminal's, in columns.
    Console(std::ostream& stream, Kind kind, int width = 80)
        : m_stream(stream), m_kind(kind), m_width(width) {}

    /// The program's standard output.
    static Console standardOutput();

    /// The program's standard error.
    static Console standardError();

    /// Throws Failure if something written has not arrived, as on a full disk. If it is because
    /// nobody reads on, ends the program instead, quietly, by the signal that ends every filter so,
    /// whether it was ignored until now or not.
    void requireWritten();

    void line(const QString& text = {});

    bool isTerminal() const { return m_kind == Kind::Terminal; }
    int width() const { return m_width; }

    /// On a terminal, a line that the next one, of either kind, takes the place of. Nowhere else.
    void passingLine(const std::string& text);

    /// As they are.
    void bytes(const QByteArray& bytes);

    /// An empty line and the title of what follows.
    void heading(const QString& title);

    /// The first of the texts, one a line, and how many more there are; nothing if there are none.
    void complaints(const QStringList& texts);

    /// Each row must have as many cells as there are columns. On a terminal that is too narrow,
    /// each row is a block with a line for each cell. Control characters are shown as \xNN.
    void table(const std::vector<Column>& columns, const std::vector<QStringList>& rows);

    /// A bar of `total` steps, to be advanced by the caller while it lives. One at a time.
    Progress progress(const QString& title, int total);

private:
    friend class Progress;

    /// To be called when something has been written, before the cause of a fault is forgotten.
    void noteFault();
    void blocks(const std::vector<Column>& columns, const std::vector<QStringList>& rows);

    std::ostream& m_stream;
    Kind m_kind;
    int m_width;
    bool m_passing = false;
    /// The first error of the system's; 0 if there was none.
    int m_fault = 0;
};

} // namespace host
