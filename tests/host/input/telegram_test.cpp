#include "host/input/telegram.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QBuffer>
#include <QFile>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::TelegramFile;

TelegramFile read(QByteArray text) {
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    return host::readTelegrams(buffer);
}

QByteArray line(const QByteArray& telegram, const QByteArray& id = R"("00086426")"_qba) {
    return R"({"telegram":")"_qba + telegram + R"(","decoded":{"id":)"_qba + id +
           R"(,"meter":"amiplus","media":"electricity","voltage_v":242}})"_qba + "\n"_qba;
}

/// The reason for which the only line that was rejected was.
void expectRejected(const TelegramFile& file, int lineNumber, const QString& reason) {
    ASSERT_EQ(file.rejected.size(), 1U);
    EXPECT_EQ(file.rejected.front().lineNumber, lineNumber);
    EXPECT_EQ(file.rejected.front().reason, reason);
}

TEST(TelegramFile, TakesPayloadIdMakeMediumAndReadingsFromALine) {
    const auto file = read(line("0aFf10"_qba));
    ASSERT_EQ(file.records.size(), 1U);
    const auto& telegram = file.records.front();
    EXPECT_EQ(telegram.lineNumber, 1);
    EXPECT_EQ(telegram.payload, "\x0a\xff\x10"_qba);
    EXPECT_EQ(telegram.deviceNumber, 86426);
    EXPECT_EQ(telegram.meterId, "00086426"_q);
    EXPECT_EQ(telegram.meterMake, "amiplus"_q);
    EXPECT_EQ(telegram.medium, "electricity"_q);
    EXPECT_EQ(telegram.decoded.value("voltage_v"_q), QJsonValue(242));
}

TEST(TelegramFile, ReadsTheLastLineWithoutItsLineEnd) {
    EXPECT_EQ(read(line("00"_qba).chopped(1)).records.size(), 1U);
}

TEST(TelegramFile, PassesOverBlankLinesButCountsThemInLineNumbers) {
    const auto file = read("\n  \r\n"_qba + line("00"_qba));
    EXPECT_TRUE(file.rejected.empty());
    ASSERT_EQ(file.records.size(), 1U);
    EXPECT_EQ(file.records.front().lineNumber, 3);
}

TEST(TelegramFile, KeepsTwoTelegramsOfOneMeter) {
    EXPECT_EQ(read(line("00"_qba) + line("01"_qba)).records.size(), 2U);
}

TEST(TelegramFile, AcceptsTheLargestId) {
    const auto file = read(line("00"_qba, R"("99999999")"_qba));
    ASSERT_EQ(file.records.size(), 1U);
    EXPECT_EQ(file.records.front().deviceNumber, 99'999'999);
}

TEST(TelegramFile, ReportsALineThatIsNotJsonWithItsLineNumber) {
    expectRejected(read(line("00"_qba) + "{\"telegram\":\n"_qba), 2,
                   "not JSON: unterminated object at byte 14"_q);
}

TEST(TelegramFile, ReportsALineThatIsNoObjectWithItsLineNumber) {
    expectRejected(read("[1]\n"_qba), 1, "not a JSON object"_q);
}

TEST(TelegramFile, ReportsAMissingTelegramWithItsLineNumber) {
    expectRejected(read(R"({"decoded":{"id":"00086426"}})"_qba), 1, "no \"telegram\" text"_q);
}

TEST(TelegramFile, ReportsATelegramThatIsNotTextWithItsLineNumber) {
    expectRejected(read(R"({"telegram":12,"decoded":{"id":"00086426"}})"_qba), 1,
                   "no \"telegram\" text"_q);
}

TEST(TelegramFile, ReportsAnEmptyTelegramWithItsLineNumber) {
    expectRejected(read(line(""_qba)), 1, "the telegram is empty"_q);
}

TEST(TelegramFile, ReportsAnOddNumberOfHexDigitsWithItsLineNumber) {
    expectRejected(read(line("00"_qba) + line("0aF"_qba)), 2,
                   "the telegram has an odd number of hexadecimal digits, 3"_q);
}

TEST(TelegramFile, ReportsACharacterThatIsNoHexDigitWithItsLineNumber) {
    expectRejected(read(line("00"_qba) + line("0ag0"_qba)), 2,
                   "the telegram's character 3, \"g\", is not a hexadecimal digit"_q);
}

TEST(TelegramFile, ReportsMissingReadingsWithTheirLineNumber) {
    expectRejected(read(R"({"telegram":"00"})"_qba), 1, "no \"decoded\" object"_q);
}

TEST(TelegramFile, ReportsAMissingIdWithItsLineNumber) {
    const auto file =
        read(line("00"_qba) + R"({"telegram":"00","decoded":{"meter":"m","media":"water"}})"_qba);
    expectRejected(file, 2, "the meter's id is missing"_q);
}

TEST(TelegramFile, ReportsAnIdThatIsNullAsMissing) {
    expectRejected(read(line("00"_qba, "null"_qba)), 1, "the meter's id is missing"_q);
}

TEST(TelegramFile, ReportsAnIdThatIsANumberWithItsLineNumber) {
    expectRejected(read(line("00"_qba, "86426"_qba)), 1, "the meter's id is not text"_q);
}

TEST(TelegramFile, ReportsAnIdWithHexadecimalDigitsWithItsLineNumber) {
    expectRejected(read(line("00"_qba, R"("0008642a")"_qba)), 1,
                   "the meter's id \"0008642a\" is not eight decimal digits"_q);
}

TEST(TelegramFile, ReportsAnEmptyIdWithItsLineNumber) {
    expectRejected(read(line("00"_qba, R"("")"_qba)), 1,
                   "the meter's id \"\" is not eight decimal digits"_q);
}

TEST(TelegramFile, ReportsAnIdThatIsTooLargeWithItsLineNumber) {
    expectRejected(read(line("00"_qba, R"("100000000")"_qba)), 1,
                   "the meter's id \"100000000\" is too large: it has more than eight digits"_q);
}

TEST(TelegramFile, ReportsAMissingMakeWithItsLineNumber) {
    expectRejected(read(R"({"telegram":"00","decoded":{"id":"00086426","media":"water"}})"_qba), 1,
                   "the decoded readings have no \"meter\" text"_q);
}

TEST(TelegramFile, ReportsAMissingMediumWithItsLineNumber) {
    expectRejected(read(R"({"telegram":"00","decoded":{"id":"00086426","meter":"m"}})"_qba), 1,
                   "the decoded readings have no \"media\" text"_q);
}

TEST(TelegramFile, ReadsTheRestAfterRejectedLines) {
    const auto file = read("x\n"_qba + line("0"_qba) + line("00"_qba) + "y\n"_qba);
    EXPECT_EQ(file.rejected.size(), 3U);
    ASSERT_EQ(file.records.size(), 1U);
    EXPECT_EQ(file.records.front().lineNumber, 3);
}

TEST(TelegramFile, ReadsNothingFromAnEmptyFile) {
    const auto file = read({});
    EXPECT_TRUE(file.records.empty());
    EXPECT_TRUE(file.rejected.empty());
}

TEST(TelegramFile, ReadsAllOfTheShippedTelegrams) {
    QFile input(QStringLiteral(KELVRO_HOST_DATA_DIR "/radio_telegrams.ndjson"));
    ASSERT_TRUE(input.open(QIODevice::ReadOnly));
    const auto file = host::readTelegrams(input);
    EXPECT_TRUE(file.rejected.empty());
    EXPECT_EQ(file.records.size(), 51U);
}

} // namespace
