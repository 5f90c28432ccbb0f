#include "host/demo/demo_parts.h"

#include "host/failure.h"
#include "host/records/message_builder.h"
#include "tests/host/demo/fake_ul_repository.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace test_support::literals;

class UplinkPart : public testing::Test {
protected:
    UplinkPart() {
        QFile input(QStringLiteral(KELVRO_HOST_DATA_DIR "/radio_telegrams.ndjson"));
        if (input.open(QIODevice::ReadOnly)) {
            file = host::readTelegrams(input);
        }
    }

    host::Accounting run() {
        const auto messages = host::buildMessages(file.records, start);
        const auto rejected = static_cast<int>(file.rejected.size());
        return runPart(host::uplinkPart(repository, messages, rejected), console);
    }

    QDateTime start = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
    host::TelegramFile file;
    test_support::FakeUlRepository repository;
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

TEST_F(UplinkPart, AccountsForEveryTelegram) {
    const auto accounting = run();
    EXPECT_EQ(accountingLine(accounting), "51 read, 51 stored, 51 read back equal, 0 lost"_q);
    EXPECT_TRUE(isComplete(accounting));
}

TEST_F(UplinkPart, CountsRejectedLines) {
    file.rejected.resize(2);
    EXPECT_EQ(accountingLine(run()),
              "53 read, 2 rejected, 51 stored, 51 read back equal, 0 lost"_q);
}

TEST_F(UplinkPart, ShowsDeviceTimeTagPayloadSizeAndReadings) {
    run();
    EXPECT_NE(
        output.str().find(" 00148686 │ 2027-01-15 07:59:00 │ water                │  79 bytes "
                          "│ total: 21.93 m³\n"),
        std::string::npos)
        << output.str();
}

TEST_F(UplinkPart, ReplacesTheMessagesOfAnEarlierDemo) {
    run();
    start = start.addSecs(3600);
    EXPECT_TRUE(isComplete(run()));
    EXPECT_EQ(repository.stored.size(), 51U);
    EXPECT_NE(output.str().find("Deleted 51 uplink messages of an earlier demo.\n"),
              std::string::npos);
}

TEST_F(UplinkPart, LeavesAStoreAloneThatHoldsRealMessagesOfItsDevices) {
    model::message real;
    real.modem_id = 148686;
    real.timestamp = start.addDays(-900);
    repository.stored.push_back(real);
    try {
        run();
        FAIL() << "did not refuse";
    } catch (const host::Failure& failure) {
        EXPECT_STREQ(failure.what(), "the store holds uplink messages of device 148686 that no "
                                     "demo wrote; the demo would have to delete them and does not "
                                     "run");
    }
    EXPECT_EQ(repository.stored.size(), 1U);
    EXPECT_EQ(repository.deletions, 0);
}

TEST_F(UplinkPart, LeavesMessagesOfOtherDevicesAlone) {
    model::message real;
    real.modem_id = 1;
    real.timestamp = start;
    repository.stored.push_back(real);
    EXPECT_TRUE(isComplete(run()));
    EXPECT_EQ(repository.stored.size(), 52U);
}

TEST_F(UplinkPart, FindsAMemberThatTheStoreChanges) {
    repository.spoil = [](model::message& message) {
        if (message.modem_id == 148686) {
            message.payload.chop(1);
        }
    };
    const auto accounting = run();
    EXPECT_EQ(accountingLine(accounting),
              "51 read, 51 stored, 50 read back equal, 0 lost, 1 different"_q);
    EXPECT_FALSE(isComplete(accounting));
}

TEST_F(UplinkPart, StoresTwoTelegramsOfOneMeter) {
    file.records.push_back(file.records.front());
    EXPECT_EQ(accountingLine(run()), "52 read, 52 stored, 52 read back equal, 0 lost"_q);
}

TEST_F(UplinkPart, StoresASingleTelegram) {
    file.records.resize(1);
    EXPECT_EQ(accountingLine(run()), "1 read, 1 stored, 1 read back equal, 0 lost"_q);
}

} // namespace
