#include "host/records/command_builder.h"

#include "host/records/demo_mark.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

model::message message() {
    model::message message;
    message.modem_id = 0x01020304;
    message.unique_id = 77;
    message.timestamp = QDateTime::fromSecsSinceEpoch(0x5c978ca1, Qt::UTC);
    message.ttl = message.timestamp.addSecs(60);
    return message;
}

TEST(CommandBuilder, AddressesTheMessagesDevice) {
    const auto command = host::buildCommands({message()}).front();
    EXPECT_EQ(command.modem_id, 0x01020304);
    EXPECT_EQ(command.timestamp, message().timestamp.addSecs(1));
    EXPECT_EQ(command.ttl, message().ttl);
    EXPECT_EQ(command.data,
              (QJsonObject{{"request"_q, "read registers"_q}, {"answers"_q, "77"_q}}));
}

TEST(CommandBuilder, IssuesPendingCommandsOfTheDemo) {
    const auto command = host::buildCommands({message()}).front();
    EXPECT_EQ(command.status, model::dl_message::dl_status::PENDING);
    EXPECT_EQ(command.api_key, host::demoSource());
    EXPECT_EQ(command.db_id, QString());
}

TEST(CommandBuilder, PutsRequestDeviceAndClockIntoThePayload) {
    const auto commands = host::buildCommands({message(), message()});
    EXPECT_EQ(commands[1].payload.toHex(), "0101020304000000005c978ca1"_qba);
}

} // namespace
