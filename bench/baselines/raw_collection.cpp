#include "bench/baselines/raw_collection.h"

#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_many_result.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

namespace {

const bsoncxx::v1::document::view everything;

void requireCount(std::int64_t stored, std::size_t documents) {
    if (std::cmp_not_equal(stored, documents)) {
        throw std::runtime_error("the collection holds " + std::to_string(stored) +
                                 " documents instead of " + std::to_string(documents));
    }
}

} // namespace

void RawCollection::erase(const Documents& filters) {
    for (const auto& filter : filters) {
        measured.delete_many(filter);
    }
}

void RawCollection::put(const Documents& documents) {
    unmeasured.insert_many(documents);
}

void RawCollection::clear() {
    unmeasured.delete_many(everything);
}

void RawCollection::require(std::size_t documents) {
    requireCount(unmeasured.count_documents(everything), documents);
}

void RawCollection::require(std::size_t documents, const Documents& filters) {
    std::int64_t stored = 0;
    for (const auto& filter : filters) {
        stored += unmeasured.count_documents(filter);
    }
    requireCount(stored, documents);
}

} // namespace bench
