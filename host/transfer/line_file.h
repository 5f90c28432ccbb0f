#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QString>

#include <functional>

namespace host {

/// What tells one file of lines from another.
struct LineFileSum {
    qint64 lines = 0;
    qint64 bytes = 0;
    /// Hexadecimal.
    QByteArray sha256;

    friend bool operator==(const LineFileSum&, const LineFileSum&) = default;
};

/// Writes a file of lines beside its name, with ".part" behind, and gives it its name when it is
/// whole and on the disk; what does not become whole is removed. Throws Failure, naming the file
/// and what the system says, as soon as something cannot be written.
class LineFileWriter {
public:
    explicit LineFileWriter(const QString& fileName);
    ~LineFileWriter();
    LineFileWriter(const LineFileWriter&) = delete;
    LineFileWriter& operator=(const LineFileWriter&) = delete;

    /// `line` comes without its end.
    void add(const QByteArray& line);

    /// Puts the file on the disk under its name; blocks on the disk.
    LineFileSum finish();

private:
    void require(bool done);

    QString m_fileName;
    QFile m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    LineFileSum m_sum;
    bool m_whole = false;
};

/// Reads a file of lines, one at a time. Throws Failure, naming the file, if it cannot be read.
class LineFileReader {
public:
    explicit LineFileReader(const QString& fileName);

    /// False at the end of the file. `line` comes without its end.
    bool next(QByteArray& line);

    /// Of the last line, counted from 1.
    qint64 lineNumber() const { return m_lineNumber; }

private:
    QFile m_file;
    qint64 m_lineNumber = 0;
};

/// Reads the whole file, and tells `read` how many bytes each time. Throws as LineFileReader.
LineFileSum sumOf(const QString& fileName, const std::function<void(qint64)>& read);

} // namespace host
