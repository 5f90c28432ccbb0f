#include "model/model_convertors.h"

#include "model/json/compact_json.h"
#include "model/json/json_members.h"
#include "model/json/json_writer.h"

#include <QJsonValue>

#include <algorithm>
#include <array>
#include <utility>

namespace model_convertors {

namespace {

using queue_status = enum model::dl_queues::status;

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

model::dl_queues::element readElement(const QJsonObject& object) {
    const json_members json{object};
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
    return jsonObject({
        {"data", element.data},
        {"db_id", element.db_id},
        {"repeat", element.repeat},
        {"status", nameOf(element.status)},
        {"type", element.type},
    });
}

QJsonObject writeQueue(const model::dl_queues::queue& queue) {
    QJsonObject json;
    for (auto element = queue.elements.constBegin(); element != queue.elements.constEnd();
         ++element) {
        json.insert(element.key(), writeElement(element.value()));
    }
    // Deliberate: the settings come last and overwrite an element of the same name.
    json.insert(QLatin1String("repeat"), queue.repeat);
    json.insert(QLatin1String("start_from"), queue.start_from);
    json.insert(QLatin1String("status"), nameOf(queue.status));
    json.insert(QLatin1String("timeout"), queue.timeout);
    return json;
}

template <typename Value>
bool hasKeyTwice(const QMap<QString, Value>& map) {
    return std::adjacent_find(map.keyBegin(), map.keyEnd()) != map.keyEnd();
}

bool writeOrdinary(json_writer& json, const model::dl_queues::element& element) {
    return json.beginObject() && json.name("data") && json.value(element.data) &&
           json.name("db_id") && json.value(element.db_id) && json.name("repeat") &&
           json.value(element.repeat) && json.name("status") &&
           json.value(nameOf(element.status)) && json.name("type") && json.value(element.type) &&
           json.endObject();
}

bool writeOrdinary(json_writer& json, const model::dl_queues::queue& queue) {
    auto element = queue.elements.constBegin();
    const auto end = queue.elements.constEnd();
    const auto setting = [&](std::string_view name, const auto& value) {
        for (; element != end && element.key() < jsonKey(name); ++element) {
            if (!json.key(element.key()) || !writeOrdinary(json, element.value())) {
                return false;
            }
        }
        const bool isOverwritten = element != end && element.key() == jsonKey(name);
        return !isOverwritten && json.name(name) && json.value(value);
    };
    if (hasKeyTwice(queue.elements) || !json.beginObject() || !setting("repeat", queue.repeat) ||
        !setting("start_from", queue.start_from) || !setting("status", nameOf(queue.status)) ||
        !setting("timeout", queue.timeout)) {
        return false;
    }
    for (; element != end; ++element) {
        if (!json.key(element.key()) || !writeOrdinary(json, element.value())) {
            return false;
        }
    }
    return json.endObject();
}

} // namespace

template <>
model::dl_queues fromJson<model::dl_queues>(const QJsonObject& object) {
    const json_members json{object};
    model::dl_queues queues;
    const QJsonObject dl = json.object("dl");
    for (auto queue = dl.constBegin(); queue != dl.constEnd(); ++queue) {
        queues.dl.insert(queue.key(), readQueue(queue.value().toObject()));
    }
    queues.status = queueStatus(json.text("status"));
    queues.lock = json.flag("lock");
    return queues;
}

QJsonObject toJson(const model::dl_queues& queues) {
    QJsonObject dl;
    for (auto queue = queues.dl.constBegin(); queue != queues.dl.constEnd(); ++queue) {
        dl.insert(queue.key(), writeQueue(queue.value()));
    }
    return jsonObject({
        {"dl", dl},
        {"status", nameOf(queues.status)},
        {"lock", queues.lock},
    });
}

bool writeOrdinary(json_writer& json, const model::dl_queues& queues) {
    if (hasKeyTwice(queues.dl) || !json.beginObject() || !json.name("dl") || !json.beginObject()) {
        return false;
    }
    for (auto queue = queues.dl.constBegin(); queue != queues.dl.constEnd(); ++queue) {
        if (!json.key(queue.key()) || !writeOrdinary(json, queue.value())) {
            return false;
        }
    }
    return json.endObject() && json.name("lock") && json.value(queues.lock) &&
           json.name("status") && json.value(nameOf(queues.status)) && json.endObject();
}

QByteArray compactJson(const model::dl_queues& queues) {
    json_writer json;
    return writeOrdinary(json, queues) ? json.take() : plainJson(toJson(queues));
}

} // namespace model_convertors
