#pragma once

#include "bench/harness/comparison.h"
#include "bench/stores.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

/// What the comparisons of the stores have in common.
///
/// The plug-in's side calls what was loaded, the raw side sends the same request by the bare client
/// library, with documents, queries and commands that were made before the clock runs, and takes
/// every document of the answer without looking into it.
namespace bench {

inline constexpr Goal writeGoal{.costAtMost = 1.05};
inline constexpr Goal readGoal{.costAtMost = 1.10};

inline constexpr std::array<std::size_t, 3> sizes{1, 100, 10'000};

using Prepare = std::function<Contest(Stores&, std::size_t size)>;

/// Adds a comparison for each size.
void addForSizes(Comparisons& comparisons, LazyStores& stores, const std::string& operation,
                 const Goal& goal, const Prepare& prepare, std::array<std::size_t, 3> of = sizes);

inline std::vector<Side> pluginAndRaw(std::function<std::size_t()> plugin,
                                      std::function<std::size_t()> raw) {
    return {{"plug-in", std::move(plugin)}, {"raw", std::move(raw)}};
}

using Call = std::function<void(std::size_t index)>;

/// One call for each of `size` records; from the start again after the last one. More than a
/// hundred are done in several blocks, lest minutes pass between the two sides of a round, and in
/// as many rounds as it takes to have all.
Contest callByCall(std::size_t size, const Call& plugin, const Call& raw);

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

template <typename Records>
std::size_t countRecords(const Records& byDevice) {
    std::size_t records = 0;
    for (const auto& device : byDevice) {
        records += device.second.size();
    }
    return records;
}

/// `plugin` returns the shared map of records, `raw` the number of documents. The plug-in's answer
/// is let go after the block, for how long a host keeps it is its own affair.
template <typename Query>
Contest readContest(const Query& plugin, const std::function<std::size_t()>& raw) {
    const auto answer = std::make_shared<std::invoke_result_t<const Query&>>();
    const auto ask = [plugin, answer] {
        *answer = plugin();
        return countRecords(**answer);
    };
    return {.sides = pluginAndRaw(ask, raw), .afterBlock = [answer] { *answer = nullptr; }};
}

/// The raw side drains the answers of these queries.
template <typename Query>
Contest readContest(const Query& plugin, const RawCollectionPtr& collection,
                    std::vector<ReadyQuery> queries) {
    return readContest(
        plugin, [collection, ready = std::move(queries)] { return collection->drain(ready); });
}

// The comparisons of one class of the plug-in each.
void addUplinks(Comparisons& comparisons, LazyStores& stores);
void addDownlinks(Comparisons& comparisons, LazyStores& stores);
void addEav(Comparisons& comparisons, LazyStores& stores);
void addDriverState(Comparisons& comparisons, LazyStores& stores);
void addDownlinkQueues(Comparisons& comparisons, LazyStores& stores);
void addDeviceClients(Comparisons& comparisons, LazyStores& stores);

} // namespace bench
