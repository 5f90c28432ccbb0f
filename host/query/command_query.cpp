#include "host/query/command_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/idl_app_message_repository.h"

namespace host {

void showCommands(const CommandQuery& query, Session& session) {
    auto& repository = *session.messages().DlMessageRepository();
    // The store counts the commands of each device by themselves; the newest of all are among them.
    const auto filter = filterFor<model::filter_dl>(query);
    const auto returned =
        attempt(QStringLiteral("reading the commands at ") + serverName(session.settings()), [&] {
            return query.pending ? repository.GetNotAckCommands(filter)
                                 : repository.GetCommands(filter);
        });
    showAnswer(newestFirst(std::move(*returned), query.limit),
               query.pending ? QStringLiteral("pending commands") : QStringLiteral("commands"),
               session);
}

} // namespace host
