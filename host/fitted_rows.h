#pragma once

#include "host/console.h"

#include <QStringList>

#include <vector>

namespace host {

/// The rows of a table with the texts cut that their columns allow to be cut: at what each column
/// shows at the most, and as far below that as it takes for the whole table to be no wider than
/// `width`, but not below five characters. A text that was cut ends with an ellipsis.
std::vector<QStringList> fittedRows(const std::vector<Console::Column>& columns,
                                    std::vector<QStringList> rows, int width);

} // namespace host
