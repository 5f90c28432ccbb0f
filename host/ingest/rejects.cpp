#include "host/ingest/rejects.h"

#include "host/console.h"
#include "host/failure.h"
#include "host/file_writing.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace host {

namespace {

constexpr int remarksShown = 20;

} // namespace

Rejects::Rejects(const QString& file, IngestAccount& account, Console& remarks)
    : m_file(file), m_account(account), m_remarks(remarks) {
    if (!file.isEmpty() &&
        !m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        throw Failure(QStringLiteral("cannot write the file for rejected lines %1: %2")
                          .arg(file, m_file.errorString()));
    }
}

void Rejects::add(const Source& source, const QString& reason) {
    if (m_account.rejected < remarksShown) {
        m_remarks.line(QStringLiteral("%1, line %2 rejected: %3")
                           .arg(source.file)
                           .arg(source.lineNumber)
                           .arg(reason));
    } else if (m_account.rejected == remarksShown) {
        m_remarks.line(QStringLiteral("… further rejected lines are only counted"));
    }
    ++m_account.rejected;
    if (!m_file.isOpen()) {
        return;
    }
    const QJsonObject reject{
        {QStringLiteral("file"), source.file},
        {QStringLiteral("line_number"), source.lineNumber},
        {QStringLiteral("reason"), reason},
        {QStringLiteral("line"), QString::fromUtf8(source.line)},
    };
    const QByteArray text = QJsonDocument(reject).toJson(QJsonDocument::Compact) + '\n';
    if (m_file.write(text) != text.size()) {
        throw Failure(QStringLiteral("cannot write the file for rejected lines %1: %2")
                          .arg(m_file.fileName(), writeFault(m_file)));
    }
}

} // namespace host
