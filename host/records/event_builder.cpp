#include "host/records/event_builder.h"

#include "host/records/demo_mark.h"

#include <QSet>
#include <QStringList>

#include <array>

namespace host {

namespace {

struct StatusMember {
    const char* name;
    EventCode code;
};

constexpr std::array<StatusMember, 4> statusMembers{{
    {"error_flags", EventCode::ErrorFlag},
    {"error", EventCode::ErrorFlag},
    {"status", EventCode::Status},
    {"current_status", EventCode::Status},
}};

model::dev_event makeEvent(const model::message& message, const StatusWord& status) {
    model::dev_event event;
    event.modem_id = message.modem_id;
    event.timestamp = message.timestamp;
    event.event_code = static_cast<int>(status.code);
    event.message_id = QString::number(message.unique_id);
    event.message = status.word;
    event.extended_data = QJsonDocument(marked({{QStringLiteral("member"), status.member}}));
    event.parameter = status.place;
    event.ttl = message.ttl;
    return event;
}

} // namespace

std::vector<StatusWord> statusWords(const QJsonObject& readings) {
    std::vector<StatusWord> found;
    QSet<QString> known{QStringLiteral("OK")};
    for (const auto& member : statusMembers) {
        const auto words = readings.value(QLatin1String(member.name))
                               .toString()
                               .split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (int place = 0; place < words.size(); ++place) {
            if (!known.contains(words[place])) {
                known.insert(words[place]);
                found.push_back({QLatin1String(member.name), member.code, words[place], place});
            }
        }
    }
    return found;
}

std::vector<model::dev_event> findEvents(const std::vector<model::message>& messages) {
    std::vector<model::dev_event> events;
    for (const auto& message : messages) {
        for (const auto& status : statusWords(message.data.object())) {
            events.push_back(makeEvent(message, status));
        }
    }
    return events;
}

} // namespace host
