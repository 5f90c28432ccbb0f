#include "host/query/uplink_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/iul_app_message_repository.h"

namespace host {

namespace {

model::filter_roll filterOf(const UplinkQuery& query) {
    auto filter = filterFor<model::filter_roll>(query);
    filter.tags = query.tags;
    filter.by_time_detected = query.detected;
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
