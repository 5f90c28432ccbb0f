#include "model/model_convertors.h"

#include "model/json/json_forms.h"

#include <QVector>

namespace model_convertors {

namespace {

/// Indexed by model::dl_message::dl_status.
const QVector<QString> dl_status_string{
    QStringLiteral("PENDING"),
    QStringLiteral("WAIT_DATA"),
    QStringLiteral("EXECUTED"),
    QStringLiteral("TIMEOUT"),
};

} // namespace

template <>
model::dl_message fromJson<model::dl_message>(const QJsonObject& object) {
    const json_members json{object};
    model::dl_message message;
    message.f_ack = json.number("f_ack");
    message.modem_id = json.number("modem_id");
    message.timeout = json.number("timeout");
    message.status = static_cast<model::dl_message::dl_status>(json.number("status"));
    // Deliberate: a command is as old as its arrival, whatever time the object holds.
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.data = json.object("data");
    message.api_key = json.text("api_key");
    message.payload = hexBytes(json, "payload");
    return message;
}

QJsonObject toJson(const model::dl_message& message) {
    return jsonObject({
        {"data", message.data},
        {"db_id", message.db_id},
        {"f_ack", message.f_ack},
        {"modem_id", message.modem_id},
        {"timeout", message.timeout},
        {"payload", hexText(message.payload)},
        {"dl_status", dl_status_string.value(static_cast<int>(message.status))},
        {"timestamp", seconds(message.timestamp)},
        {"ttl", seconds(message.ttl)},
    });
}

} // namespace model_convertors
