#pragma once

#include <bsoncxx/v1/array/value.hpp>
#include <bsoncxx/v1/document/value.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

/// JSON as BSON.
namespace bson_utils {

/// Member by member: every number becomes a double, nulls are left out.
bsoncxx::v1::document::value toBson(const QJsonObject& json);

/// Element by element, as for an object: a null is left out and later elements move down.
bsoncxx::v1::array::value toBson(const QJsonArray& json);

/// With the types that libbson's extended-JSON reader gives: an ordinary document the direct way,
/// any other by way of its text. Throws as writeText.
bsoncxx::v1::document::value toBson(const QJsonDocument& json);

/// The result of writeText for an ordinary document, without making its text; otherwise nothing.
///
/// Ordinary is an object, or an empty document, with no key that begins with "$" or is empty, no
/// zero character, nothing beyond the basic plane, no whole number from 2^53 on, no number that
/// text cannot hold exactly, a few levels only.
std::optional<bsoncxx::v1::document::value> writeOrdinary(const QJsonDocument& json);

/// By way of compact JSON text and libbson's reader: whole numbers become int32 or int64 (a double
/// beyond 64 bits), nulls are kept, {"$date": …} and {"$oid": …} become dates and ObjectIds. Throws
/// bsoncxx::v1::exception (bson_errc::json_rejected) with the reader's words when it rejects the
/// text.
bsoncxx::v1::document::value writeText(const QJsonDocument& json);

} // namespace bson_utils
