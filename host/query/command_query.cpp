#include "host/query/command_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/idl_app_message_repository.h"

namespace host {

namespace {

model::filter_dl filterOf(const CommandQuery& query) {
    model::filter_dl filter;
    filter.modem_ids = eachOnce(query.devices);
    filter.begin = query.period.begin;
    filter.end = query.period.end;
    // The store counts the commands of each device by themselves; the newest of all are among them.
    filter.limit = limitToAsk(query.limit);
    return filter;
}

} // namespace

void showCommands(const CommandQuery& query, Session& session) {
    auto& repository = *session.messages().DlMessageRepository();
    const auto returned =
        attempt(QStringLiteral("reading the commands at ") + serverName(session.settings()), [&] {
            return query.pending ? repository.GetNotAckCommands(filterOf(query))
                                 : repository.GetCommands(filterOf(query));
        });
    showAnswer(newestFirst(std::move(*returned), query.limit),
               query.pending ? QStringLiteral("pending commands") : QStringLiteral("commands"),
               session);
}

} // namespace host
