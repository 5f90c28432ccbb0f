#pragma once

#include "bench/documents.h"
#include "bench/growth/growing.h"
#include "bench/store_contests.h"

#include <mongocxx/v1/insert_one_result.hpp>

#include <QDateTime>

#include <array>
#include <cstddef>
#include <list>
#include <memory>
#include <numeric>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

/// Which records of a growing collection are asked for, and where the others stand.
namespace bench {

/// The smallest size. These records are the newest ones, a second apart, of the first hundred
/// devices in turn.
inline constexpr std::size_t fewestStored = 10'000;

/// A filter's devices, and what a second of the period gives of them.
inline constexpr int busyDevices = 100;
/// Their records are all older than that.
inline constexpr int quietDevices = 9'900;
/// Send in the same period and are in no filter.
inline constexpr int otherDevices = 9'900;

/// Whose records come and go while the store keeps its size.
inline constexpr int newcomer = 1'000'000;

inline QDateTime newestTime() {
    return QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
}

/// Gives the record at `index` its device and time. Of those after the first ones a quarter each
/// are older ones of the busy devices and of the quiet ones, and half are others' in the same
/// period.
template <typename Record>
void place(Record& record, std::size_t index) {
    const auto among = [place = index / 4](int devices) {
        return static_cast<int>(place % static_cast<std::size_t>(devices));
    };
    const bool other = index >= fewestStored && index % 2 == 1;
    if (index < fewestStored) {
        record.modem_id = 1 + static_cast<int>(index % busyDevices);
    } else if (other) {
        record.modem_id = 1 + busyDevices + quietDevices + among(otherDevices);
    } else if (index % 4 == 0) {
        record.modem_id = 1 + among(busyDevices);
    } else {
        record.modem_id = 1 + busyDevices + among(quietDevices);
    }
    record.timestamp =
        newestTime().addSecs(-static_cast<qint64>(other ? index % fewestStored : index));
}

/// What a query asks for: the devices from 1 on, in the newest seconds.
struct Asked {
    int devices = 0;
    std::size_t seconds = 0;
    /// That there are, whatever else is stored.
    std::size_t records = 0;
};

inline constexpr std::array<Asked, 3> allAsked{{
    {1, fewestStored, fewestStored / busyDevices},
    {busyDevices, 1000, 1000},
    {busyDevices + quietDevices, 1000, 1000},
}};

template <typename Filter>
Filter filterFor(const Asked& asked) {
    Filter filter;
    filter.modem_ids.resize(static_cast<std::size_t>(asked.devices));
    std::iota(filter.modem_ids.begin(), filter.modem_ids.end(), 1);
    filter.begin = newestTime().addSecs(1 - static_cast<qint64>(asked.seconds));
    filter.end = newestTime();
    return filter;
}

/// Everything of the newcomer.
template <typename Filter>
Filter filterForNewcomer() {
    auto filter = filterFor<Filter>({1, fewestStored, 0});
    filter.modem_ids = {newcomer};
    return filter;
}

template <typename Record>
std::vector<Record> ofNewcomer(std::vector<Record> records) {
    for (std::size_t i = 0; i < records.size(); ++i) {
        place(records[i], i);
        records[i].modem_id = newcomer;
    }
    return records;
}

template <typename Record>
Documents placed(std::vector<Record> records, std::size_t first) {
    Documents documents;
    for (Record& record : records) {
        place(record, first++);
        documents.push_back(bson_utils::toBson(record));
    }
    return documents;
}

/// As they are found by a query.
template <typename Record>
std::vector<Record> readyRecords(std::vector<Record> records, const Asked& asked) {
    const std::size_t step = asked.devices < busyDevices ? busyDevices : 1;
    for (std::size_t i = 0; i < records.size(); ++i) {
        place(records[i], i * step % fewestStored);
    }
    return readBack(records);
}

/// Either side inserts the newcomer's records, which are then found by these queries and removed.
inline Contest saveAndRemove(const RawCollectionPtr& collection, const Block& save,
                             const Block& insert, std::size_t records, const Documents& queries) {
    return {.sides = sidesOf(save, insert), .afterBlock = [=] {
                collection->require(records, queries);
                collection->erase(queries);
            }};
}

/// The raw side of single saves.
inline Block insertEach(const RawCollectionPtr& collection, const Documents& documents) {
    return [=] {
        for (const auto& document : documents) {
            collection->measured.insert_one(document);
        }
        return documents.size();
    };
}

/// Either side removes the newcomer's records, which have been inserted.
inline Contest removeSaved(const RawCollectionPtr& collection, Documents documents,
                           const std::function<void()>& remove, const Documents& queries) {
    auto contest = deleteContest(collection, std::move(documents), remove, queries);
    contest.afterBlock = [=] { collection->require(0, queries); };
    return contest;
}

/// `make(count, first)` gives documents, `steps(collection)` the steps.
template <typename Make, typename Steps>
Growing growingCollection(Stores& stores, std::string_view name,
                          std::span<const layout::index> indexes, const Make& make,
                          const Steps& steps) {
    const auto collection = std::make_shared<RawCollectionPtr>();
    return {.name = name,
            .empty = [=, &stores] { *collection = stores.emptyCollection(name, indexes); },
            .grow = [=](std::size_t begin,
                        std::size_t end) { putAll(**collection, name, begin, end, make); },
            .steps = [=] { return steps(*collection); }};
}

} // namespace bench
