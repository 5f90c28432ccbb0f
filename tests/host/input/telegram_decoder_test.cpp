#include "host/input/telegram_decoder.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>

namespace {

using namespace std::chrono_literals;
using namespace test_support::literals;
using host::Telegram;
using host::TelegramDecoder;
using Outcome = host::TelegramDecoder::Outcome;

/// A shell script in place of wmbusmeters.
class TelegramDecoderTest : public testing::Test {
protected:
    QString script(const QByteArray& commands) {
        auto fileName = m_folder.filePath("decoder"_q);
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly)) {
            throw std::runtime_error("cannot write the script");
        }
        file.write("#!/bin/sh\n"_qba + commands + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        return fileName;
    }

    TelegramDecoder decoder(const QByteArray& commands) {
        return TelegramDecoder(script(commands));
    }

    static Telegram telegram() {
        Telegram telegram;
        telegram.payload = "\x0a\xff"_qba;
        telegram.deviceNumber = 86426;
        telegram.meterId = "00086426"_q;
        telegram.meterMake = "amiplus"_q;
        telegram.medium = "electricity"_q;
        telegram.decoded = {{"shipped"_q, true}};
        return telegram;
    }

private:
    QTemporaryDir m_folder;
};

constexpr auto printReadings =
    R"(echo '{"_":"telegram","media":"gas","meter":"amiplus","name":"telegram",)"
    R"("id":"00086426","total_m3":0.1,"timestamp":"2026-01-01T00:00:00Z"}')";

TEST_F(TelegramDecoderTest, TakesTheReadingsWithoutWhatTheProgramSaysOfItsRun) {
    const auto result = decoder(printReadings).decode(telegram());
    EXPECT_EQ(result.outcome, Outcome::Decoded);
    EXPECT_EQ(result.readings, (QJsonObject{{"media"_q, "gas"_q},
                                            {"meter"_q, "amiplus"_q},
                                            {"id"_q, "00086426"_q},
                                            {"total_m3"_q, 0.1}}));
}

TEST_F(TelegramDecoderTest, PassesTheTelegramTheMakeAndTheIdToTheProgram) {
    const auto result =
        decoder(R"(echo "{\"media\":\"gas\",\"meter\":\"amiplus\",\"id\":\"00086426\",)"
                R"(\"arguments\":\"$*\"}")")
            .decode(telegram());
    EXPECT_EQ(result.readings.value("arguments"_q),
              "--silent --format=json 0aff telegram amiplus 00086426 NOKEY"_q);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheProgramPrintsNothing) {
    EXPECT_EQ(decoder("exit 0").decode(telegram()).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheProgramPrintsNoJson) {
    EXPECT_EQ(decoder("echo No such driver").decode(telegram()).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheProgramFails) {
    const QByteArray commands = QByteArray(printReadings) + "\nexit 1";
    EXPECT_EQ(decoder(commands).decode(telegram()).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheReadingsAreOfAnotherMeter) {
    auto other = telegram();
    other.meterId = "00086427"_q;
    EXPECT_EQ(decoder(printReadings).decode(other).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheReadingsAreOfAnotherMake) {
    auto other = telegram();
    other.meterMake = "auto"_q;
    EXPECT_EQ(decoder(printReadings).decode(other).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, GivesNothingIfTheProgramIsMissing) {
    const TelegramDecoder missing("/nonexistent/decoder"_q);
    EXPECT_EQ(missing.decode(telegram()).outcome, Outcome::Nothing);
}

TEST_F(TelegramDecoderTest, EndsAProgramThatHangs) {
    const TelegramDecoder hanging(script("exec sleep 60"), 100ms);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(hanging.decode(telegram()).outcome, Outcome::TimedOut);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
}

TEST_F(TelegramDecoderTest, ReplacesReadingsAndMediumOfEachTelegram) {
    std::vector<Telegram> telegrams(2, telegram());
    int steps = 0;
    const auto count = decodeTelegrams(decoder(printReadings), telegrams, [&] { ++steps; });
    EXPECT_EQ(count.decoded, 2);
    EXPECT_EQ(count.shipped, 0);
    EXPECT_EQ(steps, 2);
    EXPECT_EQ(telegrams[1].decoded.value("total_m3"_q), QJsonValue(0.1));
    EXPECT_EQ(telegrams[1].medium, "gas"_q);
}

TEST_F(TelegramDecoderTest, KeepsTheShippedReadingsWhereThereAreNoOthers) {
    std::vector<Telegram> telegrams(2, telegram());
    telegrams[0].meterId = "00000001"_q;
    const auto count = decodeTelegrams(decoder(printReadings), telegrams, [] {});
    EXPECT_EQ(count.decoded, 1);
    EXPECT_EQ(count.shipped, 1);
    EXPECT_FALSE(count.timedOut);
    EXPECT_EQ(telegrams[0].decoded, telegram().decoded);
    EXPECT_EQ(telegrams[0].medium, "electricity"_q);
}

TEST_F(TelegramDecoderTest, IsNotRunAgainAfterItHasHung) {
    const TelegramDecoder hanging(script("exec sleep 60"), 100ms);
    std::vector<Telegram> telegrams(200, telegram());
    const auto start = std::chrono::steady_clock::now();
    const auto count = decodeTelegrams(hanging, telegrams, [] {});
    EXPECT_TRUE(count.timedOut);
    EXPECT_EQ(count.shipped, 200);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 15s);
}

} // namespace
