#include "model/model_convertors.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QLatin1String>
#include <QVector>

#include <array>
#include <utility>

namespace model_convertors {

namespace {

using queue_status = enum model::dl_queues::status;

/// Indexed by model::dl_message::dl_status.
const QVector<QString> dl_status_string{
    QStringLiteral("PENDING"),
    QStringLiteral("WAIT_DATA"),
    QStringLiteral("EXECUTED"),
    QStringLiteral("TIMEOUT"),
};

const std::array<std::pair<QString, queue_status>, 4> queueStatusNames{{
    {QStringLiteral("NONE"), queue_status::NONE},
    {QStringLiteral("DONE"), queue_status::DONE},
    {QStringLiteral("WAIT"), queue_status::WAIT},
    {QStringLiteral("FAIL"), queue_status::FAIL},
}};

queue_status queueStatus(const QString& name) {
    for (const auto& [known, status] : queueStatusNames) {
        if (known == name) {
            return status;
        }
    }
    return queue_status::NONE;
}

QString nameOf(queue_status status) {
    for (const auto& [name, known] : queueStatusNames) {
        if (known == status) {
            return name;
        }
    }
    return {};
}

// Reads the members of one object with the accessors' defaults.
class members {
public:
    explicit members(const QJsonObject& json) : m_json(json) {}

    int number(const char* key) const { return value(key).toInt(); }
    double real(const char* key) const { return value(key).toDouble(); }
    bool flag(const char* key) const { return value(key).toBool(); }
    QString text(const char* key) const { return value(key).toString(); }
    QJsonObject object(const char* key) const { return value(key).toObject(); }
    QJsonArray array(const char* key) const { return value(key).toArray(); }
    QByteArray hexBytes(const char* key) const {
        return QByteArray::fromHex(text(key).toLocal8Bit());
    }
    QDateTime time(const char* key, Qt::TimeSpec spec) const {
        return QDateTime::fromSecsSinceEpoch(number(key), spec);
    }

private:
    QJsonValue value(const char* key) const { return m_json.value(QLatin1String{key}); }

    const QJsonObject& m_json;
};

void insert(QJsonObject& json, const char* key, const QJsonValue& value) {
    json.insert(QLatin1String{key}, value);
}

QJsonValue seconds(const QDateTime& time) {
    return QJsonValue{time.toSecsSinceEpoch()};
}

QJsonValue hexText(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

QJsonValue content(const QJsonDocument& document) {
    return QJsonValue::fromVariant(document.toVariant());
}

// The members that heartbeats and incoming messages have in common.
template <typename Record>
void readReception(Record& record, const members& json) {
    record.modem_id = json.number("modem_id");
    record.station_id = json.number("station_id");
    record.iterator = json.number("iterator");
    record.phy = json.text("phy");
    record.snr = json.number("snr");
    record.rssi = json.number("rssi");
    record.hw_type = json.text("hw_type");
    record.protocol = json.text("protocol");
    record.time_detected = json.time("time_detected", Qt::UTC);
    record.time_saved = json.time("time_saved", Qt::UTC);
    record.payload = json.hexBytes("payload");
    record.bs_tz = json.number("bs_tz");
}

model::dl_queues::element readElement(const QJsonObject& object) {
    const members json{object};
    model::dl_queues::element element;
    element.data = json.object("data");
    element.db_id = json.text("db_id");
    element.repeat = json.number("repeat");
    element.status = queueStatus(json.text("status"));
    element.type = json.text("type");
    return element;
}

model::dl_queues::queue readQueue(const QJsonObject& json) {
    model::dl_queues::queue queue;
    for (auto member = json.constBegin(); member != json.constEnd(); ++member) {
        const QString key = member.key();
        const QJsonValue value = member.value();
        if (key == QLatin1String("repeat") && value.isDouble()) {
            queue.repeat = value.toInt();
        } else if (key == QLatin1String("start_from") && value.isDouble()) {
            queue.start_from = value.toInt();
        } else if (key == QLatin1String("status") && value.isString()) {
            queue.status = queueStatus(value.toString());
        } else if (key == QLatin1String("timeout") && value.isDouble()) {
            queue.timeout = value.toInt();
        } else if (value.isObject()) {
            queue.elements.insert(key, readElement(value.toObject()));
        }
    }
    return queue;
}

QJsonObject writeElement(const model::dl_queues::element& element) {
    QJsonObject json;
    insert(json, "data", element.data);
    insert(json, "db_id", element.db_id);
    insert(json, "repeat", element.repeat);
    insert(json, "status", nameOf(element.status));
    insert(json, "type", element.type);
    return json;
}

QJsonObject writeQueue(const model::dl_queues::queue& queue) {
    QJsonObject json;
    for (auto element = queue.elements.constBegin(); element != queue.elements.constEnd();
         ++element) {
        json.insert(element.key(), writeElement(element.value()));
    }
    // Deliberate: the settings come last and overwrite an element of the same name.
    insert(json, "repeat", queue.repeat);
    insert(json, "start_from", queue.start_from);
    insert(json, "status", nameOf(queue.status));
    insert(json, "timeout", queue.timeout);
    return json;
}

} // namespace

template <>
model::dl_message fromJson<model::dl_message>(const QJsonObject& object) {
    const members json{object};
    model::dl_message message;
    message.f_ack = json.number("f_ack");
    message.modem_id = json.number("modem_id");
    message.timeout = json.number("timeout");
    message.status = static_cast<model::dl_message::dl_status>(json.number("status"));
    // Deliberate: a command is as old as its arrival, whatever time the object holds.
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.data = json.object("data");
    message.api_key = json.text("api_key");
    message.payload = json.hexBytes("payload");
    return message;
}

template <>
model::hb_message fromJson<model::hb_message>(const QJsonObject& object) {
    const members json{object};
    model::hb_message message;
    readReception(message, json);
    message.temperature = json.real("temperature");
    message.voltage = json.real("voltage");
    return message;
}

template <>
model::in_message fromJson<model::in_message>(const QJsonObject& object) {
    const members json{object};
    model::in_message message;
    readReception(message, json);
    message.dl_phy = json.text("dl_phy");
    message.dl_mode = json.text("dl_mode");
    message.last_dl_bs = json.number("last_dl_bs");
    message.last_dl_bs_aver_busyness = json.real("last_dl_bs_aver_busyness");
    message.last_dl_bs_busyness = json.real("last_dl_bs_busyness");
    message.last_success_dl_ts = json.number("last_success_dl_ts");
    return message;
}

template <>
model::message fromJson<model::message>(const QJsonObject& object) {
    const members json{object};
    model::message message;
    // A negative number is sign-extended.
    message.unique_id = static_cast<quint64>(qint64{json.number("unique_id")});
    // Deliberate: local time, where heartbeats and incoming messages have UTC.
    message.ttl = json.time("ttl", Qt::LocalTime);
    message.timestamp = json.time("timestamp", Qt::LocalTime);
    message.time_detected = json.time("time_detected", Qt::LocalTime);
    message.bs_timezone_offset = json.number("bs_timezone_offset");
    message.tag = json.text("tag");
    message.station_id = json.number("station_id");
    message.snr = json.number("snr");
    message.rssi = json.number("rssi");
    message.protocol = json.text("protocol");
    message.phy = json.text("phy");
    message.parse_status = json.text("parse_status");
    message.modem_id = json.number("modem_id");
    // Deliberate: a number here, one character of text in the record; hosts send type codes.
    message.hw_type = QLatin1Char{static_cast<char>(json.number("hw_type"))};
    message.extended_data = QJsonDocument{json.object("extended_data")};
    message.data = QJsonDocument{json.object("data")};
    // Deliberate: the text as it stands, although toJson writes hexadecimal.
    message.payload = json.text("payload").toLatin1();
    return message;
}

template <>
model::custom_cmd fromJson<model::custom_cmd>(const QJsonObject& object) {
    const members json{object};
    model::custom_cmd command;
    const QJsonObject query = json.object("query");
    for (auto member = query.constBegin(); member != query.constEnd(); ++member) {
        command.query.insert(member.key(), member.value().toString());
    }
    command.body = json.object("body");
    command.type = json.text("type");
    command.instance = json.text("instance");
    const QJsonArray modem_ids = json.array("modem_id");
    for (const QJsonValue& modem_id : modem_ids) {
        command.modem_id.append(modem_id.toInt());
    }
    return command;
}

template <>
model::dl_queues fromJson<model::dl_queues>(const QJsonObject& object) {
    const members json{object};
    model::dl_queues queues;
    const QJsonObject dl = json.object("dl");
    for (auto queue = dl.constBegin(); queue != dl.constEnd(); ++queue) {
        queues.dl.insert(queue.key(), readQueue(queue.value().toObject()));
    }
    queues.status = queueStatus(json.text("status"));
    queues.lock = json.flag("lock");
    return queues;
}

QJsonObject toJson(const model::dev_value& value) {
    QJsonObject json;
    insert(json, "value", QJsonValue::fromVariant(value.value));
    insert(json, "ttl", seconds(value.ttl));
    insert(json, "timestamp", seconds(value.timestamp));
    insert(json, "tag", value.tag);
    insert(json, "obis_code", value.obis_code);
    insert(json, "message_id", value.message_id);
    insert(json, "modem_id", value.modem_id);
    return json;
}

QJsonObject toJson(const model::dev_event& event) {
    QJsonObject json;
    insert(json, "event_code", event.event_code);
    insert(json, "modem_id", event.modem_id);
    insert(json, "parameter", event.parameter);
    insert(json, "extended_data", content(event.extended_data));
    insert(json, "message", event.message);
    insert(json, "message_id", event.message_id);
    insert(json, "timestamp", seconds(event.timestamp));
    insert(json, "ttl", seconds(event.ttl));
    return json;
}

QJsonObject toJson(const model::message& message) {
    QJsonObject json;
    insert(json, "unique_id", static_cast<qint64>(message.unique_id));
    insert(json, "ttl", seconds(message.ttl));
    insert(json, "timestamp", seconds(message.timestamp));
    insert(json, "time_detected", seconds(message.time_detected));
    insert(json, "bs_timezone_offset", message.bs_timezone_offset);
    insert(json, "station_id", message.station_id);
    insert(json, "snr", message.snr);
    insert(json, "rssi", message.rssi);
    insert(json, "modem_id", message.modem_id);
    insert(json, "tag", message.tag);
    insert(json, "protocol", message.protocol);
    insert(json, "phy", message.phy);
    insert(json, "parse_status", message.parse_status);
    insert(json, "hw_type", message.hw_type);
    insert(json, "extended_data", content(message.extended_data));
    insert(json, "data", content(message.data));
    insert(json, "payload", hexText(message.payload));
    return json;
}

QJsonObject toJson(const model::dl_message& message) {
    QJsonObject json;
    insert(json, "data", message.data);
    insert(json, "db_id", message.db_id);
    insert(json, "f_ack", message.f_ack);
    insert(json, "modem_id", message.modem_id);
    insert(json, "timeout", message.timeout);
    insert(json, "payload", hexText(message.payload));
    insert(json, "dl_status", dl_status_string.value(static_cast<int>(message.status)));
    insert(json, "timestamp", seconds(message.timestamp));
    insert(json, "ttl", seconds(message.ttl));
    return json;
}

QJsonObject toJson(const model::dl_queues& queues) {
    QJsonObject dl;
    for (auto queue = queues.dl.constBegin(); queue != queues.dl.constEnd(); ++queue) {
        dl.insert(queue.key(), writeQueue(queue.value()));
    }
    QJsonObject json;
    insert(json, "dl", dl);
    insert(json, "status", nameOf(queues.status));
    insert(json, "lock", queues.lock);
    return json;
}

} // namespace model_convertors
