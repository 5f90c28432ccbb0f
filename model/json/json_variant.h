#pragma once

#include <QJsonValue>
#include <QVariant>

/// QJsonValue::toVariant with every number, also a nested one, as a double.
///
/// Hosts rely on numbers being doubles. Qt 5.15 by itself makes a qlonglong of a whole number.
QVariant toVariantOfDoubles(const QJsonValue& json);
