#include "host/ingest/reading_blocks.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

const QString meterOne = "3131313131313131"_q; // 11111111
const QString meterTwo = "3232323232323232"_q; // 22222222

/// What came out: the code and the device, "?" where it is not known.
class Blocks : public testing::Test {
protected:
    void add(int secs, const QString& code, const QVariant& value = 1) {
        host::MeterReading reading;
        reading.timeSecs = secs;
        reading.obisCode = code;
        reading.value = value;
        blocks.add({reading, {}});
    }
    void addSerial(int secs, const QString& digits) { add(secs, "0-0:96.1.1"_q, digits); }

    host::ReadingBlocks make(std::optional<int> device) {
        return {device, [this](const auto& reading, std::optional<int> found) {
                    taken.append(reading.reading.obisCode + QLatin1Char(' ') +
                                 (found ? QString::number(*found) : "?"_q));
                }};
    }

    QStringList taken;
    host::ReadingBlocks blocks = make({});
};

TEST_F(Blocks, AreOfTheMeterWhoseNumberIsAmongThem) {
    add(1, "a"_q);
    addSerial(1, meterOne);
    add(1, "b"_q);
    blocks.close();
    EXPECT_EQ(taken, (QStringList{"a 11111111"_q, "0-0:96.1.1 11111111"_q, "b 11111111"_q}));
}

TEST_F(Blocks, EndWithTheirSecond) {
    addSerial(1, meterOne);
    add(2, "a"_q);
    addSerial(2, meterTwo);
    blocks.close();
    EXPECT_EQ(taken,
              (QStringList{"0-0:96.1.1 11111111"_q, "a 22222222"_q, "0-0:96.1.1 22222222"_q}));
}

TEST_F(Blocks, EndWithTheFirstCodeThatComesAgain) {
    add(1, "a"_q);
    addSerial(1, meterOne);
    add(1, "a"_q);
    addSerial(1, meterTwo);
    blocks.close();
    EXPECT_EQ(taken, (QStringList{"a 11111111"_q, "0-0:96.1.1 11111111"_q, "a 22222222"_q,
                                  "0-0:96.1.1 22222222"_q}));
}

TEST_F(Blocks, WithoutANumberAreOfTheMeterBefore) {
    addSerial(1, meterOne);
    add(2, "a"_q);
    blocks.close();
    EXPECT_EQ(taken.back(), "a 11111111"_q);
}

TEST_F(Blocks, OfAnotherInputAreOfNoMeterBefore) {
    addSerial(1, meterOne);
    blocks.beginInput();
    add(2, "a"_q);
    blocks.close();
    EXPECT_EQ(taken.back(), "a ?"_q);
}

TEST_F(Blocks, AreOfTheDeviceThatTheUserNames) {
    auto named = make(7);
    host::MeterReading serial;
    serial.obisCode = "0-0:96.1.1"_q;
    serial.value = meterOne;
    named.add({serial, {}});
    named.close();
    EXPECT_EQ(taken, QStringList("0-0:96.1.1 7"_q));
}

TEST_F(Blocks, WaitUntilTheyAreOver) {
    add(1, "a"_q);
    add(1, "b"_q);
    EXPECT_TRUE(taken.isEmpty());
    EXPECT_EQ(blocks.open(), 2U);
}

} // namespace
