#pragma once

#include "bench/baselines/deep_copy.h"
#include "bench/harness/comparison.h"
#include "bench/stores.h"
#include "mongo/query.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the comparisons of the stores have in common.
///
/// The plug-in's side calls what was loaded, the raw side sends the same request by the bare client
/// library, with documents, queries and commands that were made before the clock runs, and takes
/// every document of the answer without looking into it. Where an operation gives records, the
/// floor does as the raw side and copies a ready record deeply (see deep_copy.h) for each document,
/// into what the plug-in returns.
namespace bench {

inline constexpr std::array<std::size_t, 3> sizes{1, 100, 10'000};

/// Of each size.
using Goals = std::array<Goal, 3>;

constexpr Goals costAtMost(double one, double many, std::string_view against = "raw") {
    const Goal few{.against = against, .costAtMost = one};
    return {few, few, {.against = against, .costAtMost = many}};
}
constexpr Goals costAtMost(double cost, std::string_view against = "raw") {
    return costAtMost(cost, cost, against);
}

inline constexpr Goals writeGoals = costAtMost(1.05);
inline constexpr Goals readGoals = costAtMost(1.10);
/// Where many records come by one request, the records cost more than the request.
inline constexpr Goals manyGoals = costAtMost(1.10, 1.12);

using Prepare = std::function<Contest(Stores&, std::size_t size)>;

/// Adds a comparison for each size. `mixture` says in the inputs' names what many records are.
void addForSizes(Comparisons& comparisons, LazyStores& stores, const std::string& operation,
                 const Goals& goals, const Prepare& prepare, std::array<std::size_t, 3> of = sizes,
                 const std::string& mixture = {});

/// The sides by their names; no floor if there is none.
inline std::vector<Side> sidesOf(Block plugin, Block raw, Block floor = nullptr) {
    std::vector<Side> sides{{"plug-in", std::move(plugin)}, {"raw", std::move(raw)}};
    if (floor) {
        sides.push_back({"floor", std::move(floor)});
    }
    return sides;
}

using Call = std::function<void(std::size_t index)>;

/// One call for each of `size` records; from the start again after the last one. More than a
/// hundred are done in several blocks, lest minutes pass between the sides of a round, and in as
/// many blocks as it takes to have all.
Contest callByCall(std::size_t size, const Call& plugin, const Call& raw,
                   const Call& floor = nullptr);

/// How many records insertByCall takes: some more than `size`, if that needs several blocks.
std::size_t recordsToInsert(std::size_t size);

/// One inserting call for each of `size` records, as callByCall. Up to a block's worth, every block
/// starts with an empty collection; more records fill one collection block by block, from either
/// side. `documents` are recordsToInsert(size) many; `plugin` gets indexes below that.
Contest insertByCall(const RawCollectionPtr& collection, std::size_t size, const Call& plugin,
                     Documents documents);

/// One call inserts all documents into the empty collection.
Contest insertAtOnce(const RawCollectionPtr& collection, const std::function<void()>& plugin,
                     Documents documents);

/// `queries` do together what `plugin` does. Before every block the documents are put back;
/// afterwards there must be none.
Contest deleteContest(const RawCollectionPtr& collection, Documents documents,
                      const std::function<void()>& plugin, Documents queries);

/// Puts documents into the collection, ten thousand by a request, until `end` are stored of which
/// `begin` are there already; prints how far it is. `make(count, first)` gives them.
template <typename Make>
void putAll(RawCollection& collection, std::string_view what, std::size_t begin, std::size_t end,
            const Make& make) {
    constexpr std::size_t perRequest = 10'000;
    constexpr std::size_t perLine = 10 * perRequest;
    for (std::size_t first = begin; first < end; first += perRequest) {
        collection.put(make(std::min(perRequest, end - first), first));
        const std::size_t stored = std::min(first + perRequest, end);
        if (stored == end || stored % perLine == 0) {
            std::cout << what << ": stored " << stored << " of " << end << '\n' << std::flush;
        }
    }
    collection.require(end);
}

template <typename Records>
std::size_t countRecords(const Records& byDevice) {
    std::size_t records = 0;
    for (const auto& device : byDevice) {
        records += device.second.size();
    }
    return records;
}

/// Ready records, of which deep copies are handed out one after the other; from the start again
/// after the last one.
template <typename Record>
class ReadyRecords {
public:
    explicit ReadyRecords(std::vector<Record> records) : m_records(std::move(records)) {}

    Record next() {
        m_next = m_next == m_records.size() ? 0 : m_next;
        return deepCopy(m_records[m_next++]);
    }

private:
    std::vector<Record> m_records;
    std::size_t m_next = 0;
};

/// A read of many records: each side is asked for the shared map of records, or the number of
/// documents if raw. Answers are let go after the block, for how long a host keeps one is its own
/// affair.
template <typename Record, typename Ask, typename Drain>
Contest readContest(const Ask& plugin, const Drain& drain, std::vector<Record> ready) {
    using Answer = mongo::by_device<Record>;
    const auto answer = std::make_shared<std::shared_ptr<Answer>>();
    const auto records = std::make_shared<ReadyRecords<Record>>(std::move(ready));
    return {.sides = sidesOf(
                [answer, plugin = plugin]() mutable {
                    *answer = plugin();
                    return countRecords(**answer);
                },
                [drain = drain]() mutable { return drain([] {}); },
                [answer, records, drain = drain]() mutable {
                    *answer = std::make_shared<Answer>();
                    return drain([&found = **answer, &records = *records] {
                        Record record = records.next();
                        found[record.modem_id].push_back(std::move(record));
                    });
                }),
            .afterBlock = [=] { *answer = nullptr; }};
}

/// The raw side drains the answers of these queries.
template <typename Record, typename Ask>
Contest readContest(const Ask& plugin, const RawCollectionPtr& collection,
                    std::vector<ReadyQuery> queries, std::vector<Record> ready) {
    const auto shared = std::make_shared<const std::vector<ReadyQuery>>(std::move(queries));
    const auto drain = [collection, shared](const auto& each) {
        return collection->drain(*shared, each);
    };
    return readContest(plugin, drain, std::move(ready));
}

// The comparisons of one class of the plug-in each.
void addUplinks(Comparisons& comparisons, LazyStores& stores);
void addDownlinks(Comparisons& comparisons, LazyStores& stores);
void addEav(Comparisons& comparisons, LazyStores& stores);
void addDriverState(Comparisons& comparisons, LazyStores& stores);
void addDownlinkQueues(Comparisons& comparisons, LazyStores& stores);
void addDeviceClients(Comparisons& comparisons, LazyStores& stores);

} // namespace bench
