#include "model/bson/bson_builder.h"

#include "model/bson/bson_error.h"
#include "model/bson/numeric_locale.h"
#include "model/bson/utf8_text.h"

#include <limits>
#include <string>

namespace bson_utils {

namespace {

void freeBson(std::uint8_t* data) noexcept {
    bson_free(data);
}

// libbson takes lengths as int; a text that is longer cannot be part of a document either.
int lengthOf(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        refuse(bson_errc::unwritable,
               "a text of " + std::to_string(text.size()) + " bytes exceeds the format's limit");
    }
    return static_cast<int>(text.size());
}

// A message ends at a zero character, which is what makes most refused keys refused.
std::string shown(std::string_view key) {
    std::string text{key};
    for (auto at = text.find('\0'); at != std::string::npos; at = text.find('\0', at)) {
        text.replace(at, 1, "\\0");
    }
    return text;
}

} // namespace

bson_builder::bson_builder() {
    bson_init(&m_document);
}

bson_builder::bson_builder(bson_builder& parent, std::string_view key, nesting kind)
    : m_parent(&parent), m_kind(kind) {
    const auto begin =
        kind == nesting::document ? bson_append_document_begin : bson_append_array_unsafe_begin;
    parent.check(begin(&parent.m_document, key.data(), lengthOf(key), &m_document), key);
}

bson_builder::~bson_builder() {
    if (m_parent == nullptr) {
        bson_destroy(&m_document);
    } else {
        close();
    }
}

// A child writes into its parent's buffer; libbson accepts nothing more there until the child ends.
void bson_builder::close() {
    if (m_parent == nullptr) {
        return;
    }
    const auto end = m_kind == nesting::document ? bson_append_document_end : bson_append_array_end;
    end(&m_parent->m_document, &m_document);
    m_parent = nullptr;
    bson_init(&m_document);
}

void bson_builder::check(bool appended, std::string_view key) const {
    if (!appended) {
        refuse(bson_errc::unwritable, "the key \"" + shown(key) + "\" in a document of " +
                                          std::to_string(m_document.len) + " bytes");
    }
}

void bson_builder::appendNull(std::string_view key) {
    check(bson_append_null(&m_document, key.data(), lengthOf(key)), key);
}

void bson_builder::appendBool(std::string_view key, bool value) {
    check(bson_append_bool(&m_document, key.data(), lengthOf(key), value), key);
}

void bson_builder::appendInt32(std::string_view key, std::int32_t value) {
    check(bson_append_int32(&m_document, key.data(), lengthOf(key), value), key);
}

void bson_builder::appendInt64(std::string_view key, std::int64_t value) {
    check(bson_append_int64(&m_document, key.data(), lengthOf(key), value), key);
}

void bson_builder::appendDouble(std::string_view key, double value) {
    check(bson_append_double(&m_document, key.data(), lengthOf(key), value), key);
}

void bson_builder::appendUtf8(std::string_view key, std::string_view utf8) {
    // libbson takes a null pointer for a BSON null.
    const char* text = utf8.data() == nullptr ? "" : utf8.data();
    check(bson_append_utf8(&m_document, key.data(), lengthOf(key), text, lengthOf(utf8)), key);
}

void bson_builder::appendString(std::string_view key, const QString& value) {
    appendUtf8(key, utf8_text{value}.view());
}

void bson_builder::appendHex(std::string_view key, const QByteArray& bytes) {
    const QByteArray digits = bytes.toHex();
    appendUtf8(key, {digits.constData(), static_cast<std::size_t>(digits.size())});
}

void bson_builder::appendDate(std::string_view key, const QDateTime& time) {
    check(bson_append_date_time(&m_document, key.data(), lengthOf(key), time.toMSecsSinceEpoch()),
          key);
}

void bson_builder::appendSecs(std::string_view key, const QDateTime& time) {
    appendInt64(key, time.toTime_t());
}

void bson_builder::appendOid(std::string_view key, const bsoncxx::v1::oid& oid) {
    bson_oid_t raw;
    bson_oid_init_from_data(&raw, oid.bytes());
    check(bson_append_oid(&m_document, key.data(), lengthOf(key), &raw), key);
}

void bson_builder::appendDocument(std::string_view key,
                                  const bsoncxx::v1::document::view& document) {
    bson_t nested;
    if (!bson_init_static(&nested, document.data(), document.size())) {
        refuse(bson_errc::malformed, "the value of the key \"" + shown(key) + '"');
    }
    check(bson_append_document(&m_document, key.data(), lengthOf(key), &nested), key);
}

void bson_builder::readJson(std::string_view json) {
    const numeric_locale decimalPoint;
    const int length = lengthOf(json);
    bson_destroy(&m_document);
    bson_error_t error;
    if (!bson_init_from_json(&m_document, json.data(), length, &error)) {
        bson_init(&m_document);
        constexpr std::size_t shownSize = 100;
        refuse(bson_errc::json_rejected,
               std::string{error.message} + ": " + std::string{json.substr(0, shownSize)});
    }
}

bsoncxx::v1::document::value bson_builder::take() {
    std::uint32_t length = 0;
    std::uint8_t* data = bson_destroy_with_steal(&m_document, true, &length);
    bson_init(&m_document);
    return {data, length, &freeBson};
}

bsoncxx::v1::array::value bson_builder::takeArray() {
    std::uint32_t length = 0;
    std::uint8_t* data = bson_destroy_with_steal(&m_document, true, &length);
    bson_init(&m_document);
    return {data, length, &freeBson};
}

} // namespace bson_utils
