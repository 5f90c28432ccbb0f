#pragma once

#include "contract/rule.h"

#include <QJsonObject>

namespace contract {

/// "passed", "failed" or "not applicable".
QString resultText(Outcome::Result result);

/// {"result", and what is said of it: "expected" and "seen", or "why"}
QJsonObject toJson(const Outcome& outcome);
Outcome outcomeOf(const QJsonObject& object);

/// Failed.
Outcome failure(const QString& expected, const QString& seen);

} // namespace contract
