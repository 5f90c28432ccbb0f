#pragma once

#include <QJsonObject>

namespace bench {

/// The compiler, the kind of build and the versions of the libraries that are measured.
QJsonObject buildAndLibraries();

} // namespace bench
