#include "host/demo/demo_parts.h"

#include "host/failure.h"
#include "tests/host/demo/fake_eav_repository.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonObject>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace test_support::literals;

model::message message(int device, qint64 secs, const QString& status) {
    model::message message;
    message.modem_id = device;
    message.timestamp = QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
    message.data = QJsonDocument(QJsonObject{{"status"_q, status}});
    return message;
}

class EventPart : public testing::Test {
protected:
    host::Accounting run() { return runPart(host::eventPart(repository, messages), console); }

    std::vector<model::message> messages = {
        message(1, 1'800'000'000, "LEAK BURST"_q),
        message(2, 1'799'999'940, "OK"_q),
        message(3, 1'799'999'880, "LEAK"_q),
    };
    test_support::FakeEavRepository repository;
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

TEST_F(EventPart, AccountsForEveryEvent) {
    EXPECT_EQ(accountingLine(run()), "3 read, 3 stored, 3 read back equal, 0 lost"_q);
}

TEST_F(EventPart, ShowsDeviceTimeKindAndText) {
    run();
    EXPECT_NE(output.str().find(" 00000003 │ 2027-01-15 07:58:00 │ status │ LEAK\n"),
              std::string::npos)
        << output.str();
}

TEST_F(EventPart, AccountsForNoneWhenAllIsWell) {
    messages = {message(1, 1'800'000'000, "OK"_q)};
    EXPECT_EQ(accountingLine(run()), "0 read, 0 stored, 0 read back equal, 0 lost"_q);
}

TEST_F(EventPart, ReplacesTheEventsOfAnEarlierDemo) {
    run();
    EXPECT_TRUE(isComplete(run()));
    EXPECT_EQ(repository.storedEvents.size(), 3U);
}

TEST_F(EventPart, LeavesAStoreAloneThatHoldsRealEventsOfItsDevices) {
    model::dev_event real;
    real.modem_id = 2;
    real.timestamp = QDateTime::fromSecsSinceEpoch(1, Qt::UTC);
    repository.storedEvents.push_back(real);
    EXPECT_THROW(run(), host::Failure);
    EXPECT_EQ(repository.storedEvents.size(), 1U);
}

TEST_F(EventPart, FindsAnEventThatTheStoreChanges) {
    repository.spoilEvent = [](model::dev_event& event) { event.parameter += event.modem_id / 3; };
    EXPECT_EQ(accountingLine(run()), "3 read, 3 stored, 2 read back equal, 0 lost, 1 different"_q);
}

} // namespace
