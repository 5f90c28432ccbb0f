#include "host/transfer/line_file.h"

#include "host/failure.h"
#include "host/file_writing.h"

#include <unistd.h>

namespace host {

LineFileWriter::LineFileWriter(const QString& fileName)
    : m_fileName(fileName), m_file(fileName + QStringLiteral(".part")) {
    require(m_file.open(QIODevice::WriteOnly));
}

LineFileWriter::~LineFileWriter() {
    if (!m_whole) {
        // QFile would keep a file that it cannot write the rest of.
        m_file.close();
        QFile::remove(m_file.fileName());
    }
}

void LineFileWriter::add(const QByteArray& line) {
    const QByteArray whole = line + '\n';
    require(m_file.write(whole) == whole.size());
    m_hash.addData(whole);
    ++m_sum.lines;
    m_sum.bytes += whole.size();
}

LineFileSum LineFileWriter::finish() {
    require(m_file.flush());
    if (::fsync(m_file.handle()) != 0) {
        throw Failure(QStringLiteral("cannot write %1: %2").arg(m_fileName, qt_error_string()));
    }
    m_file.close();
    // Of an earlier export that did not come to an end.
    QFile::remove(m_fileName);
    require(m_file.rename(m_fileName));
    m_whole = true;
    m_sum.sha256 = m_hash.result().toHex();
    return m_sum;
}

void LineFileWriter::require(bool done) {
    if (!done) {
        throw Failure(QStringLiteral("cannot write %1: %2").arg(m_fileName, writeFault(m_file)));
    }
}

LineFileReader::LineFileReader(const QString& fileName) : m_file(fileName) {
    if (!m_file.open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("cannot read %1: %2").arg(fileName, m_file.errorString()));
    }
}

bool LineFileReader::next(QByteArray& line) {
    line = m_file.readLine();
    if (line.isEmpty()) {
        if (m_file.error() != QFileDevice::NoError) {
            throw Failure(
                QStringLiteral("cannot read %1: %2").arg(m_file.fileName(), m_file.errorString()));
        }
        return false;
    }
    ++m_lineNumber;
    if (line.endsWith('\n')) {
        line.chop(1);
    }
    return true;
}

LineFileSum sumOf(const QString& fileName, const std::function<void(qint64)>& read) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString()));
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    LineFileSum sum;
    QByteArray block(1 << 20, '\0');
    while (true) {
        const auto size = file.read(block.data(), block.size());
        if (size < 0) {
            throw Failure(QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString()));
        }
        if (size == 0) {
            sum.sha256 = hash.result().toHex();
            return sum;
        }
        const auto bytes = QByteArray::fromRawData(block.constData(), static_cast<int>(size));
        hash.addData(bytes);
        sum.lines += bytes.count('\n');
        sum.bytes += size;
        read(size);
    }
}

} // namespace host
