#pragma once

#include "model/bson/json_values.h"

#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <algorithm>
#include <string_view>

namespace bson_utils {

/// Reads the fields of any document by the BSON library's typed accessors, which throw
/// bsoncxx::v1::exception where a field is missing or has another type. Borrows the document.
class typed_fields {
public:
    /// Throws bsoncxx::v1::exception if there is damage anywhere, also behind the fields.
    explicit typed_fields(const bsoncxx::v1::document::view& document) : m_document(document) {
        std::ranges::for_each(document, [](const auto& /*element*/) {});
    }

    int number(std::string_view key) const { return m_document[key].get_int32().value; }
    QString text(std::string_view key) const {
        const auto utf8 = m_document[key].get_string().value;
        return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    }
    /// 0 if the text is no hexadecimal number of 64 bits.
    quint64 hexNumber(std::string_view key) const {
        constexpr int hexadecimal = 16;
        return text(key).toULongLong(nullptr, hexadecimal);
    }
    QByteArray hexBytes(std::string_view key) const {
        return QByteArray::fromHex(text(key).toLatin1());
    }
    QJsonObject object(std::string_view key) const {
        return fromBsonJobj(m_document[key].get_document().value);
    }
    /// Null if the field is missing.
    QDateTime localTime(std::string_view key) const {
        const auto date = m_document[key];
        return date ? QDateTime::fromMSecsSinceEpoch(date.get_date().value.count()) : QDateTime{};
    }
    /// Of an int64 the low 32 bits count, unsigned.
    QDateTime localSecs(std::string_view key) const {
        return QDateTime::fromTime_t(static_cast<uint>(m_document[key].get_int64().value));
    }

private:
    bsoncxx::v1::document::view m_document;
};

} // namespace bson_utils
