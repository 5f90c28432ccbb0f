#include "model/legacy_readers.h"

#include "model/documents/dl_message.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/json/json_variant.h"
#include "model/legacy_json.h"

#include <QJsonDocument>

#include <utility>

namespace bson_utils {

namespace {

QDateTime utc(int secs) {
    return QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
}

// A record while its document is being read. The time of expiry is told apart, because an absent
// one is not the same as one that no QDateTime can hold.
template <typename Record>
struct draft : Record {
    bool hasTtl = false;
};

// Members that the document does not have are as reading an empty object gives them.
template <typename Record>
Record finished(draft<Record>&& read, local_times& times) {
    if (!read.hasTtl) {
        read.ttl = times.at(0);
    }
    if (read.timestamp.isNull()) {
        read.timestamp = utc(0);
    }
    if constexpr (requires { read.extended_data; }) {
        if (read.extended_data.isNull()) {
            read.extended_data = QJsonDocument{QJsonObject{}};
        }
    }
    return std::move(read);
}

// Hands each element to `readField(draft, key, element)`, which takes or skips it.
template <typename Record, typename ReadField>
Record read(const bsoncxx::v1::document::view& document, local_times& times, ReadField readField) {
    draft<Record> record;
    legacy_json element{document};
    while (element.next()) {
        readField(record, element.key(), element);
    }
    return finished(element.renderable() ? std::move(record) : draft<Record>{}, times);
}

} // namespace

model::dl_message legacy_reader::readDL(const bsoncxx::v1::document::view& document) {
    namespace field = layout::dl_messages;
    return read<model::dl_message>(
        document, m_times,
        [this](draft<model::dl_message>& message, std::string_view key, legacy_json& element) {
            if (key == field::id) {
                message.db_id = element.toOid();
            } else if (key == field::modem_id) {
                message.modem_id = element.toInt();
            } else if (key == field::api_key) {
                message.api_key = element.toString();
            } else if (key == field::data) {
                message.data = element.toObject();
            } else if (key == field::status) {
                message.status = static_cast<model::dl_message::dl_status>(element.toInt());
            } else if (key == field::timeout) {
                message.timeout = element.toInt();
            } else if (key == field::f_ack) {
                message.f_ack = element.toInt();
            } else if (key == field::payload) {
                message.payload = QByteArray::fromHex(element.toString().toLatin1());
            } else if (key == field::ttl) {
                message.ttl = m_times.at(element.toDateMsecs());
                message.hasTtl = true;
            } else if (key == field::timestamp) {
                message.timestamp = utc(element.toInt());
            } else {
                element.skip();
            }
        });
}

model::dev_value legacy_reader::readValue(const bsoncxx::v1::document::view& document) {
    namespace field = layout::eav_values;
    return read<model::dev_value>(
        document, m_times,
        [this](draft<model::dev_value>& value, std::string_view key, legacy_json& element) {
            if (key == field::modem_id) {
                value.modem_id = element.toInt();
            } else if (key == field::message_id) {
                value.message_id = element.toString();
            } else if (key == field::timestamp) {
                value.timestamp = utc(element.toInt());
            } else if (key == field::tag) {
                value.tag = element.toString();
            } else if (key == field::obis_code) {
                value.obis_code = element.toString();
            } else if (key == field::extended_data) {
                value.extended_data = QJsonDocument{element.toObject()};
            } else if (key == field::ttl) {
                value.ttl = m_times.at(element.toDateMsecs());
                value.hasTtl = true;
            } else if (key == field::value) {
                value.value = toVariantOfDoubles(element.toValue());
            } else {
                element.skip();
            }
        });
}

model::dev_event legacy_reader::readEvent(const bsoncxx::v1::document::view& document) {
    namespace field = layout::eav_events;
    return read<model::dev_event>(
        document, m_times,
        [this](draft<model::dev_event>& event, std::string_view key, legacy_json& element) {
            if (key == field::modem_id) {
                event.modem_id = element.toInt();
            } else if (key == field::timestamp) {
                event.timestamp = utc(element.toInt());
            } else if (key == field::message_id) {
                event.message_id = element.toString();
            } else if (key == field::event_code) {
                event.event_code = element.toInt();
            } else if (key == field::message) {
                event.message = element.toString();
            } else if (key == field::parameter) {
                event.parameter = element.toInt();
            } else if (key == field::extended_data) {
                event.extended_data = QJsonDocument{element.toObject()};
            } else if (key == field::ttl) {
                event.ttl = m_times.at(element.toDateMsecs());
                event.hasTtl = true;
            } else {
                element.skip();
            }
        });
}

model::dl_message fromBsonDL(const bsoncxx::v1::document::view& document) {
    return legacy_reader{}.readDL(document);
}

model::dev_value fromBsonValue(const bsoncxx::v1::document::view& document) {
    return legacy_reader{}.readValue(document);
}

model::dev_event fromBsonEvent(const bsoncxx::v1::document::view& document) {
    return legacy_reader{}.readEvent(document);
}

} // namespace bson_utils
