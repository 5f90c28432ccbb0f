// Any JSON object read as each record; written and read again it is the same record, but for what
// the forms say.

#include "fuzz/support/json_of_choices.h"
#include "fuzz/support/target.h"
#include "model/json/compact_json.h"
#include "model/model_convertors.h"
#include "tests/support/record_equality.h"

namespace {

using model_convertors::fromJson;
using model_convertors::toJson;

template <typename Record>
void requireEqual(const Record& actual, const Record& expected) {
    const std::string lines = test_support::differences(actual, expected);
    fuzz::require(lines.empty(), "the record comes back from its JSON", lines);
}

void queuesComeBack(const QJsonObject& json) {
    auto queues = fromJson<model::dl_queues>(json);
    fuzz::require(model_convertors::compactJson(queues) ==
                      model_convertors::plainJson(toJson(queues)),
                  "the text of queues is that of their object");
    for (auto& queue : queues.dl) {
        for (const char* setting : {"repeat", "start_from", "status", "timeout"}) {
            queue.elements.remove(QLatin1String(setting)); // overwritten by the setting
        }
    }
    requireEqual(fromJson<model::dl_queues>(toJson(queues)), queues);
}

void messageComesBack(const QJsonObject& json) {
    const auto message = fromJson<model::message>(json);
    auto again = fromJson<model::message>(toJson(message));
    fuzz::require(again.payload == message.payload.toHex(),
                  "the payload is written in hexadecimal");
    again.payload = message.payload;
    again.hw_type = message.hw_type; // is read from a number only
    requireEqual(again, message);
}

void commandComesBack(const QJsonObject& json) {
    auto command = fromJson<model::dl_message>(json);
    auto again = fromJson<model::dl_message>(toJson(command));
    // Written under another key, or not at all.
    again.status = command.status;
    again.api_key = command.api_key;
    again.timestamp = command.timestamp;
    requireEqual(again, command);
}

template <typename Record>
void readsAlike(const QJsonObject& json) {
    requireEqual(fromJson<Record>(json), fromJson<Record>(json));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::json_names names{"dl",
                                        "q",
                                        "e",
                                        "repeat",
                                        "start_from",
                                        "status",
                                        "timeout",
                                        "data",
                                        "db_id",
                                        "type",
                                        "lock",
                                        "DONE",
                                        "WAIT",
                                        "FAIL",
                                        "unique_id",
                                        "ttl",
                                        "timestamp",
                                        "modem_id",
                                        "time_detected",
                                        "bs_timezone_offset",
                                        "tag",
                                        "station_id",
                                        "snr",
                                        "rssi",
                                        "protocol",
                                        "phy",
                                        "hw_type",
                                        "parse_status",
                                        "extended_data",
                                        "payload",
                                        "f_ack",
                                        "api_key",
                                        "iterator",
                                        "time_saved",
                                        "bs_tz",
                                        "temperature",
                                        "voltage",
                                        "dl_phy",
                                        "dl_mode",
                                        "last_dl_bs",
                                        "query",
                                        "body",
                                        "instance",
                                        "last_success_dl_ts"};
    fuzz::choices choices{fuzz::textOf(data, size)};
    const QJsonObject json = fuzz::settled(fuzz::parsed(fuzz::anyText(choices, names)));
    queuesComeBack(json);
    messageComesBack(json);
    commandComesBack(json);
    readsAlike<model::hb_message>(json);
    readsAlike<model::in_message>(json);
    readsAlike<model::custom_cmd>(json);
    return 0;
}
