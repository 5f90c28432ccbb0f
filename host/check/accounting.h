#pragma once

#include <QString>

namespace host {

/// What became of the records of one kind.
struct Accounting {
    /// Records of the input, rejected ones included.
    int read = 0;
    int rejected = 0;
    int stored = 0;
    /// Stored, and the same in every query that must return them.
    int equal = 0;
    /// Stored, and not returned by any query.
    int lost = 0;
    /// Stored and returned, but changed, out of order or missing in some query.
    int different = 0;
    /// Returned although nothing asked for them.
    int unexpected = 0;
};

/// Whether every record that was read and not rejected came back equal, and nothing else did.
bool isComplete(const Accounting& accounting);

/// One line such as "51 read, 51 stored, 51 read back equal, 0 lost"; counts of rejected, different
/// and unexpected records appear only where they are not 0. `origin` is the word for how the
/// records came about.
QString accountingLine(const Accounting& accounting, QLatin1String origin = QLatin1String("read"));

} // namespace host
