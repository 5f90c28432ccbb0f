#pragma once

#include "bench/documents.h"

#include <bsoncxx/v1/document/value.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/find_options.hpp>

#include <cstddef>
#include <memory>
#include <vector>

namespace bench {

/// A query as both sides send it.
struct ReadyQuery {
    bsoncxx::v1::document::value filter;
    mongocxx::v1::find_options options;
};

/// One of the plug-in's collections by the bare client library: what the MongoDB stores are
/// measured against, and what a comparison needs done before and after its blocks. The two go by
/// connections of their own, lest the measured one comes warm from the other work.
struct RawCollection {
    mongocxx::v1::collection measured;
    mongocxx::v1::collection unmeasured;

    /// Takes every document of the answers from the cursors without looking into it, and calls
    /// `each` for it.
    template <typename Each>
    std::size_t drain(const std::vector<ReadyQuery>& queries, Each each) {
        std::size_t documents = 0;
        for (const ReadyQuery& query : queries) {
            auto cursor = measured.find(query.filter, query.options);
            for (const auto& document : cursor) {
                documents += document.empty() ? 0 : 1;
                each();
            }
        }
        return documents;
    }
    std::size_t drain(const std::vector<ReadyQuery>& queries) {
        return drain(queries, [] {});
    }
    void erase(const Documents& filters);

    // Not measured.
    void put(const Documents& documents);
    void clear();
    /// Throws std::runtime_error unless the collection holds this many documents.
    void require(std::size_t documents);
    /// The same of those that any of the filters selects.
    void require(std::size_t documents, const Documents& filters);
};

using RawCollectionPtr = std::shared_ptr<RawCollection>;

} // namespace bench
