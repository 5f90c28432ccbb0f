#pragma once

#include "model/bson/bson_builder.h"

#include <mongocxx/v1/find_options.hpp>

#include <QDateTime>
#include <QString>

#include <list>
#include <string_view>

/// The conditions that the repositories' queries are made of. Each appends one key.
namespace mongo {

/// key: { "$gte": begin, "$lte": end }, whole seconds since the epoch as 64-bit integers.
void appendPeriod(bson_utils::bson_builder& filter, std::string_view key, const QDateTime& begin,
                  const QDateTime& end);

/// key: { "$in": [ numbers as 32-bit integers, in list order ] }
void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<int>& numbers);

/// key: { "$in": [ texts, in list order ] }
void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<QString>& texts);

/// Newest first by the given field, at most `limit` documents. 0 is no limit and a negative limit
/// goes to the server as it is.
mongocxx::v1::find_options newestFirst(std::string_view key, int limit);

/// As newestFirst, the other way round.
mongocxx::v1::find_options oldestFirst(std::string_view key, int limit);

} // namespace mongo
