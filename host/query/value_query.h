#pragma once

#include "host/query/record_query.h"
#include "host/session/session.h"

#include <QString>

#include <list>

namespace host {

/// Which values a user wants to see.
struct ValueQuery : RecordQuery {
    /// Empty for any code, and for any tag.
    std::list<QString> obisCodes;
    std::list<QString> tags;
    /// Without codes, so many of each device's newest values tell which codes it has; 0 for all.
    int depth = 10'000;
};

/// Each of these blocks on the server, and throws Failure if it does not do its part.

/// Shows the values, newest first over all devices.
void showValues(const ValueQuery& query, Session& session);

/// Shows the newest and then the oldest number of each device and code; the same one twice if there
/// is only one. `limit` is not read.
void showFirstAndLast(const ValueQuery& query, Session& session);

/// Shows the newest value of each device and code, whatever its type, by device and code. `limit`
/// is not read.
void showLatest(const ValueQuery& query, Session& session);

} // namespace host
