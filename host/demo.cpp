#include "host/demo.h"

#include "host/accounting.h"
#include "host/attempt.h"
#include "host/downlink_demo.h"
#include "host/driver_demo.h"
#include "host/events_demo.h"
#include "host/input_files.h"
#include "host/message_builder.h"
#include "host/plugin_file.h"
#include "host/redis_side.h"
#include "host/settings_file.h"
#include "host/telegram_decoder.h"
#include "host/uplink_demo.h"
#include "host/values_demo.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/ieav_database.h"
#include "interfaces/imessages_database.h"

#include <QStringList>

#include <memory>
#include <optional>

namespace host {

namespace {

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

void decode(DecoderChoice choice, std::vector<Telegram>& telegrams, Console& console) {
    const auto decoder = chooseDecoder(choice);
    if (!decoder) {
        console.line(choice == DecoderChoice::Shipped
                         ? QStringLiteral("Readings: the shipped ones, as asked for.")
                         : QStringLiteral("Readings: the shipped ones, since wmbusmeters is not "
                                          "installed."));
        return;
    }
    const auto count = [&] {
        auto progress =
            console.progress(QStringLiteral("Decoding"), static_cast<int>(telegrams.size()));
        return decodeTelegrams(*decoder, telegrams, [&progress] { progress.advance(); });
    }();
    console.line(QStringLiteral("Readings: %1 telegrams decoded by wmbusmeters, %2 with the "
                                "shipped readings.")
                     .arg(count.decoded)
                     .arg(count.shipped));
    if (count.timedOut) {
        console.line(QStringLiteral("wmbusmeters ran into its time limit and was not used again."));
    }
}

std::shared_ptr<interfaces::IDriverState> openDriverState(PluginFile& plugin,
                                                          const QJsonObject& settings) {
    return attempt(QStringLiteral("opening the driver state at %1 and %2")
                       .arg(serverName(settings), redisName(settings)),
                   [&] { return plugin.factory().CreateDriverStateInst(settings, nullptr); });
}

/// The accounts of all kinds of records.
class Closing {
public:
    void add(const QString& kind, const Accounting& accounting,
             QLatin1String origin = QLatin1String("read")) {
        m_lines.append(kind + QStringLiteral(": ") + accountingLine(accounting, origin));
        m_complete = m_complete && isComplete(accounting);
    }

    bool print(Console& console) const {
        console.heading(QStringLiteral("Accounting"));
        for (const auto& line : m_lines) {
            console.line(line);
        }
        return m_complete;
    }

private:
    QStringList m_lines;
    bool m_complete = true;
};

} // namespace

bool runDemo(const DemoOptions& options, Console& console) {
    const auto settings = readSettings(options.settingsFile);
    auto telegrams = openTelegrams(options.telegramsFile, console);
    const auto readings = openMeterReadings(options.readingsFile, console);
    decode(options.decoder, telegrams.records, console);

    PluginFile plugin(options.pluginFile);
    const auto messageStore =
        attempt(QStringLiteral("opening the message store at ") + serverName(settings),
                [&] { return plugin.factory().CreateMessageDatabaseInst(settings, nullptr); });
    const auto valueStore =
        attempt(QStringLiteral("opening the value store at ") + serverName(settings),
                [&] { return plugin.factory().CreateEavDatabaseInst(settings, nullptr); });
    auto& uplinks = *messageStore->UlMessageRepository();
    auto& downlinks = *messageStore->DlMessageRepository();
    auto& values = *valueStore->EAVRepository();

    const auto start = QDateTime::currentDateTimeUtc();
    const auto messages = buildMessages(telegrams.records, start);
    Closing closing;

    console.heading(QStringLiteral("Uplink messages"));
    console.line(QStringLiteral("Assigned, since a telegram does not say: times (one minute "
                                "apart), base stations, time zone and signal strengths."));
    const auto uplinkAccount = attempt(QStringLiteral("the part on uplink messages"), [&] {
        return runUplinkDemo(uplinks, telegrams, start, console);
    });
    console.line(accountingLine(uplinkAccount));
    closing.add(QStringLiteral("uplink messages"), uplinkAccount);

    console.heading(QStringLiteral("Meter readings"));
    closing.add(QStringLiteral("meter readings"),
                attempt(QStringLiteral("the part on meter readings"),
                        [&] { return runValuesDemo(values, readings, start, console); }));

    console.heading(QStringLiteral("Status changes"));
    closing.add(QStringLiteral("events"),
                attempt(QStringLiteral("the part on events"),
                        [&] { return runEventsDemo(values, messages, console); }),
                QLatin1String("found"));

    console.heading(QStringLiteral("Downlink commands"));
    closing.add(QStringLiteral("downlink commands"),
                attempt(QStringLiteral("the part on downlink commands"),
                        [&] { return runDownlinkDemo(downlinks, messages, console); }),
                QLatin1String("issued"));

    console.heading(QStringLiteral("Driver state, downlink queues and client registry"));
    RedisServer redis(settings);
    // Two objects: the second one shows what survives the first one's memory.
    const auto states = openDriverState(plugin, settings);
    const auto statesAfterwards = openDriverState(plugin, settings);
    const auto clientStore =
        attempt(QStringLiteral("opening the client registry at ") + redisName(settings),
                [&] { return plugin.factory().CreateClientDatabaseInst(settings, nullptr); });
    closing.add(
        QStringLiteral("driver states"),
        attempt(QStringLiteral("the part on driver states"),
                [&] { return runStateDemo(*states, *statesAfterwards, redis, messages, console); }),
        QLatin1String("kept"));
    closing.add(QStringLiteral("downlink queues"),
                attempt(QStringLiteral("the part on downlink queues"),
                        [&] { return runQueueDemo(*states->DLqueue(), redis, messages, console); }),
                QLatin1String("made"));
    closing.add(QStringLiteral("registry entries"),
                attempt(QStringLiteral("the part on the client registry"),
                        [&] {
                            return runRegistryDemo(*clientStore->DeviceClientsRepository(), redis,
                                                   messages, console);
                        }),
                QLatin1String("made"));

    return closing.print(console);
}

} // namespace host
