#include "host/demo/demo.h"

#include "host/check/attempt.h"
#include "host/demo/demo_parts.h"
#include "host/demo/redis_keys.h"
#include "host/input/settings.h"
#include "host/input/telegram_decoder.h"
#include "host/plugin_file.h"
#include "host/progress.h"
#include "host/records/message_builder.h"
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

DecodingCount decodeAll(const TelegramDecoder& decoder, std::vector<Telegram>& telegrams,
                        Console& console) {
    auto progress =
        console.progress(QStringLiteral("Decoding"), static_cast<int>(telegrams.size()));
    return decodeTelegrams(decoder, telegrams, [&progress] { progress.advance(); });
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
    const auto count = decodeAll(*decoder, telegrams, console);
    console.line(QStringLiteral("Readings: %1 telegrams decoded by wmbusmeters, %2 with the "
                                "shipped readings.")
                     .arg(count.decoded)
                     .arg(count.shipped));
    if (count.timedOut) {
        console.line(QStringLiteral("wmbusmeters ran into its time limit and was not used again."));
    }
}

/// The plug-in's stores.
struct Stores {
    std::shared_ptr<interfaces::IMessagesDatabase> messages;
    std::shared_ptr<interfaces::IEAVDatabase> values;
    std::shared_ptr<interfaces::IDriverState> states;
    /// A second object: it shows what survives the first one's memory.
    std::shared_ptr<interfaces::IDriverState> statesAfterwards;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> clients;
};

Stores openStores(interfaces::IDatabaseFactory& factory, const QJsonObject& settings) {
    const auto mongo = serverName(settings);
    const auto redis = redisName(settings);
    const auto open = [&](const QString& what, auto create) {
        return attempt(QStringLiteral("opening ") + what,
                       [&] { return (factory.*create)(settings, nullptr); });
    };
    using Factory = interfaces::IDatabaseFactory;
    const auto states = QStringLiteral("the driver state at %1 and %2").arg(mongo, redis);
    return {
        .messages = open(QStringLiteral("the message store at ") + mongo,
                         &Factory::CreateMessageDatabaseInst),
        .values =
            open(QStringLiteral("the value store at ") + mongo, &Factory::CreateEavDatabaseInst),
        .states = open(states, &Factory::CreateDriverStateInst),
        .statesAfterwards = open(states, &Factory::CreateDriverStateInst),
        .clients = open(QStringLiteral("the client registry at ") + redis,
                        &Factory::CreateClientDatabaseInst),
    };
}

std::vector<DemoPart> partsOf(const Stores& stores, RedisSide& redis, const DemoInput& input) {
    const auto messages = buildMessages(input.telegrams.records, input.start);
    const auto rejected = static_cast<int>(input.telegrams.rejected.size());
    auto& values = *stores.values->EAVRepository();
    return {
        demoPart(uplinkPart(*stores.messages->UlMessageRepository(), messages, rejected)),
        demoPart(valuePart(values, input.readings, input.start)),
        demoPart(eventPart(values, messages)),
        demoPart(commandPart(*stores.messages->DlMessageRepository(), messages)),
        demoPart(statePart(*stores.states, *stores.statesAfterwards, redis, messages)),
        demoPart(queuePart(*stores.states->DLqueue(), redis, messages)),
        demoPart(registryPart(*stores.clients->DeviceClientsRepository(), redis, messages)),
    };
}

} // namespace

bool runDemoParts(interfaces::IDatabaseFactory& factory, const QJsonObject& settings,
                  RedisSide& redis, const DemoInput& input, Console& console) {
    const auto stores = openStores(factory, settings);
    QStringList accounts;
    bool complete = true;
    for (const auto& part : partsOf(stores, redis, input)) {
        if (!part.heading.isEmpty()) {
            console.heading(part.heading);
        }
        const auto accounting =
            attempt(QStringLiteral("the part on ") + part.kind, [&] { return part.run(console); });
        complete = complete && isComplete(accounting);
        accounts.append(part.kind + QStringLiteral(": ") + accountingLine(accounting, part.origin));
    }
    console.heading(QStringLiteral("Accounting"));
    for (const auto& account : accounts) {
        console.line(account);
    }
    return complete;
}

void clearDemoParts(interfaces::IDatabaseFactory& factory, const QJsonObject& settings,
                    RedisSide& redis, const DemoInput& input, Console& console) {
    const auto stores = openStores(factory, settings);
    for (const auto& part : partsOf(stores, redis, input)) {
        attempt(QStringLiteral("deleting ") + part.kind, [&] { part.clear(console); });
    }
}

bool runDemo(const DemoOptions& options, Console& console) {
    DemoInput input;
    input.telegrams = openRecords(options.telegramsFile, readTelegrams, console);
    input.readings = openRecords(options.readingsFile, readMeterReadings, console);
    input.start = QDateTime::currentDateTimeUtc();

    PluginFile plugin(options.pluginFile);
    RedisKeys redis(redisSettings(options.settings));
    if (options.clear) {
        clearDemoParts(plugin.factory(), options.settings, redis, input, console);
        return true;
    }
    decode(options.decoder, input.telegrams.records, console);
    return runDemoParts(plugin.factory(), options.settings, redis, input, console);
}

} // namespace host
