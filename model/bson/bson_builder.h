#pragma once

#include <bson/bson.h>
#include <bsoncxx/v1/array/value.hpp>
#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/oid.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace bson_utils {

/// Builds one BSON document, element by element, in the order of the calls.
///
/// A thin owner of a libbson document: what is appended is written at once, so a builder costs one
/// buffer whatever the nesting. Every append throws bsoncxx::v1::exception (bson_error.h) if
/// libbson refuses the element (a key with a zero character, more than 2 GiB); the document then
/// holds what was appended before. While a nested document or array is being filled, only its own
/// builder may be used.
class bson_builder {
public:
    bson_builder();
    ~bson_builder();

    bson_builder(const bson_builder&) = delete;
    bson_builder& operator=(const bson_builder&) = delete;

    void appendNull(std::string_view key);
    void appendBool(std::string_view key, bool value);
    void appendInt32(std::string_view key, std::int32_t value);
    void appendInt64(std::string_view key, std::int64_t value);
    void appendDouble(std::string_view key, double value);
    /// A BSON string; zero characters inside it are kept.
    void appendUtf8(std::string_view key, std::string_view utf8);
    void appendString(std::string_view key, const QString& value);
    /// A string of lowercase hexadecimal digits.
    void appendHex(std::string_view key, const QByteArray& bytes);
    /// A date: UTC milliseconds since the Unix epoch.
    void appendDate(std::string_view key, const QDateTime& time);
    /// An int64 of seconds as stores in the field hold them: Qt's unsigned 32-bit count, so that a
    /// null date-time, one before 1970 (but for the last second of 1969) and one after 2106 all
    /// become 4294967295.
    void appendSecs(std::string_view key, const QDateTime& time);
    void appendOid(std::string_view key, const bsoncxx::v1::oid& oid);
    /// A copy of a finished document.
    void appendDocument(std::string_view key, const bsoncxx::v1::document::view& document);

    /// Appends an embedded document or array that `fill(bson_builder&)` writes.
    template <typename Fill>
    void appendDocument(std::string_view key, const Fill& fill)
        requires std::is_invocable_v<const Fill&, bson_builder&>
    {
        bson_builder child{*this, key, nesting::document};
        fill(child);
        child.close();
    }
    template <typename Fill>
    void appendArray(std::string_view key, const Fill& fill)
        requires std::is_invocable_v<const Fill&, bson_builder&>
    {
        bson_builder child{*this, key, nesting::array};
        fill(child);
        child.close();
    }

    /// Replaces the content by what libbson's extended-JSON reader makes of `json` (UTF-8). Throws
    /// bsoncxx::v1::exception with the reader's words when it rejects the text; the builder is
    /// empty then. The process's locale does not matter.
    void readJson(std::string_view json);

    /// Hands the finished document over and leaves the builder empty.
    bsoncxx::v1::document::value take();
    bsoncxx::v1::array::value takeArray();

private:
    enum class nesting { document, array };

    bson_builder(bson_builder& parent, std::string_view key, nesting kind);
    void close();
    void check(bool appended, std::string_view key) const;

    bson_t m_document{};
    bson_builder* m_parent = nullptr;
    nesting m_kind = nesting::document;
};

} // namespace bson_utils
