#include "tests/soak/call_log.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using soak::CallLog;
using soak::Clock;

class CallLogTest : public testing::Test {
protected:
    void call(Clock::time_point begin, bool works) {
        log.note(begin, begin + 5ms, works ? std::nullopt : std::optional<std::string>("port 27"));
    }

    CallLog log;
};

TEST_F(CallLogTest, CountsTheCallsUntilOneWorksAgain) {
    log.serversAreBack();
    call(Clock::now(), false);
    EXPECT_FALSE(log.works());
    call(Clock::now(), true);
    EXPECT_TRUE(log.works());
    call(Clock::now(), true);
    EXPECT_EQ(log.figures().callsUntilWorking, (std::map<int, int>{{2, 1}}));
}

TEST_F(CallLogTest, LeavesOutCallsThatBeganBeforeTheServersWereBack) {
    const auto before = Clock::now() - 1s;
    log.serversAreBack();
    call(before, false);
    call(before, true);
    EXPECT_FALSE(log.works());
    call(Clock::now(), true);
    EXPECT_EQ(log.figures().callsUntilWorking, (std::map<int, int>{{1, 1}}));
}

TEST_F(CallLogTest, SaysThatNoneWorked) {
    log.serversAreBack();
    call(Clock::now(), false);
    log.giveUp();
    EXPECT_EQ(log.figures().stayedBroken, 1);
}

TEST_F(CallLogTest, AddsUpCallsAndFailures) {
    call(Clock::now(), true);
    call(Clock::now(), false);
    call(Clock::now(), false);
    const auto figures = log.figures();
    EXPECT_EQ(figures.calls, 3);
    EXPECT_EQ(figures.acknowledged, 1);
    EXPECT_EQ(figures.thrown, 2);
    EXPECT_EQ(figures.longest, 5ms);
    EXPECT_EQ(figures.failures, (std::map<std::string, std::int64_t>{{"port #", 2}}));
}

} // namespace
