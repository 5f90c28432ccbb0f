#include "host/demo.h"

#include "host/accounting.h"
#include "host/failure.h"
#include "host/plugin_file.h"
#include "host/settings_file.h"
#include "host/telegram_decoder.h"
#include "host/telegram_reader.h"
#include "host/uplink_demo.h"
#include "interfaces/imessages_database.h"

#include <QFile>

#include <optional>

namespace host {

namespace {

/// Runs one step; whatever the plug-in or a client library throws becomes a Failure that names the
/// step.
template <class Step>
auto attempt(const QString& what, Step step) {
    try {
        return step();
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(what + QStringLiteral(" failed: ") + QString::fromUtf8(error.what()));
    } catch (const QString& error) {
        throw Failure(what + QStringLiteral(" failed: ") + error);
    }
}

std::optional<TelegramDecoder> chooseDecoder(DecoderChoice choice) {
    if (choice == DecoderChoice::Shipped) {
        return std::nullopt;
    }
    auto decoder = TelegramDecoder::installed();
    if (choice == DecoderChoice::Wmbusmeters && !decoder) {
        throw Failure(QStringLiteral("wmbusmeters is asked for and not installed"));
    }
    return decoder;
}

TelegramFile readTelegramFile(const QString& fileName, Console& console) {
    QFile input(fileName);
    if (!input.open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("cannot read the telegrams file %1: %2")
                          .arg(fileName, input.errorString()));
    }
    auto file = readTelegrams(input);
    for (const auto& rejected : file.rejected) {
        console.line(QStringLiteral("%1, line %2 rejected: %3")
                         .arg(fileName)
                         .arg(rejected.lineNumber)
                         .arg(rejected.reason));
    }
    if (file.telegrams.empty()) {
        throw Failure(QStringLiteral("the telegrams file %1 holds no telegram").arg(fileName));
    }
    return file;
}

void decode(DecoderChoice choice, std::vector<Telegram>& telegrams, Console& console) {
    const auto decoder = chooseDecoder(choice);
    if (!decoder) {
        console.line(choice == DecoderChoice::Shipped
                         ? QStringLiteral("Readings: the shipped ones, as asked for.")
                         : QStringLiteral("Readings: the shipped ones, since wmbusmeters is not "
                                          "installed."));
        return;
    }
    auto progress =
        console.progress(QStringLiteral("Decoding"), static_cast<int>(telegrams.size()));
    const auto count = decodeTelegrams(*decoder, telegrams, [&progress] { progress.advance(); });
    console.line(QStringLiteral("Readings: %1 telegrams decoded by wmbusmeters, %2 with the "
                                "shipped readings.")
                     .arg(count.decoded)
                     .arg(count.shipped));
    if (count.timedOut) {
        console.line(QStringLiteral("wmbusmeters ran into its time limit and was not used again."));
    }
}

} // namespace

bool runDemo(const DemoOptions& options, Console& console) {
    const auto settings = readSettings(options.settingsFile);
    auto telegrams = readTelegramFile(options.telegramsFile, console);
    decode(options.decoder, telegrams.telegrams, console);

    PluginFile plugin(options.pluginFile);
    const auto database =
        attempt(QStringLiteral("opening the message store at ") + serverName(settings),
                [&] { return plugin.factory().CreateMessageDatabaseInst(settings, nullptr); });

    console.line(QStringLiteral("Assigned, since a telegram does not say: times (one minute "
                                "apart), base stations, time zone and signal strengths."));
    const auto start = QDateTime::currentDateTimeUtc();
    const auto uplinks = attempt(QStringLiteral("the uplink messages' part"), [&] {
        return runUplinkDemo(*database->UlMessageRepository(), telegrams, start, console);
    });
    console.line(accountingLine(uplinks));
    return isComplete(uplinks);
}

} // namespace host
