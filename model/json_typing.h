#pragma once

#include "model/bson/bson_builder.h"

#include <QJsonObject>

namespace bson_utils {

/// Appends the members of `json` with the types that libbson's extended-JSON reader gives them when
/// it reads Qt's compact text, but without making the text.
///
/// Only the ordinary is done this way: no key that begins with "$" or is empty, no zero character,
/// nothing beyond the basic plane, whole numbers below 2^53, no number that text cannot hold
/// exactly, few levels. False at the first thing that is not; what the builder then holds is of no
/// use, and only the text can tell.
bool appendAsTextWouldRead(bson_builder& document, const QJsonObject& json);

} // namespace bson_utils
