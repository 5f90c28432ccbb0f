#include "host/record_compare.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QVariant>

#include <bit>

namespace host {

namespace {

QString toText(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}
QString toText(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex()) + QStringLiteral(" (%1 bytes)").arg(bytes.size());
}
QString toText(const QJsonDocument& document) {
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}
QString toText(const QDateTime& instant) {
    return instant.isValid() ? instant.toUTC().toString(Qt::ISODateWithMs)
                             : QStringLiteral("no time");
}
QString toText(int number) {
    return QString::number(number);
}
QString toText(qint64 number) {
    return QString::number(number);
}
QString toText(quint64 number) {
    return QString::number(number);
}

QString toText(const QJsonObject& object) {
    return toText(QJsonDocument(object));
}
QString toText(const QVariant& value) {
    const auto number = value.type() == QVariant::Double
                            ? QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest)
                            : value.toString();
    return QString::fromLatin1(value.typeName()) + QLatin1Char(' ') + toText(number);
}
QString toText(model::dl_message::dl_status status) {
    return QString::number(static_cast<int>(status));
}

template <class Member>
bool same(const Member& written, const Member& readBack) {
    return written == readBack;
}
/// QVariant converts before it compares, and takes nearly equal numbers for equal.
bool same(const QVariant& written, const QVariant& readBack) {
    if (written.userType() != readBack.userType()) {
        return false;
    }
    if (written.type() == QVariant::Double) {
        return std::bit_cast<quint64>(written.toDouble()) ==
               std::bit_cast<quint64>(readBack.toDouble());
    }
    return written == readBack;
}

/// The value as the store gives it back: every number as a double.
QVariant asReadBack(const QVariant& value) {
    return value.type() == QVariant::Int ? QVariant(value.toDouble()) : value;
}

/// The instant as the store keeps it.
QDateTime wholeSeconds(const QDateTime& instant) {
    return instant.isValid() ? QDateTime::fromSecsSinceEpoch(instant.toSecsSinceEpoch(), Qt::UTC)
                             : instant;
}

QJsonObject toJson(const model::dl_queues::element& element) {
    return {{QStringLiteral("data"), element.data},
            {QStringLiteral("type"), element.type},
            {QStringLiteral("db_id"), element.db_id},
            {QStringLiteral("status"), static_cast<int>(element.status)},
            {QStringLiteral("repeat"), element.repeat}};
}
QJsonObject toJson(const model::dl_queues::queue& queue) {
    QJsonObject elements;
    for (auto element = queue.elements.begin(); element != queue.elements.end(); ++element) {
        elements.insert(element.key(), toJson(element.value()));
    }
    return {{QStringLiteral("elements"), elements},
            {QStringLiteral("repeat"), queue.repeat},
            {QStringLiteral("timeout"), queue.timeout},
            {QStringLiteral("start_from"), queue.start_from},
            {QStringLiteral("status"), static_cast<int>(queue.status)}};
}
/// Every member of every queue, to be compared and printed.
QJsonObject toJson(const model::dl_queues& queues) {
    QJsonObject all;
    for (auto queue = queues.dl.begin(); queue != queues.dl.end(); ++queue) {
        all.insert(queue.key(), toJson(queue.value()));
    }
    return {{QStringLiteral("dl"), all},
            {QStringLiteral("lock"), queues.lock},
            {QStringLiteral("status"), static_cast<int>(queues.status)}};
}

QString joined(const std::set<QString>& texts) {
    return QStringList(texts.begin(), texts.end()).join(QStringLiteral(", "));
}

/// Collects the members that differ.
class Differences {
public:
    template <class Member>
    void compare(QLatin1String name, const Member& written, const Member& readBack) {
        if (!same(written, readBack)) {
            m_texts.append(QStringLiteral("%1: wrote %2, got %3")
                               .arg(name, toText(written), toText(readBack)));
        }
    }

    QStringList texts() const { return m_texts; }

private:
    QStringList m_texts;
};

} // namespace

QStringList differences(const model::message& written, const model::message& readBack) {
    Differences all;
    all.compare(QLatin1String("extra_text"), QString(), readBack.extra_text);
    all.compare(QLatin1String("extra_value1"), qint64{0}, readBack.extra_value1);
    all.compare(QLatin1String("extra_value2"), qint64{0}, readBack.extra_value2);
    all.compare(QLatin1String("modem_id"), written.modem_id, readBack.modem_id);
    all.compare(QLatin1String("station_id"), written.station_id, readBack.station_id);
    all.compare(QLatin1String("ttl"), written.ttl, readBack.ttl);
    all.compare(QLatin1String("timestamp"), wholeSeconds(written.timestamp), readBack.timestamp);
    all.compare(QLatin1String("time_detected"), wholeSeconds(written.time_detected),
                readBack.time_detected);
    all.compare(QLatin1String("bs_timezone_offset"), written.bs_timezone_offset,
                readBack.bs_timezone_offset);
    all.compare(QLatin1String("phy"), written.phy, readBack.phy);
    all.compare(QLatin1String("snr"), written.snr, readBack.snr);
    all.compare(QLatin1String("rssi"), written.rssi, readBack.rssi);
    all.compare(QLatin1String("tag"), written.tag, readBack.tag);
    all.compare(QLatin1String("unique_id"), written.unique_id, readBack.unique_id);
    all.compare(QLatin1String("data"), written.data, readBack.data);
    all.compare(QLatin1String("extended_data"), written.extended_data, readBack.extended_data);
    all.compare(QLatin1String("parse_status"), written.parse_status, readBack.parse_status);
    all.compare(QLatin1String("hw_type"), written.hw_type, readBack.hw_type);
    all.compare(QLatin1String("protocol"), written.protocol, readBack.protocol);
    all.compare(QLatin1String("payload"), written.payload, readBack.payload);
    return all.texts();
}

QStringList differences(const model::dev_value& written, const model::dev_value& readBack) {
    Differences all;
    all.compare(QLatin1String("modem_id"), written.modem_id, readBack.modem_id);
    all.compare(QLatin1String("timestamp"), wholeSeconds(written.timestamp), readBack.timestamp);
    all.compare(QLatin1String("obis_code"), written.obis_code, readBack.obis_code);
    all.compare(QLatin1String("tag"), written.tag, readBack.tag);
    all.compare(QLatin1String("extended_data"), written.extended_data, readBack.extended_data);
    all.compare(QLatin1String("value"), asReadBack(written.value), readBack.value);
    all.compare(QLatin1String("message_id"), written.message_id, readBack.message_id);
    all.compare(QLatin1String("ttl"), written.ttl, readBack.ttl);
    return all.texts();
}

QStringList differences(const model::dev_event& written, const model::dev_event& readBack) {
    Differences all;
    all.compare(QLatin1String("modem_id"), written.modem_id, readBack.modem_id);
    all.compare(QLatin1String("timestamp"), wholeSeconds(written.timestamp), readBack.timestamp);
    all.compare(QLatin1String("event_code"), written.event_code, readBack.event_code);
    all.compare(QLatin1String("message_id"), written.message_id, readBack.message_id);
    all.compare(QLatin1String("message"), written.message, readBack.message);
    all.compare(QLatin1String("extended_data"), written.extended_data, readBack.extended_data);
    all.compare(QLatin1String("parameter"), written.parameter, readBack.parameter);
    all.compare(QLatin1String("ttl"), written.ttl, readBack.ttl);
    return all.texts();
}

QStringList differences(const model::dl_message& written, const model::dl_message& readBack) {
    Differences all;
    all.compare(QLatin1String("f_ack"), written.f_ack, readBack.f_ack);
    all.compare(QLatin1String("modem_id"), written.modem_id, readBack.modem_id);
    all.compare(QLatin1String("timeout"), written.timeout, readBack.timeout);
    all.compare(QLatin1String("ttl"), written.ttl, readBack.ttl);
    all.compare(QLatin1String("timestamp"), wholeSeconds(written.timestamp), readBack.timestamp);
    all.compare(QLatin1String("db_id"), written.db_id, readBack.db_id);
    all.compare(QLatin1String("api_key"), written.api_key, readBack.api_key);
    all.compare(QLatin1String("status"), written.status, readBack.status);
    all.compare(QLatin1String("data"), written.data, readBack.data);
    all.compare(QLatin1String("payload"), written.payload, readBack.payload);
    all.compare(QLatin1String("extra_text"), QString(), readBack.extra_text);
    return all.texts();
}

QStringList differences(const DeviceState& written, const DeviceState& readBack) {
    Differences all;
    all.compare(QLatin1String("values"), written.values, readBack.values);
    return all.texts();
}

QStringList differences(const DeviceQueues& written, const DeviceQueues& readBack) {
    Differences all;
    all.compare(QLatin1String("queues"), toJson(written.queues), toJson(readBack.queues));
    return all.texts();
}

QStringList differences(const DeviceEntry& written, const DeviceEntry& readBack) {
    Differences all;
    all.compare(QLatin1String("clients"), joined(written.clients), joined(readBack.clients));
    all.compare(QLatin1String("protocol"), written.protocol, readBack.protocol);
    all.compare(QLatin1String("hw_type"), written.hw_type, readBack.hw_type);
    return all.texts();
}

QString recordKey(const model::message& message) {
    return QString::number(message.unique_id);
}

QString recordKey(const model::dev_value& value) {
    return QStringLiteral("%1 %2 ").arg(value.modem_id).arg(value.timestamp.toSecsSinceEpoch()) +
           value.obis_code;
}
QString recordKey(const model::dev_event& event) {
    return QStringLiteral("%1 %2 ").arg(event.modem_id).arg(event.timestamp.toSecsSinceEpoch()) +
           event.message;
}
QString recordKey(const model::dl_message& command) {
    return command.db_id;
}

QString recordKey(const DeviceState& state) {
    return QString::number(state.modem_id);
}
QString recordKey(const DeviceQueues& queues) {
    return QString::number(queues.modem_id);
}
QString recordKey(const DeviceEntry& entry) {
    return QString::number(entry.modem_id);
}

QString describe(const model::message& message) {
    return QStringLiteral("message %1 of device %2").arg(message.unique_id).arg(message.modem_id);
}

QString describe(const model::dev_value& value) {
    return QStringLiteral("value of %1 of device %2 at %3")
        .arg(value.obis_code)
        .arg(value.modem_id)
        .arg(toText(value.timestamp));
}
QString describe(const model::dev_event& event) {
    return QStringLiteral("event %1 of device %2").arg(event.message).arg(event.modem_id);
}
QString describe(const model::dl_message& command) {
    return QStringLiteral("command %1 for device %2").arg(command.db_id).arg(command.modem_id);
}

QString describe(const DeviceState& state) {
    return QStringLiteral("state of device %1").arg(state.modem_id);
}
QString describe(const DeviceQueues& queues) {
    return QStringLiteral("downlink queues of device %1").arg(queues.modem_id);
}
QString describe(const DeviceEntry& entry) {
    return QStringLiteral("registry entry of device %1").arg(entry.modem_id);
}

} // namespace host
