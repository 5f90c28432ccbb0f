#include "host/check/read_back.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using Messages = host::ReadBack<model::message>;

model::message message(int device, quint64 id, qint64 secs) {
    model::message message;
    message.modem_id = device;
    message.unique_id = id;
    message.timestamp = QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
    return message;
}

const auto older = message(1, 10, 100);
const auto newer = message(1, 11, 200);
const auto other = message(2, 12, 150);

bool all(const model::message& /*message*/) {
    return true;
}

class ReadBackTest : public testing::Test {
protected:
    host::Accounting accounting() const { return messages.accounting(0); }

    Messages messages{{older, newer, other}};
};

TEST_F(ReadBackTest, CountsRecordsThatCameBackEqual) {
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {other}}});
    EXPECT_EQ(accounting().equal, 3);
    EXPECT_TRUE(isComplete(accounting()));
    EXPECT_EQ(messages.complaints(), QStringList());
}

TEST_F(ReadBackTest, CountsRecordsThatNoQueryReturnedAsLost) {
    messages.check("all"_q, all, {{1, {newer}}, {2, {other}}});
    EXPECT_EQ(accounting().lost, 1);
    EXPECT_EQ(accounting().equal, 2);
    EXPECT_EQ(messages.complaints(), QStringList{"all: message 10 of device 1: not returned"_q});
}

TEST_F(ReadBackTest, CountsARecordThatOneQueryMissesAsDifferent) {
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {other}}});
    messages.check("again"_q, all, {{1, {newer, older}}});
    EXPECT_EQ(accounting().different, 1);
    EXPECT_EQ(accounting().lost, 0);
    EXPECT_EQ(accounting().equal, 2);
}

TEST_F(ReadBackTest, CountsAChangedRecordAsDifferentAndNamesTheMember) {
    auto changed = other;
    changed.snr = 9;
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {changed}}});
    EXPECT_EQ(accounting().different, 1);
    EXPECT_EQ(messages.complaints(),
              QStringList{"all: message 12 of device 2: snr: wrote 0, got 9"_q});
}

TEST_F(ReadBackTest, ExpectsOnlyTheSelectedRecords) {
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {other}}});
    messages.check("device 2"_q, [](const model::message& each) { return each.modem_id == 2; },
                   {{2, {other}}});
    EXPECT_TRUE(isComplete(accounting()));
}

TEST_F(ReadBackTest, CountsARecordThatWasNotSelectedAsUnexpected) {
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {other}}});
    messages.check("device 2"_q, [](const model::message& each) { return each.modem_id == 2; },
                   {{1, {older}}, {2, {other}}});
    EXPECT_EQ(accounting().unexpected, 1);
    EXPECT_EQ(messages.complaints(),
              QStringList{"device 2: message 10 of device 1 was not asked for"_q});
}

TEST_F(ReadBackTest, CountsARecordThatWasNeverWrittenAsUnexpected) {
    messages.check("all"_q, all, {{1, {newer, older, message(1, 99, 50)}}, {2, {other}}});
    EXPECT_EQ(accounting().unexpected, 1);
    EXPECT_EQ(accounting().equal, 3);
}

TEST_F(ReadBackTest, CountsARecordThatCameTwiceAsUnexpected) {
    messages.check("all"_q, all, {{1, {newer, older, older}}, {2, {other}}});
    EXPECT_EQ(accounting().unexpected, 1);
}

TEST_F(ReadBackTest, ComplainsOfARecordAfterAnOlderOne) {
    messages.check("all"_q, all, {{1, {older, newer}}, {2, {other}}});
    EXPECT_EQ(accounting().different, 1);
    EXPECT_EQ(messages.complaints(),
              QStringList{"all: message 11 of device 1: returned after an older one"_q});
}

TEST_F(ReadBackTest, ComplainsOfARecordUnderAnotherDevice) {
    messages.check("all"_q, all, {{1, {newer, other, older}}});
    EXPECT_EQ(accounting().different, 1);
    EXPECT_EQ(messages.complaints(),
              QStringList{"all: message 12 of device 2: returned under device 1"_q});
}

TEST_F(ReadBackTest, CountsARecordWithAnotherFaultAsDifferent) {
    messages.check("all"_q, all, {{1, {newer, older}}, {2, {other}}});
    messages.complain(newer, "without a copy"_q);
    EXPECT_EQ(accounting().different, 1);
    EXPECT_EQ(messages.complaints(),
              QStringList{"stored: message 11 of device 1: without a copy"_q});
}

TEST_F(ReadBackTest, CountsRejectedRecordsAsRead) {
    const auto accounting = messages.accounting(2);
    EXPECT_EQ(accounting.read, 5);
    EXPECT_EQ(accounting.rejected, 2);
    EXPECT_EQ(accounting.stored, 3);
}

} // namespace
