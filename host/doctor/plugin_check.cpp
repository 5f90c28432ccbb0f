#include "host/doctor/plugin_check.h"

#include "host/failure.h"
#include "host/plugin_file.h"
#include "host/session/installation.h"

#include <QByteArray>
#include <QFile>
#include <QJsonDocument>

namespace host {

namespace {

/// Of the note for packages that linkers put into a file, which is JSON; empty if there is none.
QString packageVersion(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const auto bytes = file.readAll();
    for (int start = 0; (start = bytes.indexOf(R"({"type":")", start)) >= 0; ++start) {
        const auto note = bytes.mid(start, bytes.indexOf('}', start) - start + 1);
        const auto version =
            QJsonDocument::fromJson(note).object().value(QLatin1String("version")).toString();
        if (!version.isEmpty()) {
            return version;
        }
    }
    return {};
}

} // namespace

Findings pluginFindings(const QString& fileName) {
    const auto subject = QStringLiteral("plug-in file");
    try {
        const PluginFile plugin(fileName);
    } catch (const Failure& failure) {
        return {
            {.severity = Severity::Error,
             .subject = subject,
             .found = QString::fromUtf8(failure.what()),
             .advice = QStringLiteral("name the right file with --plugin, or install it anew")}};
    }
    const auto version = packageVersion(fileName);
    const auto own = programVersion();
    Finding finding{.subject = subject,
                    .found = QStringLiteral("%1 can be loaded").arg(fileName),
                    .details = {{QStringLiteral("version"), version}}};
    if (version.isEmpty()) {
        finding.severity = Severity::Note;
        finding.found += QStringLiteral("; it does not tell its version");
    } else {
        finding.found += QStringLiteral(", version %1").arg(version);
        if (version != own) {
            finding.severity = Severity::Warning;
            finding.advice =
                QStringLiteral("this program is of version %1: install both of one version")
                    .arg(own);
        }
    }
    return {finding};
}

} // namespace host
