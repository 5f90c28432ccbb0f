#include "host/file_writing.h"

#include "host/failure.h"

#include <QFile>
#include <QSaveFile>

namespace host {

namespace {

void require(bool done, QFileDevice& file) {
    if (!done) {
        throw Failure(QStringLiteral("cannot write %1: %2").arg(file.fileName(), writeFault(file)));
    }
}

void openAndWrite(QFileDevice& file, const QByteArray& content) {
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
                file.flush(),
            file);
}

} // namespace

QString writeFault(QFileDevice& file) {
    if (file.isOpen() && file.flush() && file.putChar('\n')) {
        file.flush();
    }
    return file.errorString();
}

void writeFile(const QString& fileName, const QByteArray& content) {
    QFile file(fileName);
    openAndWrite(file, content);
}

void replaceFile(const QString& fileName, const QByteArray& content) {
    QSaveFile file(fileName);
    // What is still in the buffer when it is called, commit() writes without looking whether it
    // can.
    openAndWrite(file, content);
    require(file.commit(), file);
}

} // namespace host
