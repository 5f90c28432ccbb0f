#include "host/input/telegram_decoder.h"

#include "host/input/wmbusmeters_output.h"

#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>

#include <utility>

namespace host {

namespace {

/// The first line of the output as an object, without what is not the meter's; empty if it is none.
QJsonObject parseOutput(const QByteArray& output) {
    return meterReadings(QJsonDocument::fromJson(output.left(output.indexOf('\n'))).object());
}

} // namespace

TelegramDecoder::TelegramDecoder(QString program, std::chrono::milliseconds timeLimit)
    : m_program(std::move(program)), m_timeLimit(timeLimit) {}

std::optional<TelegramDecoder> TelegramDecoder::installed() {
    const auto program = QStandardPaths::findExecutable(QStringLiteral("wmbusmeters"));
    if (program.isEmpty()) {
        return std::nullopt;
    }
    return TelegramDecoder(program);
}

TelegramDecoder::Result TelegramDecoder::decode(const Telegram& telegram) const {
    const auto timeLimit = static_cast<int>(m_timeLimit.count());
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    // Naming the driver matters: several makes send telegrams that do not say which one they need.
    process.start(m_program,
                  {QStringLiteral("--silent"), QStringLiteral("--format=json"),
                   QString::fromLatin1(telegram.payload.toHex()), QStringLiteral("telegram"),
                   telegram.meterMake, telegram.meterId, QStringLiteral("NOKEY")},
                  QIODevice::ReadOnly);
    if (!process.waitForFinished(timeLimit) && process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(timeLimit);
        return {Outcome::TimedOut, {}};
    }
    if (process.error() == QProcess::FailedToStart ||
        process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        return {};
    }
    const auto readings = parseOutput(process.readAllStandardOutput());
    if (readings.value(QLatin1String("id")).toString() != telegram.meterId ||
        readings.value(QLatin1String("meter")).toString() != telegram.meterMake ||
        readings.value(QLatin1String("media")).toString().isEmpty()) {
        return {};
    }
    return {Outcome::Decoded, readings};
}

DecodingCount decodeTelegrams(const TelegramDecoder& decoder, std::vector<Telegram>& telegrams,
                              const std::function<void()>& progress) {
    DecodingCount count;
    for (auto& telegram : telegrams) {
        const auto result = count.timedOut ? TelegramDecoder::Result{} : decoder.decode(telegram);
        count.timedOut = count.timedOut || result.outcome == TelegramDecoder::Outcome::TimedOut;
        if (result.outcome == TelegramDecoder::Outcome::Decoded) {
            telegram.decoded = result.readings;
            telegram.medium = result.readings.value(QLatin1String("media")).toString();
            ++count.decoded;
        } else {
            ++count.shipped;
        }
        progress();
    }
    return count;
}

} // namespace host
