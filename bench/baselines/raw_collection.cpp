#include "bench/baselines/raw_collection.h"

#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_many_result.hpp>

#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

namespace {

const bsoncxx::v1::document::view everything;

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
    const auto stored = unmeasured.count_documents(everything);
    if (std::cmp_not_equal(stored, documents)) {
        throw std::runtime_error("the collection holds " + std::to_string(stored) +
                                 " documents instead of " + std::to_string(documents));
    }
}

} // namespace bench
