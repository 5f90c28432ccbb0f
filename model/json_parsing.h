#pragma once

#include <bsoncxx/v1/document/view.hpp>

#include <QJsonObject>

#include <optional>

namespace bson_utils {

/// What inserting the document's members one by one into a JSON object would give (fromBsonJobj),
/// but built by Qt's parser from compact text, which takes half the time.
///
/// Nothing where text cannot hold what insertion keeps or where it is in doubt: keys beyond
/// printable ASCII, not-a-number and infinity, whole numbers from 2^53 on, texts that are not UTF-8
/// or hold a byte order mark, many levels, bytes that are no document. Nor where a text is so long
/// that insertion is faster.
std::optional<QJsonObject> parsedObject(const bsoncxx::v1::document::view& document);

} // namespace bson_utils
