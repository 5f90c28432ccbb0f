#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace host {

/// Reads a file, or the standard input, line by line, of which each may be of any length: of one
/// longer than maxBytes only the beginning is kept. Holds no more than two such lines.
class LineReader {
public:
    static constexpr int maxBytes = 1024 * 1024;

    struct Line {
        /// Without the end of the line.
        QByteArray text;
        /// Counted from 1.
        int number = 0;
        /// It was longer than maxBytes.
        bool cut = false;
    };

    enum class Next {
        Line,
        /// There was none in time.
        Nothing,
        /// Nor will there be any more.
        End,
    };

    /// `file` is a name, or "-" for the standard input. One that is followed has no end unless it
    /// is a pipe: at its end it is asked for more, and where it was made anew, or shorter, it is
    /// read from its new beginning. Throws Failure, naming it, if it cannot be read.
    LineReader(QString file, bool follow);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Waits for a line, or for a signal, for so long. Throws Failure if the file cannot be read.
    Next next(Line& line, std::chrono::milliseconds patience);

    /// How many bytes of the file have become lines, and how many it has; unknown of a pipe.
    qint64 bytesRead() const { return m_bytesRead; }
    std::optional<qint64> size() const;

    const QString& name() const { return m_name; }

private:
    void open();
    void close() const;
    bool takeLine(Line& line);
    bool takeLastLine(Line& line);
    /// False at the end.
    bool fill();
    bool hasInput(std::chrono::milliseconds patience) const;
    /// Whether there is something to read from another beginning.
    bool beginAnew();
    /// What was read before another beginning.
    void forget();

    QString m_file;
    QString m_name;
    bool m_follow;
    int m_descriptor = -1;
    bool m_regular = false;
    QByteArray m_buffer;
    /// What stands before it in the buffer has become lines.
    int m_begin = 0;
    /// Up to here there is no end of a line in the buffer.
    int m_searched = 0;
    bool m_cutting = false;
    int m_lineNumber = 0;
    qint64 m_bytesRead = 0;
    /// What came from the file since it was opened.
    qint64 m_position = 0;
};

} // namespace host
