#pragma once

#include "model/dev_value.h"

#include <QJsonObject>
#include <QString>

namespace host {

/// The unit of a value, which is kept in its extended_data; empty if it has none.
inline QString unitOf(const model::dev_value& value) {
    return value.extended_data.object().value(QLatin1String("unit")).toString();
}

} // namespace host
