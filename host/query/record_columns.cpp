#include "host/query/record_columns.h"

#include "host/records/value_unit.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <concepts>
#include <limits>
#include <utility>

namespace host {

namespace {

constexpr int widestBytes = 24;
constexpr int widestText = 60;

template <std::same_as<int> Number>
QJsonValue toCell(Number number, const Session& /*session*/) {
    return number;
}

/// Most readers of JSON take numbers for doubles. One that is not exact as such is a text.
QJsonValue toCell(quint64 number, const Session& /*session*/) {
    constexpr quint64 exact = 1ULL << std::numeric_limits<double>::digits;
    return number <= exact ? QJsonValue(static_cast<qint64>(number))
                           : QJsonValue(QString::number(number));
}

QJsonValue toCell(const QString& text, const Session& /*session*/) {
    return text;
}

QJsonValue toCell(const QByteArray& bytes, const Session& /*session*/) {
    return QString::fromLatin1(bytes.toHex());
}

QJsonValue toCell(const QDateTime& time, const Session& session) {
    return session.time(time);
}

QJsonValue toCell(const QJsonObject& object, const Session& /*session*/) {
    return object;
}

QJsonValue toCell(const QJsonDocument& document, const Session& /*session*/) {
    return document.isObject() ? QJsonValue(document.object()) : QJsonValue();
}

QJsonValue toCell(const QVariant& value, const Session& /*session*/) {
    return QJsonValue::fromVariant(value);
}

QJsonValue toCell(model::dl_message::dl_status status, const Session& /*session*/) {
    static const std::array<QString, 4> names{
        QStringLiteral("PENDING"), QStringLiteral("WAIT_DATA"), QStringLiteral("EXECUTED"),
        QStringLiteral("TIMEOUT")};
    const auto number = static_cast<int>(status);
    // Whoever wrote another number into the database sees it.
    return number >= 0 && std::cmp_less(number, names.size())
               ? QJsonValue(names.at(static_cast<std::size_t>(number)))
               : QJsonValue(number);
}

template <class Record, class Member>
RecordColumn<Record> column(const char* name, Member Record::* member, const char* title = "",
                            int widest = 0) {
    return {.field = {.name = QLatin1String(name),
                      .title = QLatin1String(title),
                      .number = std::same_as<Member, int>,
                      .widest = widest},
            .cell = [member](const Record& record, const Session& session) {
                return toCell(record.*member, session);
            }};
}

RecordColumn<model::dev_value> unitColumn() {
    return {.field = {.name = QStringLiteral("unit"), .title = QStringLiteral("Unit")},
            .cell = [](const model::dev_value& value, const Session& /*session*/) {
                const auto unit = unitOf(value);
                return unit.isEmpty() ? QJsonValue() : QJsonValue(unit);
            }};
}

} // namespace

template <>
const std::vector<RecordColumn<model::message>>& columnsOf() {
    using model::message;
    static const std::vector columns{
        column("timestamp", &message::timestamp, "Time"),
        column("modem_id", &message::modem_id, "Device"),
        column("station_id", &message::station_id),
        column("time_detected", &message::time_detected),
        column("bs_timezone_offset", &message::bs_timezone_offset),
        column("phy", &message::phy),
        column("snr", &message::snr),
        column("rssi", &message::rssi, "RSSI"),
        column("tag", &message::tag, "Tag"),
        column("unique_id", &message::unique_id),
        column("hw_type", &message::hw_type),
        column("protocol", &message::protocol),
        column("parse_status", &message::parse_status),
        column("payload", &message::payload, "Payload", widestBytes),
        column("data", &message::data, "Data", widestText),
        column("extended_data", &message::extended_data),
        column("ttl", &message::ttl),
    };
    return columns;
}

template <>
const std::vector<RecordColumn<model::dev_value>>& columnsOf() {
    using model::dev_value;
    static const std::vector columns{
        column("timestamp", &dev_value::timestamp, "Time"),
        column("modem_id", &dev_value::modem_id, "Device"),
        column("obis_code", &dev_value::obis_code, "OBIS code"),
        column("value", &dev_value::value, "Value", widestText),
        unitColumn(),
        column("tag", &dev_value::tag, "Tag"),
        column("message_id", &dev_value::message_id),
        column("extended_data", &dev_value::extended_data),
        column("ttl", &dev_value::ttl),
    };
    return columns;
}

template <>
const std::vector<RecordColumn<model::dev_event>>& columnsOf() {
    using model::dev_event;
    static const std::vector columns{
        column("timestamp", &dev_event::timestamp, "Time"),
        column("modem_id", &dev_event::modem_id, "Device"),
        column("event_code", &dev_event::event_code, "Code"),
        column("message", &dev_event::message, "Text", widestText),
        column("parameter", &dev_event::parameter, "Parameter"),
        column("message_id", &dev_event::message_id),
        column("extended_data", &dev_event::extended_data),
        column("ttl", &dev_event::ttl),
    };
    return columns;
}

template <>
const std::vector<RecordColumn<model::dl_message>>& columnsOf() {
    using model::dl_message;
    static const std::vector columns{
        column("timestamp", &dl_message::timestamp, "Time"),
        column("modem_id", &dl_message::modem_id, "Device"),
        column("db_id", &dl_message::db_id, "ID"),
        column("status", &dl_message::status, "Status"),
        column("f_ack", &dl_message::f_ack),
        column("timeout", &dl_message::timeout),
        column("api_key", &dl_message::api_key),
        column("payload", &dl_message::payload),
        column("data", &dl_message::data, "Data", widestText),
        column("ttl", &dl_message::ttl),
    };
    return columns;
}

} // namespace host
