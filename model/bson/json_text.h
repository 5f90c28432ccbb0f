#pragma once

#include <bson/bson.h>
#include <bsoncxx/v1/document/view.hpp>

#include <QJsonObject>
#include <QString>

#include <optional>
#include <string_view>

/// BSON documents as JSON objects by way of JSON text, which Qt's parser turns into an object twice
/// as fast as insertion member by member.
namespace bson_utils {

/// What the members of `document` are in JSON, if they are ordinary; otherwise nothing.
///
/// Ordinary are the types that JSON has too: finite doubles, int32, int64 below 2^53, texts,
/// booleans, nulls, documents and arrays, a few levels of them; keys of printable ASCII; texts in
/// valid UTF-8 without a byte order mark, and not so long that the detour does not pay. Whichever
/// way such a document is read, through its extended-JSON text or value by value, the result is
/// this.
std::optional<QJsonObject> ordinaryObject(const bsoncxx::v1::document::view& document);

bool isAscii(std::string_view text);

/// A text that every reader decodes alike: valid UTF-8 without a byte order mark, or ASCII, zero
/// characters included.
std::optional<QString> ordinaryText(std::string_view utf8);

/// What Qt reads in the legacy extended JSON text that libbson renders of `document`: ObjectIds are
/// {"$oid": …}, dates {"$date": …}, 64-bit integers plain numbers, and so on. Empty if that text
/// does not parse, as with a not-a-number, an infinite double or more than 200 levels. Throws
/// bsoncxx::v1::exception (bson_errc::malformed) where libbson cannot make a text.
QJsonObject legacyObject(const bsoncxx::v1::document::view& document);

} // namespace bson_utils
