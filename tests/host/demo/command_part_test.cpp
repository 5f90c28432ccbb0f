#include "host/demo/demo_parts.h"

#include "host/failure.h"
#include "tests/host/demo/fake_dl_repository.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace test_support::literals;
using Status = model::dl_message::dl_status;

class CommandPart : public testing::Test {
protected:
    CommandPart() {
        for (int number = 0; number < 8; ++number) {
            model::message message;
            message.modem_id = number + 1;
            message.timestamp = QDateTime::fromSecsSinceEpoch(1'800'000'000 - number, Qt::UTC);
            messages.push_back(message);
        }
    }

    host::Accounting run() { return runPart(host::commandPart(repository, messages), console); }

    std::vector<model::message> messages;
    test_support::FakeDlRepository repository;
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

TEST_F(CommandPart, AccountsForEveryCommand) {
    EXPECT_EQ(accountingLine(run()), "8 read, 8 stored, 8 read back equal, 0 lost"_q);
}

TEST_F(CommandPart, LeavesEveryCommandExecutedOrTimedOut) {
    run();
    const auto executed = std::ranges::count_if(
        repository.stored, [](const auto& command) { return command.status == Status::EXECUTED; });
    EXPECT_EQ(executed, 6);
    EXPECT_EQ(repository.acknowledged, 6);
    EXPECT_EQ(repository.stored.size() - 6, static_cast<std::size_t>(std::ranges::count_if(
                                                repository.stored, [](const auto& command) {
                                                    return command.status == Status::TIMEOUT;
                                                })));
}

TEST_F(CommandPart, ShowsTheStatesStepByStep) {
    run();
    EXPECT_NE(output.str().find(" issued        │       8 │       0 │        0 │         0 │       "
                                "                   8\n"
                                " sent          │       0 │       8 │        0 │         0 │       "
                                "                   8\n"
                                " half answered │       0 │       4 │        2 │         2 │       "
                                "                   4\n"
                                " finished      │       0 │       0 │        6 │         2 │       "
                                "                   0\n"),
              std::string::npos)
        << output.str();
}

TEST_F(CommandPart, FindsAStoreThatForgetsTheStatus) {
    repository.ignoresStatus = true;
    EXPECT_FALSE(isComplete(run()));
}

TEST_F(CommandPart, FindsACommandThatTheStoreChanges) {
    repository.spoil = [](model::dl_message& command) {
        if (command.modem_id == 3) {
            command.payload.clear();
        }
    };
    EXPECT_EQ(accountingLine(run()), "8 read, 8 stored, 7 read back equal, 0 lost, 1 different"_q);
}

TEST_F(CommandPart, ReplacesTheCommandsOfAnEarlierDemo) {
    run();
    EXPECT_TRUE(isComplete(run()));
    EXPECT_EQ(repository.stored.size(), 8U);
}

TEST_F(CommandPart, LeavesAStoreAloneThatHoldsRealCommandsForItsDevices) {
    model::dl_message real;
    real.modem_id = 2;
    real.timestamp = QDateTime::fromSecsSinceEpoch(1, Qt::UTC);
    real.api_key = "operator"_q;
    repository.stored.push_back(real);
    EXPECT_THROW(run(), host::Failure);
    EXPECT_EQ(repository.stored.size(), 1U);
}

} // namespace
