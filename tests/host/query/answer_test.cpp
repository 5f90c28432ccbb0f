#include "host/query/answer.h"

#include "host/query/record_query.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

model::dev_value value(int device, qint64 secs) {
    model::dev_value result;
    result.modem_id = device;
    result.timestamp = QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
    return result;
}

using Shown = std::vector<std::pair<int, qint64>>;

Shown shown(const host::Answer<model::dev_value>& answer) {
    Shown result;
    for (const auto& each : answer.records) {
        result.emplace_back(each.modem_id, each.timestamp.toSecsSinceEpoch());
    }
    return result;
}

const std::map<int, std::list<model::dev_value>> returned = {
    {1, {value(1, 40), value(1, 10)}},
    {2, {value(2, 40), value(2, 30)}},
};

TEST(NewestFirst, MixesTheDevices) {
    const auto answer = host::newestFirst(returned, 0);
    EXPECT_EQ(shown(answer), (Shown{{1, 40}, {2, 40}, {2, 30}, {1, 10}}));
    EXPECT_FALSE(answer.cutOff);
}

TEST(NewestFirst, CutsOffTheOldest) {
    const auto answer = host::newestFirst(returned, 3);
    EXPECT_EQ(shown(answer), (Shown{{1, 40}, {2, 40}, {2, 30}}));
    EXPECT_TRUE(answer.cutOff);
}

TEST(NewestFirst, CutsNothingOffThatTheLimitLetsThrough) {
    EXPECT_FALSE(host::newestFirst(returned, 4).cutOff);
}

TEST(LimitToAsk, IsOneMoreUnlessThereIsNone) {
    EXPECT_EQ(host::limitToAsk(100), 101);
    EXPECT_EQ(host::limitToAsk(0), 0);
}

TEST(EachOnce, KeepsTheOrder) {
    EXPECT_EQ(host::eachOnce(std::list{3, 1, 3, 2, 1}), (std::list{3, 1, 2}));
}

} // namespace
