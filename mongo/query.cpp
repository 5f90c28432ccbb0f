#include "mongo/query.h"

#include <string>

namespace mongo {

namespace {

mongocxx::v1::find_options sorted(std::string_view key, std::int32_t direction, int limit) {
    bson_utils::bson_builder sort;
    sort.appendInt32(key, direction);
    mongocxx::v1::find_options options;
    options.sort(sort.take()).limit(limit);
    return options;
}

} // namespace

void appendPeriod(bson_utils::bson_builder& filter, std::string_view key, const QDateTime& begin,
                  const QDateTime& end) {
    filter.appendDocument(key, [&](bson_utils::bson_builder& period) {
        period.appendInt64("$gte", begin.toSecsSinceEpoch());
        period.appendInt64("$lte", end.toSecsSinceEpoch());
    });
}

void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<int>& numbers) {
    filter.appendDocument(key, [&](bson_utils::bson_builder& condition) {
        condition.appendArray("$in", [&](bson_utils::bson_builder& array) {
            std::size_t index = 0;
            for (const int number : numbers) {
                array.appendInt32(std::to_string(index++), number);
            }
        });
    });
}

void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<QString>& texts) {
    filter.appendDocument(key, [&](bson_utils::bson_builder& condition) {
        condition.appendArray("$in", [&](bson_utils::bson_builder& array) {
            std::size_t index = 0;
            for (const QString& text : texts) {
                array.appendString(std::to_string(index++), text);
            }
        });
    });
}

mongocxx::v1::find_options newestFirst(std::string_view key, int limit) {
    return sorted(key, -1, limit);
}

mongocxx::v1::find_options oldestFirst(std::string_view key, int limit) {
    return sorted(key, 1, limit);
}

} // namespace mongo
