#include "model/json/compact_json.h"

#include "model/json/json_writer.h"

namespace model_convertors {

QByteArray compactJson(const QJsonObject& object) {
    json_writer json;
    return json.value(object) ? json.take() : plainJson(object);
}

} // namespace model_convertors
