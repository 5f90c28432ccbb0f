#include "host/query/uplink_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/iul_app_message_repository.h"

namespace host {

namespace {

model::filter_roll filterOf(const UplinkQuery& query) {
    model::filter_roll filter;
    filter.modem_ids = eachOnce(query.devices);
    filter.tags = query.tags;
    filter.begin = query.period.begin;
    filter.end = query.period.end;
    filter.by_time_detected = query.detected;
    filter.limit = limitToAsk(query.limit);
    return filter;
}

} // namespace

void showUplinks(const UplinkQuery& query, Session& session) {
    auto& repository = *session.messages().UlMessageRepository();
    const auto returned =
        attempt(QStringLiteral("reading the uplinks at ") + serverName(session.settings()),
                [&] { return repository.GetMessages(filterOf(query)); });
    const auto time = query.detected ? &model::message::time_detected : &model::message::timestamp;
    showAnswer(newestFirst(std::move(*returned), query.limit, time), QStringLiteral("uplinks"),
               session);
}

} // namespace host
