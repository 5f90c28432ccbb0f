#include "bench/baselines/raw_collection.h"

#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_many_result.hpp>

#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

namespace {

const bsoncxx::v1::document::view everything;

} // namespace

std::size_t RawCollection::drain(const std::vector<ReadyQuery>& queries) {
    std::size_t documents = 0;
    for (const ReadyQuery& query : queries) {
        auto cursor = measured.find(query.filter, query.options);
        for (const auto& document : cursor) {
            documents += document.empty() ? 0 : 1;
        }
    }
    return documents;
}

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
