#include "host/demo/demo_parts.h"

#include "tests/host/demo/fake_eav_repository.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

namespace {

using namespace test_support::literals;

/// Two energy registers, the power and the serial number in each of 200 seconds.
host::MeterReadingFile sampleFile(int seconds) {
    host::MeterReadingFile file;
    int line = 0;
    for (int second = 0; second < seconds; ++second) {
        const qint64 time = 1'553'436'000 + second;
        const auto add = [&](const QString& code, const QVariant& value, const QString& unit) {
            file.records.push_back({++line, time, code, value, unit});
        };
        // "E0044007131650618" in hexadecimal digits.
        add("0-0:96.1.1"_q, "4530303434303037313331363530363138"_q, {});
        add("1-0:1.8.1"_q, 100.0 + second * 0.001, "kWh"_q);
        add("1-0:2.8.1"_q, 7.0, "kWh"_q);
        add("1-0:1.7.0"_q, second % 2 == 0 ? 0.25 : 0.5, "kW"_q);
    }
    return file;
}

class ValuePart : public testing::Test {
protected:
    host::Accounting run() { return runPart(host::valuePart(repository, file, start), console); }

    bool printed(const char* text) const { return output.str().find(text) != std::string::npos; }

    QDateTime start = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
    host::MeterReadingFile file = sampleFile(200);
    test_support::FakeEavRepository repository;
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

TEST_F(ValuePart, AccountsForEveryReading) {
    EXPECT_EQ(accountingLine(run()), "800 read, 800 stored, 800 read back equal, 0 lost"_q);
}

TEST_F(ValuePart, SavesInBatches) {
    run();
    EXPECT_EQ(repository.batches, (std::list<std::size_t>{500, 300}));
}

TEST_F(ValuePart, ShowsTheConsumptionOfThePeriod) {
    run();
    EXPECT_TRUE(printed(" 1-0:1.8.1       │ 100.000 kWh │ 100.199 kWh │   0.199 kWh\n"))
        << output.str();
    EXPECT_TRUE(printed(" 1-0:2.8.1       │   7.000 kWh │   7.000 kWh │   0.000 kWh\n"));
}

TEST_F(ValuePart, ShowsTheRangeOfThePower) {
    run();
    EXPECT_TRUE(printed("from 2019-03-24 14:00:00 to 2019-03-24 14:03:19 UTC: 200 values between "
                        "0.25 kW and 0.5 kW"))
        << output.str();
}

TEST_F(ValuePart, AcceptsASingleReadingAsFirstAndLast) {
    file = sampleFile(1);
    EXPECT_EQ(accountingLine(run()), "4 read, 4 stored, 4 read back equal, 0 lost"_q);
}

TEST_F(ValuePart, ReplacesTheValuesOfAnEarlierDemoOnly) {
    model::dev_value real;
    real.modem_id = 31'650'618;
    real.timestamp = QDateTime::fromSecsSinceEpoch(1'553'436'000, Qt::UTC);
    real.tag = "real"_q;
    repository.storedValues.push_back(real);
    run();
    EXPECT_TRUE(isComplete(run()));
    EXPECT_EQ(repository.storedValues.size(), 801U);
    EXPECT_TRUE(printed("Deleted 800 meter readings of an earlier demo.\n"));
}

TEST_F(ValuePart, FindsANumberThatTheStoreTurnsIntoAnotherType) {
    repository.spoil = [](model::dev_value& value) {
        if (value.obis_code == "1-0:2.8.1"_q) {
            value.value = 7;
        }
    };
    EXPECT_EQ(accountingLine(run()),
              "800 read, 800 stored, 600 read back equal, 0 lost, 200 different"_q);
}

} // namespace
