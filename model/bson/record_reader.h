#pragma once

#include "model/bson/legacy_fields.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson/query_memory.h"

#include <bsoncxx/v1/document/view.hpp>

#include <optional>
#include <utility>

/// How every stored record is read: ordinary documents, that is what this driver writes, go the
/// direct way; everything else goes the plain way, which defines the result. Where the direct way
/// gives something, it is what the plain way gives.
///
/// Each record has a function `read(Fields&, Record&)` in model/documents/ that takes its fields
/// one by one from whichever of the two ways it is given.
namespace bson_utils {

/// The plain way of a record: by its document's text, but where a record says otherwise.
template <typename Record>
struct plain_way {
    using fields = legacy_fields;
};

/// False, and the record is of no use, at the first thing that is out of the ordinary.
template <typename Record>
bool readOrdinary(const bsoncxx::v1::document::view& document, query_memory& memory,
                  Record& record) {
    ordinary_fields fields{document, memory};
    read(fields, record);
    return fields.ordinary();
}

/// The same.
template <typename Record>
std::optional<Record> readOrdinary(const bsoncxx::v1::document::view& document,
                                   query_memory& memory) {
    Record record;
    return readOrdinary(document, memory, record) ? std::optional{std::move(record)} : std::nullopt;
}

/// Throws bsoncxx::v1::exception as its fields do.
template <typename Record>
Record readPlain(const bsoncxx::v1::document::view& document) {
    typename plain_way<Record>::fields fields{document};
    Record record;
    read(fields, record);
    return record;
}

/// `memory` is shared by the documents of one query. Throws as readPlain.
template <typename Record>
Record readDocument(const bsoncxx::v1::document::view& document, query_memory& memory) {
    Record record;
    if (!readOrdinary(document, memory, record)) {
        record = readPlain<Record>(document);
    }
    return record;
}

} // namespace bson_utils
