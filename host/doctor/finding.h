#pragma once

#include <QJsonObject>
#include <QString>

#include <vector>

namespace host {

enum class Severity {
    /// As it should be.
    Ok,
    /// Worth knowing; nothing has to be done.
    Note,
    /// Something should be done.
    Warning,
    /// Something does not work.
    Error,
};

/// "ok", "note", "warning" or "error".
QString severityName(Severity severity);

/// One thing that was looked at.
struct Finding {
    Severity severity = Severity::Ok;
    /// What was looked at.
    QString subject;
    // NOLINTBEGIN(readability-redundant-member-init): GCC warns where one without is left out.
    QString found = {};
    /// What to do; empty if nothing is to be done.
    QString advice = {};
    /// The figures in `found`, for programs.
    QJsonObject details = {};
    // NOLINTEND(readability-redundant-member-init)
};

using Findings = std::vector<Finding>;

} // namespace host
