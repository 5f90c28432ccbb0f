#include "model/model_convertors.h"

#include "model/json/json_members.h"

namespace model_convertors {

template <>
model::custom_cmd fromJson<model::custom_cmd>(const QJsonObject& object) {
    const json_members json{object};
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

} // namespace model_convertors
