#pragma once

#include "bench/harness/contest.h"

#include <QJsonObject>

/// What the programs' results have in common.
namespace bench {

/// The compiler, the kind of build and the versions of the libraries that are measured.
QJsonObject buildAndLibraries();

/// The sides' names and for each round [wall, CPU] of each side, in seconds a record.
QJsonObject toJson(const std::vector<Side>& sides, const Measurement& measurement);

} // namespace bench
