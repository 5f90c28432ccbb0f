#include "model/model_convertors.h"

#include "model/json/json_forms.h"

namespace model_convertors {

QJsonObject toJson(const model::dev_value& value) {
    return jsonObject({
        {"value", QJsonValue::fromVariant(value.value)},
        {"ttl", seconds(value.ttl)},
        {"timestamp", seconds(value.timestamp)},
        {"tag", value.tag},
        {"obis_code", value.obis_code},
        {"message_id", value.message_id},
        {"modem_id", value.modem_id},
    });
}

} // namespace model_convertors
