#include "host/records/command_builder.h"

#include "host/records/demo_mark.h"

#include <array>

namespace host {

namespace {

constexpr std::array requests = {"read registers", "read status", "set clock"};

/// A command number, the device's number and the clock, as a device might get them.
QByteArray payload(int request, const model::message& message) {
    QByteArray bytes(1, static_cast<char>(request));
    bytes.append(
        QByteArray::fromHex(QByteArray::number(message.modem_id, 16).rightJustified(8, '0')));
    bytes.append(QByteArray::fromHex(
        QByteArray::number(message.timestamp.toSecsSinceEpoch(), 16).rightJustified(16, '0')));
    return bytes;
}

} // namespace

std::vector<model::dl_message> buildCommands(const std::vector<model::message>& messages) {
    std::vector<model::dl_message> commands;
    commands.reserve(messages.size());
    for (const auto& message : messages) {
        const auto request = commands.size() % requests.size();
        model::dl_message command;
        command.modem_id = message.modem_id;
        command.timeout = 60;
        command.ttl = message.ttl;
        command.timestamp = message.timestamp.addSecs(1);
        command.api_key = demoSource();
        command.data = {{QStringLiteral("request"), QLatin1String(requests[request])},
                        {QStringLiteral("answers"), QString::number(message.unique_id)}};
        command.payload = payload(static_cast<int>(request), message);
        commands.push_back(command);
    }
    return commands;
}

} // namespace host
