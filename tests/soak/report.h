#pragma once

#include "tests/soak/soak.h"

#include <QJsonObject>

#include <ostream>

namespace soak {

/// A table with a line for each kind, and what is wrong.
void print(const SoakResult& result, std::ostream& out);

/// All of it.
QJsonObject toJson(const SoakResult& result);

} // namespace soak
