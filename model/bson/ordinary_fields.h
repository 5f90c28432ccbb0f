#pragma once

#include "model/bson/element_walk.h"
#include "model/bson/query_memory.h"

#include <bson/bson.h>
#include <bsoncxx/v1/document/view.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <optional>
#include <string_view>

namespace bson_utils {

/// Reads a document that this driver wrote: the expected fields in their order, each with its type.
///
/// At the first thing that is not so, a content that is not ordinary included (json_text.h), it
/// gives up: what was read is of no use, every further field is 0 or empty, and ordinary() is
/// false. Ask for the fields one after the other, then for ordinary(). Borrows the document and the
/// memory.
class ordinary_fields {
public:
    ordinary_fields(const bsoncxx::v1::document::view& document, query_memory& memory)
        : m_element(document), m_memory(memory) {}

    int number(std::string_view key);
    QString text(std::string_view key);
    /// The number that the hexadecimal digits of a text are.
    quint64 hexNumber(std::string_view key);
    /// What the hexadecimal digits of a text stand for.
    QByteArray hexBytes(std::string_view key);
    QJsonObject object(std::string_view key);
    /// A double, int32, text or boolean; numbers are doubles.
    QVariant value(std::string_view key);
    /// Lowercase hexadecimal text of an ObjectId.
    QString oid(std::string_view key);
    /// A date that a double holds exactly too.
    QDateTime localTime(std::string_view key);
    /// An int64 of which the low 32 bits count, unsigned.
    QDateTime localSecs(std::string_view key);
    /// An int64 that fits an int.
    QDateTime utcSecs(std::string_view key);
    void skip(std::string_view key, bson_type_t type) { next(key, type); }

    /// Whether all was as expected and nothing is left.
    bool ordinary();

private:
    bool next(std::string_view key);
    bool next(std::string_view key, bson_type_t type);
    std::int64_t int64(std::string_view key);
    QString sharedText();
    template <typename Result>
    Result orGiveUp(std::optional<Result> result);

    element_walk m_element;
    query_memory& m_memory;
    bool m_ordinary = true;
};

} // namespace bson_utils
