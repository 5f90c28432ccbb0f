#include "bench/store_contests.h"

#include <mongocxx/v1/insert_many_result.hpp>
#include <mongocxx/v1/insert_one_result.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace bench {

namespace {

constexpr std::size_t maxCallsPerBlock = 100;

/// The time for a comparison: a round with 10,000 records takes up to several seconds.
constexpr double shortSecs = 6;
constexpr double longSecs = 20;

Block blockOf(const Call& call, std::size_t size, std::size_t perBlock) {
    return [call, size, perBlock, next = std::size_t{0}]() mutable {
        for (std::size_t i = 0; i < perBlock; ++i) {
            call(next);
            next = (next + 1) % size;
        }
        return perBlock;
    };
}

} // namespace

void addForSizes(Comparisons& comparisons, LazyStores& stores, const std::string& operation,
                 const Goals& goals, const Prepare& prepare, std::array<std::size_t, 3> of,
                 const std::string& mixture) {
    for (std::size_t i = 0; i < of.size(); ++i) {
        const std::size_t size = of[i];
        const std::string input = std::to_string(size);
        comparisons.add({.operation = operation,
                         .input = size > 1 ? input + mixture : input,
                         .goal = goals[i],
                         .secs = size < 10'000 ? shortSecs : longSecs,
                         .prepare = [&stores, prepare, size] { return prepare(stores(), size); }});
    }
}

Contest callByCall(std::size_t size, const Call& plugin, const Call& raw, const Call& floor) {
    const std::size_t perBlock = std::min(size, maxCallsPerBlock);
    const auto block = [&](const Call& call) -> Block {
        return call ? blockOf(call, size, perBlock) : nullptr;
    };
    return {.sides = sidesOf(block(plugin), block(raw), block(floor)),
            .minBlocks = size / perBlock};
}

std::size_t recordsToInsert(std::size_t size) {
    // One more block, for the round that is thrown away.
    return size <= maxCallsPerBlock ? size : size + maxCallsPerBlock;
}

Contest insertByCall(const RawCollectionPtr& collection, std::size_t size, const Call& plugin,
                     Documents documents) {
    const std::size_t perBlock = std::min(size, maxCallsPerBlock);
    const auto ready = std::make_shared<const Documents>(std::move(documents));
    Contest contest = callByCall(ready->size(), plugin, [collection, ready](std::size_t i) {
        collection->measured.insert_one((*ready)[i]);
    });
    const auto expected = std::make_shared<std::size_t>(0);
    if (size == perBlock) {
        contest.beforeBlock = [=] {
            collection->clear();
            *expected = 0;
        };
    } else {
        contest.minBlocks = size / perBlock;
        contest.maxBlocks = contest.minBlocks;
    }
    contest.afterBlock = [=] {
        *expected += perBlock;
        collection->require(*expected);
    };
    return contest;
}

Contest insertAtOnce(const RawCollectionPtr& collection, const std::function<void()>& plugin,
                     Documents documents) {
    const auto ready = std::make_shared<const Documents>(std::move(documents));
    const auto save = [=] {
        plugin();
        return ready->size();
    };
    const auto insert = [=] {
        collection->measured.insert_many(*ready);
        return ready->size();
    };
    return {.sides = sidesOf(save, insert),
            .beforeBlock = [=] { collection->clear(); },
            .afterBlock = [=] { collection->require(ready->size()); }};
}

Contest deleteContest(const RawCollectionPtr& collection, Documents documents,
                      const std::function<void()>& plugin, Documents queries) {
    const auto originals = std::make_shared<const Documents>(std::move(documents));
    const auto deleteByPlugin = [=] {
        plugin();
        return originals->size();
    };
    const auto deleteRaw = [=, ready = std::move(queries)] {
        collection->erase(ready);
        return originals->size();
    };
    return {.sides = sidesOf(deleteByPlugin, deleteRaw),
            .beforeBlock = [=] { collection->put(*originals); },
            .afterBlock = [=] { collection->require(0); }};
}

} // namespace bench
