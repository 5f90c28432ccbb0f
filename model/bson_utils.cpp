#include "model/bson_utils.h"

#include "model/documents/dl_message.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/field_lookup.h"
#include "model/json_parsing.h"
#include "model/json_typing.h"
#include "model/documents/ul_message.h"
#include "model/bson/utf8_text.h"

#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <QDateTime>
#include <QDebug>

#include <array>
#include <string_view>
#include <utility>

namespace bson_utils {

namespace {

using bsoncxx::v1::types::id;

std::string_view view(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

QString toQString(bsoncxx::v1::stdx::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

QJsonObject insertedObject(const bsoncxx::v1::document::view& document);

QJsonValue fromBsonValue(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case id::k_document:
        return insertedObject(element.get_document().value);
    case id::k_array:
        return fromBsonArr(element.get_array().value);
    default:
        return fromBsonOther(element);
    }
}

QJsonObject insertedObject(const bsoncxx::v1::document::view& document) {
    QJsonObject json;
    for (const bsoncxx::v1::element::view& element : document) {
        const auto key = element.key();
        // Deliberate: keys are read as Latin-1 although they are written as UTF-8.
        json.insert(QString::fromLatin1(key.data(), static_cast<int>(key.size())),
                    fromBsonValue(element));
    }
    return json;
}

void appendMembers(bson_builder& document, const QJsonObject& json);
void appendElements(bson_builder& array, const QJsonArray& json);

void appendJsonValue(bson_builder& parent, std::string_view key, const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        parent.appendBool(key, value.toBool());
        break;
    case QJsonValue::Double:
        parent.appendDouble(key, value.toDouble());
        break;
    case QJsonValue::String:
        parent.appendString(key, value.toString());
        break;
    case QJsonValue::Array:
        parent.appendArray(key,
                           [&](bson_builder& array) { appendElements(array, value.toArray()); });
        break;
    case QJsonValue::Object:
        parent.appendDocument(
            key, [&](bson_builder& document) { appendMembers(document, value.toObject()); });
        break;
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
}

void appendMembers(bson_builder& document, const QJsonObject& json) {
    for (auto member = json.constBegin(); member != json.constEnd(); ++member) {
        const utf8_text key{member.key()};
        appendJsonValue(document, key.view(), member.value());
    }
}

void appendElements(bson_builder& array, const QJsonArray& json) {
    int index = 0;
    for (const QJsonValue& element : json) {
        if (!element.isNull() && !element.isUndefined()) {
            appendJsonValue(array, std::to_string(index++), element);
        }
    }
}

// JSON text that libbson's reader takes for the numbers that Qt means by it. Qt prints a large
// whole double as plain digits, and the reader lets digits beyond 64 bits wrap around; with a
// fraction they are a double again.
QByteArray readableText(const QJsonDocument& json) {
    constexpr int digitsOfInt64 = 19;
    const QByteArray text = json.toJson(QJsonDocument::Compact);
    QByteArray readable;
    int copied = 0;
    bool inString = false;
    for (int at = 0; at < text.size(); ++at) {
        if (text[at] == '"') {
            inString = !inString;
        } else if (inString) {
            at += text[at] == '\\' ? 1 : 0;
        } else if (text[at] >= '1' && text[at] <= '9') {
            int end = at;
            while (end < text.size() && text[end] >= '0' && text[end] <= '9') {
                ++end;
            }
            const bool whole = text[end] != '.' && text[end] != 'e';
            bool fits = true;
            if (whole && end - at >= digitsOfInt64) {
                text.mid(at, end - at).toLongLong(&fits);
            }
            if (!fits) {
                readable += text.mid(copied, end - copied) + ".0";
                copied = end;
            }
            at = end - 1;
        }
    }
    return copied == 0 ? text : readable + text.mid(copied);
}

// Seconds as stores in the field hold them: Qt's unsigned 32-bit count widened, so that a null
// date-time, one before 1970 (but for the last second of 1969) and one after 2106 all become
// 4294967295.
std::int64_t storedSecs(const QDateTime& time) {
    return time.toTime_t();
}

QDateTime fromStoredSecs(std::int64_t secs, local_times& times) {
    constexpr qint64 msecsPerSec = 1000;
    return times.at(msecsPerSec * static_cast<uint>(secs));
}

} // namespace

void bsonAppend(bson_builder& document, std::string_view key, const QVariant& value) {
    switch (value.type()) {
    case QVariant::Invalid:
        document.appendUtf8(key, "invalid type");
        break;
    case QVariant::Bool:
        document.appendBool(key, value.toBool());
        break;
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
        // Deliberate: there is no int64 value; hosts read 32-bit numbers back.
        document.appendInt32(key, value.toInt());
        break;
    case QVariant::Double:
        document.appendDouble(key, value.toDouble());
        break;
    case QVariant::String:
        document.appendString(key, value.toString());
        break;
    default:
        qDebug() << "toBson() failed to convert qvariant" << value << "with type"
                 << value.typeName();
        document.appendUtf8(key, "unknown type");
        break;
    }
}

bsoncxx::v1::document::value toBson(const QJsonDocument& json) {
    if (json.isEmpty() || json.isObject()) {
        bson_builder document;
        if (appendAsTextWouldRead(document, json.object())) {
            return document.take();
        }
    }
    bson_builder document;
    document.readJson(view(readableText(json)));
    return document.take();
}

bsoncxx::v1::document::value toBson(const QJsonObject& json) {
    bson_builder document;
    appendMembers(document, json);
    return document.take();
}

bsoncxx::v1::array::value toBson(const QJsonArray& json) {
    bson_builder array;
    appendElements(array, json);
    return array.takeArray();
}

QJsonObject fromBsonJobj(const bsoncxx::v1::document::view& document) {
    auto parsed = parsedObject(document);
    return parsed ? *std::move(parsed) : insertedObject(document);
}

QJsonArray fromBsonArr(const bsoncxx::v1::array::view& array) {
    QJsonArray json;
    for (const bsoncxx::v1::element::view& element : array) {
        json.append(fromBsonValue(element));
    }
    return json;
}

QJsonValue fromBsonOther(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case id::k_double:
        return QJsonValue{element.get_double().value};
    case id::k_string:
        return QJsonValue{toQString(element.get_string().value)};
    case id::k_bool:
        return QJsonValue{element.get_bool().value};
    case id::k_int32:
        return QJsonValue{element.get_int32().value};
    case id::k_int64:
        return QJsonValue{static_cast<qint64>(element.get_int64().value)};
    default:
        return QJsonValue{QJsonValue::Null};
    }
}

bsoncxx::v1::document::value toBson(const model::message& message) {
    namespace field = layout::ul_messages;
    bson_builder document;
    document.appendString(field::id, QString::number(message.unique_id, 16));
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendInt32(field::station_id, message.station_id);
    document.appendString(field::phy, message.phy);
    document.appendInt32(field::rssi, message.rssi);
    document.appendInt32(field::snr, message.snr);
    document.appendDate(field::ttl, message.ttl.toMSecsSinceEpoch());
    document.appendInt64(field::timestamp, storedSecs(message.timestamp));
    document.appendInt64(field::time_detected, storedSecs(message.time_detected));
    document.appendInt32(field::bs_timezone_offset, message.bs_timezone_offset);
    document.appendString(field::tag, message.tag);
    document.appendString(field::hw_type, message.hw_type);
    document.appendString(field::protocol, message.protocol);
    document.appendDocument(field::extended_data, toBson(message.extended_data));
    document.appendDocument(field::data, toBson(message.data));
    document.appendUtf8(field::payload, view(message.payload.toHex()));
    document.appendString(field::parse_status, message.parse_status);
    return document.take();
}

bsoncxx::v1::document::value toBson(const model::dl_message& message) {
    namespace field = layout::dl_messages;
    bson_builder document;
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendString(field::api_key, message.api_key);
    document.appendDocument(field::data,
                            [&](bson_builder& data) { appendMembers(data, message.data); });
    document.appendInt32(field::status, static_cast<std::int32_t>(message.status));
    document.appendInt32(field::timeout, message.timeout);
    document.appendInt32(field::f_ack, message.f_ack);
    document.appendUtf8(field::payload, view(message.payload.toHex()));
    document.appendDate(field::ttl, message.ttl.toMSecsSinceEpoch());
    document.appendInt64(field::timestamp, storedSecs(message.timestamp));
    return document.take();
}

bsoncxx::v1::document::value toBson(const model::dev_value& value) {
    namespace field = layout::eav_values;
    bson_builder document;
    document.appendInt32(field::modem_id, value.modem_id);
    document.appendString(field::message_id, value.message_id);
    document.appendInt64(field::timestamp, storedSecs(value.timestamp));
    document.appendString(field::tag, value.tag);
    document.appendString(field::obis_code, value.obis_code);
    // The type of the value as it was, also where bsonAppend narrows or replaces it.
    document.appendInt64(field::val_type, value.value.type());
    document.appendDocument(field::extended_data, toBson(value.extended_data));
    document.appendDate(field::ttl, value.ttl.toMSecsSinceEpoch());
    bsonAppend(document, field::value, value.value);
    return document.take();
}

bsoncxx::v1::document::value toBson(const model::dev_event& event) {
    namespace field = layout::eav_events;
    bson_builder document;
    document.appendInt32(field::modem_id, event.modem_id);
    document.appendInt64(field::timestamp, storedSecs(event.timestamp));
    document.appendString(field::message_id, event.message_id);
    document.appendInt32(field::event_code, event.event_code);
    document.appendString(field::message, event.message);
    document.appendInt32(field::parameter, event.parameter);
    document.appendDocument(field::extended_data, toBson(event.extended_data));
    document.appendDate(field::ttl, event.ttl.toMSecsSinceEpoch());
    return document.take();
}

model::message fromBsonUL(const bsoncxx::v1::document::view& document) {
    local_times times;
    return fromBsonUL(document, times);
}

model::message fromBsonUL(const bsoncxx::v1::document::view& document, local_times& times) {
    namespace field = layout::ul_messages;
    const field_lookup<field::fields> fields{document};
    const auto text = [&](const bsoncxx::v1::element::view& element) {
        return toQString(element.get_string().value);
    };

    model::message message;
    message.unique_id = text(fields[field::id]).toULongLong(nullptr, 16);
    message.modem_id = fields[field::modem_id].get_int32().value;
    message.station_id = fields[field::station_id].get_int32().value;
    message.phy = text(fields[field::phy]);
    message.rssi = fields[field::rssi].get_int32().value;
    message.snr = fields[field::snr].get_int32().value;
    if (const auto& ttl = fields[field::ttl]) {
        message.ttl = times.at(ttl.get_date().value.count());
    }
    message.timestamp = fromStoredSecs(fields[field::timestamp].get_int64().value, times);
    message.time_detected = fromStoredSecs(fields[field::time_detected].get_int64().value, times);
    message.bs_timezone_offset = fields[field::bs_timezone_offset].get_int32().value;
    message.tag = text(fields[field::tag]);
    message.hw_type = text(fields[field::hw_type]);
    message.protocol = text(fields[field::protocol]);
    message.extended_data =
        QJsonDocument{fromBsonJobj(fields[field::extended_data].get_document().value)};
    message.data = QJsonDocument{fromBsonJobj(fields[field::data].get_document().value)};
    message.payload = QByteArray::fromHex(text(fields[field::payload]).toLatin1());
    message.parse_status = text(fields[field::parse_status]);
    return message;
}

} // namespace bson_utils
