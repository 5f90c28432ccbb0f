#include "host/demo/demo.h"

#include "host/check/attempt.h"
#include "host/demo/demo_parts.h"
#include "host/demo/redis_keys.h"
#include "host/input/settings.h"
#include "host/input/telegram_decoder.h"
#include "host/progress.h"
#include "host/records/message_builder.h"

#include <QStringList>

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

} // namespace

std::vector<DemoPart> demoParts(const DemoStores& stores, RedisSide& redis,
                                const DemoInput& input) {
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

bool runParts(const std::vector<DemoPart>& parts, Console& console) {
    QStringList accounts;
    bool complete = true;
    for (const auto& part : parts) {
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

void clearParts(const std::vector<DemoPart>& parts, Console& console) {
    for (const auto& part : parts) {
        attempt(QStringLiteral("deleting ") + part.kind, [&] { part.clear(console); });
    }
}

bool runDemo(const DemoOptions& options, Session& session) {
    const auto& settings = session.settings();
    auto& console = session.results();
    DemoInput input;
    input.telegrams = openRecords(options.telegramsFile, readTelegrams, console);
    input.readings = openRecords(options.readingsFile, readMeterReadings, console);
    if (!options.clear) {
        decode(options.decoder, input.telegrams.records, console);
    }
    input.start = QDateTime::currentDateTimeUtc();

    const DemoStores stores(session.factory(), settings);
    RedisKeys redis(redisSettings(settings));
    const auto parts = demoParts(stores, redis, input);
    if (options.clear) {
        clearParts(parts, console);
        return true;
    }
    return runParts(parts, console);
}

} // namespace host
