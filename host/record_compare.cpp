#include "host/record_compare.h"

#include <QJsonDocument>

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

/// The instant as the store keeps it.
QDateTime wholeSeconds(const QDateTime& instant) {
    return instant.isValid() ? QDateTime::fromSecsSinceEpoch(instant.toSecsSinceEpoch(), Qt::UTC)
                             : instant;
}

/// Collects the members that differ.
class Differences {
public:
    template <class Member>
    void compare(QLatin1String name, const Member& written, const Member& readBack) {
        if (!(written == readBack)) {
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

QString recordKey(const model::message& message) {
    return QString::number(message.unique_id);
}

QString describe(const model::message& message) {
    return QStringLiteral("message %1 of device %2").arg(message.unique_id).arg(message.modem_id);
}

} // namespace host
