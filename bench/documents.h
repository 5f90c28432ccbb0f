#pragma once

#include "bench/query_reader.h"
#include "model/bson_utils.h"

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

#include <vector>

/// Records as the documents that the plug-in sends and finds.
namespace bench {

using Documents = std::vector<bsoncxx::v1::document::value>;

template <typename Records>
Documents documentsOf(const Records& records) {
    Documents documents;
    for (const auto& record : records) {
        documents.push_back(bson_utils::toBson(record));
    }
    return documents;
}

/// As the stores have it: where the record gives no "_id", the MongoDB driver has put one ahead.
bsoncxx::v1::document::value stored(const bsoncxx::v1::document::view& document);

/// The records as a query gives them, but each with storage of its own.
template <typename Record>
std::vector<Record> readBack(const std::vector<Record>& records) {
    std::vector<Record> found;
    for (const auto& document : documentsOf(records)) {
        found.push_back(QueryReader<Record>{}(stored(document)));
    }
    return found;
}

} // namespace bench
