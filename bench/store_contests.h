#pragma once

#include "bench/comparison.h"
#include "bench/stores.h"
#include "model/bson_utils.h"

#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/find_options.hpp>
#include <mongocxx/v1/insert_many_result.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

/// What the comparisons of the stores have in common.
///
/// The subject calls the loaded plug-in, the baseline sends the same request by the bare client
/// library, with documents, queries and commands that were made before the clock runs, and takes
/// every document of the answer from the cursor without looking into it.
namespace bench {

inline constexpr Goal writeGoal{Goal::Kind::costAtMost, 1.05};
inline constexpr Goal readGoal{Goal::Kind::costAtMost, 1.10};

inline constexpr std::array<std::size_t, 3> sizes{1, 100, 10'000};

/// Where an operation takes one record, a block of many records would let minutes pass between the
/// two sides of a pair; so the blocks are of this many calls at most, and there are as many pairs
/// as it takes to have all records.
inline constexpr std::size_t maxCallsPerBlock = 100;

/// Registers a comparison for each size; `prepare(stores, size)` builds the contest.
inline void registerForSizes(LazyStores& stores, const std::string& operation, const Goal& goal,
                             const std::function<Contest(Stores&, std::size_t)>& prepare) {
    for (const std::size_t size : sizes) {
        registerComparison({operation, std::to_string(size), goal},
                           [&stores, prepare, size] { return prepare(stores(), size); });
    }
}

using Call = std::function<void(std::size_t index)>;

/// One call for each of `size` records, in blocks; from the start again after the last one.
inline Contest callByCall(std::size_t size, const Call& subject, const Call& baseline) {
    const std::size_t perBlock = std::min(size, maxCallsPerBlock);
    const auto block = [=](const Call& call) {
        return [call, size, perBlock, next = std::size_t{0}]() mutable {
            for (std::size_t i = 0; i < perBlock; ++i) {
                call(next);
                next = (next + 1) % size;
            }
            return perBlock;
        };
    };
    return {.subject = block(subject),
            .baseline = block(baseline),
            .minPairs = static_cast<int>(size / perBlock)};
}

/// One inserting call for each of `size` records. Up to a block's worth, every block starts with an
/// empty collection; more records fill one collection block by block, from either side. The calls
/// get indexes below recordsToInsert(size), each once while the collection is not emptied.
inline std::size_t recordsToInsert(std::size_t size) {
    // One more block, for the pair that is thrown away.
    return size <= maxCallsPerBlock ? size : size + maxCallsPerBlock;
}

inline Contest insertByCall(const mongocxx::v1::collection& collection, std::size_t size,
                            const Call& subject, const Call& baseline) {
    Contest contest = callByCall(recordsToInsert(size), subject, baseline);
    const std::size_t perBlock = std::min(size, maxCallsPerBlock);
    const auto expected = std::make_shared<std::size_t>(0);
    const auto documents = std::make_shared<mongocxx::v1::collection>(collection);
    if (size == perBlock) {
        contest.beforeBlock = [=] {
            documents->delete_many(bsoncxx::v1::document::view{});
            *expected = 0;
        };
    } else {
        contest.minPairs = static_cast<int>(size / perBlock);
        contest.maxPairs = contest.minPairs;
    }
    contest.afterBlock = [=] {
        *expected += perBlock;
        requireDocuments(*documents, *expected);
    };
    return contest;
}

template <typename Records>
Documents documentsOf(const Records& records) {
    Documents documents;
    for (const auto& record : records) {
        documents.push_back(bson_utils::toBson(record));
    }
    return documents;
}

/// A query as both sides send it.
struct ReadyQuery {
    bsoncxx::v1::document::value filter;
    mongocxx::v1::find_options options;
};

/// Takes every document from the cursor.
inline std::size_t drain(mongocxx::v1::collection& collection, const ReadyQuery& query) {
    std::size_t documents = 0;
    auto cursor = collection.find(query.filter, query.options);
    for (const auto& document : cursor) {
        documents += document.empty() ? 0 : 1;
    }
    return documents;
}

template <typename Result>
std::size_t countRecords(const Result& byDevice) {
    std::size_t records = 0;
    for (const auto& device : byDevice) {
        records += device.second.size();
    }
    return records;
}

/// The subject's answer is let go after the block, for how long a host keeps it is its own affair.
/// `query` returns the shared map of records, `baseline` the number of documents.
template <typename Query>
Contest readContest(const Query& query, const std::function<std::size_t()>& baseline) {
    const auto answer = std::make_shared<std::invoke_result_t<Query&>>();
    return {.subject =
                [ask = query, answer]() mutable {
                    *answer = ask();
                    return countRecords(**answer);
                },
            .baseline = baseline,
            .afterBlock = [=] { *answer = nullptr; }};
}

/// Before every block the documents are put back; afterwards there must be none.
inline Contest deleteContest(const mongocxx::v1::collection& collection, Documents documents,
                             const std::function<void()>& subject,
                             const std::function<void()>& baseline) {
    const auto stored = std::make_shared<mongocxx::v1::collection>(collection);
    const auto originals = std::make_shared<const Documents>(std::move(documents));
    return {.subject =
                [=] {
                    subject();
                    return originals->size();
                },
            .baseline =
                [=] {
                    baseline();
                    return originals->size();
                },
            .beforeBlock = [=] { stored->insert_many(*originals); },
            .afterBlock = [=] { requireDocuments(*stored, 0); }};
}

// The comparisons of one class of the plug-in each.
void registerUplinks(LazyStores& stores);
void registerDownlinks(LazyStores& stores);
void registerEav(LazyStores& stores);
void registerDriverState(LazyStores& stores);
void registerDownlinkQueues(LazyStores& stores);
void registerDeviceClients(LazyStores& stores);

} // namespace bench
