#include "bench/baselines/deep_copy.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QVariant>

namespace bench {

namespace {

QJsonValue copyOfAny(const QJsonValue& value);

QJsonArray deepCopy(const QJsonArray& array) {
    QJsonArray copy;
    for (const auto& element : array) {
        copy.append(copyOfAny(element));
    }
    return copy;
}

QJsonValue copyOfAny(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Object:
        return bench::deepCopy(value.toObject());
    case QJsonValue::Array:
        return deepCopy(value.toArray());
    default:
        // A text is copied into the container that it is put into.
        return value;
    }
}

QJsonDocument deepCopy(const QJsonDocument& document) {
    return QJsonDocument{bench::deepCopy(document.object())};
}

QVariant deepCopy(const QVariant& value) {
    return value.type() == QVariant::String ? QVariant{bench::deepCopy(value.toString())} : value;
}

} // namespace

QString deepCopy(const QString& text) {
    return QString{text.constData(), text.size()};
}

QByteArray deepCopy(const QByteArray& bytes) {
    return {bytes.constData(), bytes.size()};
}

QJsonObject deepCopy(const QJsonObject& object) {
    // Qt offers no copy that does not share. What changes the members and adds a text makes a
    // container leave both blocks that it shares, which takes a fifth of inserting member by
    // member; the containers inside stay shared until they are replaced.
    static const QString last = QStringLiteral("\uffff");
    QJsonObject copy = object;
    copy.insert(last, true);
    copy.remove(last);
    for (auto member = copy.begin(); member != copy.end(); ++member) {
        const QJsonValue value = member.value();
        if (value.isObject() || value.isArray()) {
            member.value() = copyOfAny(value);
        }
    }
    return copy;
}

model::message deepCopy(const model::message& message) {
    return {
        .extra_text = deepCopy(message.extra_text),
        .extra_value1 = message.extra_value1,
        .extra_value2 = message.extra_value2,
        .modem_id = message.modem_id,
        .station_id = message.station_id,
        .ttl = message.ttl,
        .timestamp = message.timestamp,
        .time_detected = message.time_detected,
        .bs_timezone_offset = message.bs_timezone_offset,
        .phy = deepCopy(message.phy),
        .snr = message.snr,
        .rssi = message.rssi,
        .tag = deepCopy(message.tag),
        .unique_id = message.unique_id,
        .data = deepCopy(message.data),
        .extended_data = deepCopy(message.extended_data),
        .parse_status = deepCopy(message.parse_status),
        .hw_type = deepCopy(message.hw_type),
        .protocol = deepCopy(message.protocol),
        .payload = deepCopy(message.payload),
    };
}

model::dl_message deepCopy(const model::dl_message& message) {
    return {
        .f_ack = message.f_ack,
        .modem_id = message.modem_id,
        .timeout = message.timeout,
        .ttl = message.ttl,
        .timestamp = message.timestamp,
        .db_id = deepCopy(message.db_id),
        .api_key = deepCopy(message.api_key),
        .status = message.status,
        .data = deepCopy(message.data),
        .payload = deepCopy(message.payload),
        .extra_text = deepCopy(message.extra_text),
    };
}

model::dev_value deepCopy(const model::dev_value& value) {
    return {
        .modem_id = value.modem_id,
        .timestamp = value.timestamp,
        .obis_code = deepCopy(value.obis_code),
        .tag = deepCopy(value.tag),
        .extended_data = deepCopy(value.extended_data),
        .value = deepCopy(value.value),
        .message_id = deepCopy(value.message_id),
        .ttl = value.ttl,
    };
}

model::dev_event deepCopy(const model::dev_event& event) {
    return {
        .modem_id = event.modem_id,
        .timestamp = event.timestamp,
        .event_code = event.event_code,
        .message_id = deepCopy(event.message_id),
        .message = deepCopy(event.message),
        .extended_data = deepCopy(event.extended_data),
        .parameter = event.parameter,
        .ttl = event.ttl,
    };
}

model::dl_queues deepCopy(const model::dl_queues& queues) {
    model::dl_queues copy;
    for (auto queue = queues.dl.begin(); queue != queues.dl.end(); ++queue) {
        model::dl_queues::queue& copied = copy.dl[deepCopy(queue.key())];
        copied.repeat = queue->repeat;
        copied.timeout = queue->timeout;
        copied.start_from = queue->start_from;
        copied.status = queue->status;
        for (auto element = queue->elements.begin(); element != queue->elements.end(); ++element) {
            copied.elements.insert(copied.elements.end(), deepCopy(element.key()),
                                   {.data = deepCopy(element->data),
                                    .type = deepCopy(element->type),
                                    .db_id = deepCopy(element->db_id),
                                    .status = element->status,
                                    .repeat = element->repeat});
        }
    }
    copy.lock = queues.lock;
    copy.status = queues.status;
    return copy;
}

} // namespace bench
