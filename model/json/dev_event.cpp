#include "model/model_convertors.h"

#include "model/json/json_forms.h"

namespace model_convertors {

QJsonObject toJson(const model::dev_event& event) {
    return jsonObject({
        {"event_code", event.event_code},
        {"modem_id", event.modem_id},
        {"parameter", event.parameter},
        {"extended_data", content(event.extended_data)},
        {"message", event.message},
        {"message_id", event.message_id},
        {"timestamp", seconds(event.timestamp)},
        {"ttl", seconds(event.ttl)},
    });
}

} // namespace model_convertors
