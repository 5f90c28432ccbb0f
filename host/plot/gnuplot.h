#pragma once

#include <QByteArray>
#include <QString>

namespace host {

/// Runs gnuplot with the script and gives what it writes to its standard output. Blocks, at most a
/// minute. Throws Failure if gnuplot is not installed, fails or does not end.
QByteArray runGnuplot(const QString& script);

} // namespace host
