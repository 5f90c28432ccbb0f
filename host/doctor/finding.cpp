#include "host/doctor/finding.h"

namespace host {

QString severityName(Severity severity) {
    switch (severity) {
    case Severity::Ok:
        return QStringLiteral("ok");
    case Severity::Note:
        return QStringLiteral("note");
    case Severity::Warning:
        return QStringLiteral("warning");
    case Severity::Error:
        break;
    }
    return QStringLiteral("error");
}

} // namespace host
