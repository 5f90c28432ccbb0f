#pragma once

#include "model/bson/local_times.h"

#include <bsoncxx/v1/document/view.hpp>

#include <optional>
#include <utility>

/// How every stored record is read: ordinary documents, that is what this driver writes, go the
/// direct way; everything else goes the plain way, which defines the result. Where the direct way
/// gives something, it is what the plain way gives. model/documents/ has both for each record.
namespace bson_utils {

/// Nothing at the first thing that is out of the ordinary.
template <typename Record>
std::optional<Record> readOrdinary(const bsoncxx::v1::document::view& document, local_times& times);

/// Throws bsoncxx::v1::exception as the record's document says.
template <typename Record>
Record readPlain(const bsoncxx::v1::document::view& document);

/// `times` is shared by the documents of one query.
template <typename Record>
Record readDocument(const bsoncxx::v1::document::view& document, local_times& times) {
    auto ordinary = readOrdinary<Record>(document, times);
    return ordinary ? *std::move(ordinary) : readPlain<Record>(document);
}

} // namespace bson_utils
