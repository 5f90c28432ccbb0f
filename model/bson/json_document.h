#pragma once

#include <bsoncxx/v1/document/value.hpp>

#include <QJsonDocument>

#include <optional>

/// JSON documents as BSON with the types that libbson's extended-JSON reader gives them.
namespace bson_utils {

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
