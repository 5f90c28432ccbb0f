#pragma once

#include <QJsonValue>

namespace host {

/// Whole seconds since 1970, up to the end of the year 9999. Throws Rejection for anything else.
qint64 parseSecs(const QJsonValue& value);

} // namespace host
