#pragma once

#include "model/bson/record_reader.h"

#include <bsoncxx/v1/document/view.hpp>

namespace bench {

/// The product's reader of stored documents with what it remembers of the earlier ones, as a query
/// has one.
template <typename Record>
class QueryReader {
public:
    Record operator()(const bsoncxx::v1::document::view& document) {
        return bson_utils::readDocument<Record>(document, m_memory);
    }

    /// Whether the document goes the direct way.
    bool isOrdinary(const bsoncxx::v1::document::view& document) {
        return bson_utils::readOrdinary<Record>(document, m_memory).has_value();
    }

private:
    bson_utils::query_memory m_memory;
};

} // namespace bench
