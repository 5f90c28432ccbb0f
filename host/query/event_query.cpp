#include "host/query/event_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/ieav_repository.h"

namespace host {

namespace {

model::filter_eav filterOf(const EventQuery& query) {
    auto filter = filterFor<model::filter_eav>(query);
    // Of events, these select by the text.
    filter.tags = query.texts;
    return filter;
}

} // namespace

void showEvents(const EventQuery& query, Session& session) {
    auto& repository = *session.values().EAVRepository();
    const auto returned =
        attempt(QStringLiteral("reading the events at ") + serverName(session.settings()),
                [&] { return repository.GetEvents(filterOf(query)); });
    showAnswer(newestFirst(std::move(*returned), query.limit), QStringLiteral("events"), session);
}

} // namespace host
