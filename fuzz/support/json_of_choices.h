#pragma once

#include "fuzz/support/choices.h"

#include <QJsonObject>

#include <string>
#include <string_view>
#include <vector>

/// JSON of a fuzzer's choices. Bytes as they come are hardly ever JSON.
namespace fuzz {

using json_names = std::vector<std::string_view>;

/// An object made by insertion, also such as no parser makes: with lone surrogates, zeros and any
/// double.
QJsonObject anyObject(choices& choices, int depth = 0);

/// The text of an object of which most members are called as one of `names`; now and then no JSON
/// after all.
std::string anyText(choices& choices, const json_names& names);

QJsonObject parsed(std::string_view json);

/// What is left of an object once it was written and parsed again often enough: Qt's parser takes
/// a byte order mark from the start of each text and key, which leaves the members out of order.
QJsonObject settled(QJsonObject object);

} // namespace fuzz
