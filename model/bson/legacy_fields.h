#pragma once

#include "model/bson/json_text.h"
#include "model/json/json_members.h"
#include "model/json/json_variant.h"

#include <bson/bson.h>
#include <bsoncxx/v1/document/view.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QVariant>

#include <cstdint>
#include <string_view>

namespace bson_utils {

/// Reads the fields of any document by way of its legacy extended JSON text (legacyObject): what is
/// missing or has another type is 0, empty or the epoch. Throws bsoncxx::v1::exception when made if
/// there is no such text.
class legacy_fields {
public:
    explicit legacy_fields(const bsoncxx::v1::document::view& document)
        : m_members(legacyObject(document)) {}

    int number(std::string_view key) const { return m_members.number(key); }
    QString text(std::string_view key) const { return m_members.text(key); }
    QByteArray hexBytes(std::string_view key) const {
        return QByteArray::fromHex(text(key).toLatin1());
    }
    QJsonObject object(std::string_view key) const { return m_members.object(key); }
    /// Every number, also a nested one, is a double.
    QVariant value(std::string_view key) const { return toVariantOfDoubles(m_members[key]); }
    QString oid(std::string_view key) const { return json_members{object(key)}.text("$oid"); }
    QDateTime utcSecs(std::string_view key) const {
        return QDateTime::fromSecsSinceEpoch(number(key), Qt::UTC);
    }
    QDateTime localTime(std::string_view key) const {
        constexpr double limit = 9223372036854775808.0; // 2^63; conversion is undefined from there
        const double msecs = json_members{object(key)}.real("$date");
        if (msecs >= limit) {
            return QDateTime::fromMSecsSinceEpoch(INT64_MAX);
        }
        return QDateTime::fromMSecsSinceEpoch(msecs < -limit ? INT64_MIN
                                                             : static_cast<qint64>(msecs));
    }
    void skip(std::string_view /*key*/, bson_type_t /*type*/) const {}

private:
    json_members m_members;
};

} // namespace bson_utils
