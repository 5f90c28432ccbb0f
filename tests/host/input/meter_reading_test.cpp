#include "host/input/meter_reading.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QBuffer>
#include <QFile>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::MeterReadingFile;

MeterReadingFile read(QByteArray text) {
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    return host::readMeterReadings(buffer);
}

QString failureOf(MeterReadingFile file) {
    file.name = "readings.ndjson"_q;
    try {
        host::deviceNumber(file);
    } catch (const host::Failure& failure) {
        return QString::fromUtf8(failure.what());
    }
    return {};
}

QVariant valueOf(const QByteArray& value, const QByteArray& unit = {}) {
    const auto file = read(R"({"time":1,"obis":"1-0:1.8.1","value":)"_qba + value + unit + "}"_qba);
    return file.records.empty() ? QVariant() : file.records.front().value;
}

void expectRejected(const MeterReadingFile& file, int lineNumber, const QString& reason) {
    ASSERT_EQ(file.rejected.size(), 1U);
    EXPECT_EQ(file.rejected.front().lineNumber, lineNumber);
    EXPECT_EQ(file.rejected.front().reason, reason);
}

const auto good = "{\"time\":5,\"obis\":\"1-0:1.8.1\",\"value\":0.1,\"unit\":\"kWh\"}\n"_qba;

TEST(MeterReadings, TakesTimeCodeValueAndUnitFromALine) {
    const auto file = read(good);
    ASSERT_EQ(file.records.size(), 1U);
    const auto& reading = file.records.front();
    EXPECT_EQ(reading.lineNumber, 1);
    EXPECT_EQ(reading.timeSecs, 5);
    EXPECT_EQ(reading.obisCode, "1-0:1.8.1"_q);
    EXPECT_EQ(reading.value, QVariant(0.1));
    EXPECT_EQ(reading.unit, "kWh"_q);
}

TEST(MeterReadings, KeepAWholeQuantityAsADouble) {
    const auto value = valueOf("0"_qba, R"(,"unit":"A")"_qba);
    EXPECT_EQ(value.userType(), QMetaType::Double);
    EXPECT_EQ(value, QVariant(0.0));
}

TEST(MeterReadings, KeepACountAsAnInt) {
    const auto value = valueOf("50"_qba);
    EXPECT_EQ(value.userType(), QMetaType::Int);
    EXPECT_EQ(value, QVariant(50));
}

TEST(MeterReadings, KeepACountThatNoIntHoldsAsADouble) {
    EXPECT_EQ(valueOf("2147483648"_qba).userType(), QMetaType::Double);
    EXPECT_EQ(valueOf("0.5"_qba).userType(), QMetaType::Double);
}

TEST(MeterReadings, KeepTextAndTruthAsTheyAre) {
    EXPECT_EQ(valueOf(R"("190324150521W")"_qba), QVariant("190324150521W"_q));
    EXPECT_EQ(valueOf(R"("")"_qba), QVariant(""_q));
    EXPECT_EQ(valueOf("true"_qba), QVariant(true));
}

TEST(MeterReadings, KeepAListAsItsJsonText) {
    EXPECT_EQ(valueOf(R"([1, "a"])"_qba, R"(,"unit":"s")"_qba), QVariant("[1,\"a\"]"_q));
}

TEST(MeterReadings, ReportALineThatIsNotJsonWithItsLineNumber) {
    expectRejected(read(good + "x"_qba), 2, "not JSON: illegal value at byte 2"_q);
}

TEST(MeterReadings, ReportAMissingTimeWithItsLineNumber) {
    expectRejected(read(good + R"({"obis":"1","value":1})"_qba), 2, "no \"time\" number"_q);
}

TEST(MeterReadings, ReportATimeThatIsNoWholeSecond) {
    const auto reason = "the time is not a number of whole seconds since 1970"_q;
    expectRejected(read(R"({"time":0.5,"obis":"1","value":1})"_qba), 1, reason);
    expectRejected(read(R"({"time":-1,"obis":"1","value":1})"_qba), 1, reason);
    expectRejected(read(R"({"time":1e300,"obis":"1","value":1})"_qba), 1, reason);
}

TEST(MeterReadings, ReportAMissingCodeWithItsLineNumber) {
    expectRejected(read(good + R"({"time":1,"value":1})"_qba), 2, "no \"obis\" text"_q);
}

TEST(MeterReadings, ReportAMissingValueWithItsLineNumber) {
    expectRejected(read(good + R"({"time":1,"obis":"1"})"_qba), 2, "no \"value\""_q);
    expectRejected(read(R"({"time":1,"obis":"1","value":null})"_qba), 1, "no \"value\""_q);
}

TEST(MeterReadings, ReportASecondReadingOfTheSameInstant) {
    expectRejected(read("\n"_qba + good + good), 3, "the same time and OBIS code as in line 2"_q);
}

TEST(MeterReadings, ReadTheRestAfterRejectedLines) {
    const auto file = read("x\n"_qba + good);
    EXPECT_EQ(file.rejected.size(), 1U);
    EXPECT_EQ(file.records.size(), 1U);
}

TEST(MeterReadings, ReadAllOfTheShippedReadings) {
    QFile input(QStringLiteral(KELVRO_HOST_DATA_DIR "/meter_readings.ndjson"));
    ASSERT_TRUE(input.open(QIODevice::ReadOnly));
    const auto file = host::readMeterReadings(input);
    EXPECT_TRUE(file.rejected.empty());
    EXPECT_EQ(file.records.size(), 8960U);
    EXPECT_EQ(host::deviceNumber(file), 31'650'618);
}

TEST(MeterReadings, GiveNoDeviceNumberWithoutASerialNumber) {
    EXPECT_EQ(failureOf(read(good)),
              "no line of readings.ndjson has the meter's serial number (0-0:96.1.1)"_q);
}

TEST(MeterReadings, GiveNoDeviceNumberForASerialNumberWithoutDigits) {
    // "ABCD" in hexadecimal digits.
    const auto file = read("\n"_qba + R"({"time":1,"obis":"0-0:96.1.1","value":"41424344"})"_qba);
    EXPECT_EQ(failureOf(file), "readings.ndjson, line 2: the meter's serial number \"ABCD\" does "
                               "not end in digits"_q);
}

TEST(MeterReadings, GiveNoDeviceNumberForANegativeOne) {
    // "-1234567" in hexadecimal digits.
    const auto file = read(R"({"time":1,"obis":"0-0:96.1.1","value":"2d31323334353637"})"_qba);
    EXPECT_THROW(host::deviceNumber(file), host::Failure);
}

} // namespace
