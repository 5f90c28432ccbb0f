#include "host/downlink/command_actions.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "interfaces/idl_app_message_repository.h"

namespace host {

namespace {

/// What the interface calls the two ways in which there is no such command.
QString fault(const QString& id, const QString& thrown) {
    if (thrown == QLatin1String("invalid id")) {
        return QStringLiteral("\"%1\" is no id of a command, which has 24 hexadecimal digits")
            .arg(id);
    }
    if (thrown == QLatin1String("not exist")) {
        return QStringLiteral("there is no command with the id %1").arg(id);
    }
    return QStringLiteral("reading the command %1 failed: %2").arg(id, thrown);
}

model::dl_message find(const QString& id, Session& session) {
    auto& repository = *session.messages().DlMessageRepository();
    return attempt(
        QStringLiteral("reading the command %1 at %2").arg(id, serverName(session.settings())),
        [&] {
            try {
                return repository.GetById(id);
            } catch (const QString& thrown) {
                throw Failure(fault(id, thrown));
            }
        });
}

} // namespace

void issueCommand(const CommandOrder& order, Session& session) {
    model::dl_message command;
    command.modem_id = order.device;
    command.data = order.data;
    command.payload = order.payload;
    command.api_key = order.apiKey;
    command.timeout = order.timeout;
    command.timestamp = QDateTime::currentDateTimeUtc();
    command.ttl = command.timestamp.addSecs(order.lifeSecs);
    auto& repository = *session.messages().DlMessageRepository();
    attempt(QStringLiteral("storing a command for device %1 at %2")
                .arg(order.device)
                .arg(serverName(session.settings())),
            [&] { repository.SaveMessage(command); });
    session.results().line(command.db_id);
}

void ackCommand(const QString& id, Session& session) {
    // The store says nothing of an id that it does not have.
    find(id, session);
    auto& repository = *session.messages().DlMessageRepository();
    attempt(QStringLiteral("acknowledging the command %1 at %2")
                .arg(id, serverName(session.settings())),
            [&] { repository.AckCommand(id); });
}

void showCommand(const QString& id, Session& session) {
    const auto command = find(id, session);
    if (session.options().form != OutputForm::Table) {
        showRecords<model::dl_message>({command}, session);
        return;
    }
    auto output = session.output({{.name = {}, .title = QStringLiteral("Member")},
                                  {.name = {}, .title = QStringLiteral("Value")}});
    for (const auto& column : columnsOf<model::dl_message>()) {
        output.add({column.field.name, column.cell(command, session)});
    }
    output.finish();
}

} // namespace host
