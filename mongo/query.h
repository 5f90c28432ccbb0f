#pragma once

#include "model/bson/bson_builder.h"
#include "model/bson/record_reader.h"

#include <mongocxx/v1/find_options.hpp>

#include <QDateTime>
#include <QString>

#include <list>
#include <map>
#include <memory>
#include <string_view>

/// What the repositories' queries are made of. Each append… adds one condition.
namespace mongo {

/// What a query gives: the records of each device, by its number.
template <typename Record>
using by_device = std::map<int, std::list<Record>>;

/// key: { "$gte": begin, "$lte": end }, whole seconds since the epoch as 64-bit integers.
void appendPeriod(bson_utils::bson_builder& filter, std::string_view key, const QDateTime& begin,
                  const QDateTime& end);

/// key: { "$in": [ numbers as 32-bit integers, in list order ] }
void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<int>& numbers);

/// key: { "$in": [ texts, in list order ] }. Nothing for an empty list, which stands for any text.
void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<QString>& texts);

/// Newest first by the given field, at most `limit` documents. 0 is no limit and a negative limit
/// goes to the server as it is.
mongocxx::v1::find_options newestFirst(std::string_view key, int limit);

/// As newestFirst, the other way round.
mongocxx::v1::find_options oldestFirst(std::string_view key, int limit);

/// Appends the record of each document to those of its own device.
template <typename Record, typename Cursor>
void collect(Cursor cursor, by_device<Record>& found) {
    bson_utils::query_memory memory;
    for (const auto& document : cursor) {
        auto record = bson_utils::readDocument<Record>(document, memory);
        found[record.modem_id].push_back(std::move(record));
    }
}

} // namespace mongo
