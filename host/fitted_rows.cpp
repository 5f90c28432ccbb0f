#include "host/fitted_rows.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace host {

namespace {

constexpr int narrowest = 5;
// Two blanks around each cell, and a line to the next.
constexpr int around = 3;

/// How wide each column is when its texts are cut only where the column demands it.
std::vector<int> naturalWidths(const std::vector<Console::Column>& columns,
                               const std::vector<QStringList>& rows) {
    std::vector<int> widths;
    std::ranges::transform(columns, std::back_inserter(widths),
                           [](const auto& column) { return column.title.size(); });
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const int size = row.at(static_cast<int>(i)).size();
            const int most = columns[i].widest;
            widths[i] = std::max(widths[i], most == 0 ? size : std::min(size, most));
        }
    }
    return widths;
}

/// Takes from the widest of the columns that may be cut, until the table fits or none can give
/// more.
void narrow(std::vector<int>& widths, const std::vector<Console::Column>& columns, int width) {
    qint64 room = qint64{width} + 1 - qint64{around} * static_cast<qint64>(widths.size()) -
                  std::accumulate(widths.begin(), widths.end(), 0);
    for (; room < 0; ++room) {
        int* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const int least = std::max(narrowest, columns[i].title.size());
            if (columns[i].widest != 0 && widths[i] > least &&
                (widest == nullptr || widths[i] > *widest)) {
                widest = &widths[i];
            }
        }
        if (widest == nullptr) {
            return;
        }
        --*widest;
    }
}

QString cut(const QString& text, int length) {
    if (text.size() <= length) {
        return text;
    }
    auto kept = text.left(length - 1);
    if (!kept.isEmpty() && kept.at(kept.size() - 1).isHighSurrogate()) {
        kept.chop(1);
    }
    return kept + QChar(0x2026);
}

} // namespace

std::vector<QStringList> fittedRows(const std::vector<Console::Column>& columns,
                                    std::vector<QStringList> rows, int width) {
    auto widths = naturalWidths(columns, rows);
    narrow(widths, columns, width);
    for (auto& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].widest != 0) {
                auto& text = row[static_cast<int>(i)];
                text = cut(text, widths[i]);
            }
        }
    }
    return rows;
}

} // namespace host
