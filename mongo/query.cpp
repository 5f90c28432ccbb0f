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

template <typename Value, typename Append>
void appendEach(bson_utils::bson_builder& filter, std::string_view key,
                const std::list<Value>& values, Append append) {
    filter.appendDocument(key, [&](bson_utils::bson_builder& condition) {
        condition.appendArray("$in", [&](bson_utils::bson_builder& array) {
            std::size_t index = 0;
            for (const Value& value : values) {
                (array.*append)(std::to_string(index++), value);
            }
        });
    });
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
    appendEach(filter, key, numbers, &bson_utils::bson_builder::appendInt32);
}

void appendIn(bson_utils::bson_builder& filter, std::string_view key,
              const std::list<QString>& texts) {
    if (!texts.empty()) {
        appendEach(filter, key, texts, &bson_utils::bson_builder::appendString);
    }
}

mongocxx::v1::find_options newestFirst(std::string_view key, int limit) {
    return sorted(key, -1, limit);
}

mongocxx::v1::find_options oldestFirst(std::string_view key, int limit) {
    return sorted(key, 1, limit);
}

} // namespace mongo
