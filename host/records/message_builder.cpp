#include "host/records/message_builder.h"

#include "host/records/demo_mark.h"

#include <QJsonDocument>

namespace host {

namespace {

constexpr quint64 idsPerMsec = 100'000;
constexpr qint64 registrationSecs = 2;
constexpr qint64 intervalSecs = 60;

/// A wired telegram begins with the long frame of M-Bus: 68 LENGTH LENGTH 68.
bool isWired(const QByteArray& payload) {
    return payload.size() >= 4 && payload[0] == '\x68' && payload[1] == payload[2] &&
           payload[3] == '\x68';
}

} // namespace

model::message messageOf(const Telegram& telegram) {
    model::message message;
    message.modem_id = telegram.deviceNumber;
    message.tag = telegram.medium;
    message.data = QJsonDocument(telegram.decoded);
    message.parse_status = QStringLiteral("ok");
    message.hw_type = telegram.meterMake;
    message.payload = telegram.payload;
    if (!telegram.payload.isEmpty()) {
        const bool wired = isWired(telegram.payload);
        message.phy = wired ? QStringLiteral("wire") : QStringLiteral("868 MHz");
        message.protocol = wired ? QStringLiteral("M-Bus") : QStringLiteral("wM-Bus");
    }
    return message;
}

std::vector<model::message> buildMessages(const std::vector<Telegram>& telegrams,
                                          const QDateTime& start) {
    const auto firstId = static_cast<quint64>(start.toMSecsSinceEpoch()) * idsPerMsec;
    const auto startSecs = start.toSecsSinceEpoch();

    std::vector<model::message> messages;
    messages.reserve(telegrams.size());
    for (const auto& telegram : telegrams) {
        const auto index = static_cast<int>(messages.size());
        const auto timestampSecs = startSecs - index * intervalSecs;

        auto message = messageOf(telegram);
        message.station_id = 1 + index % 3;
        message.ttl = expiry(start);
        message.timestamp = QDateTime::fromSecsSinceEpoch(timestampSecs, Qt::UTC);
        message.time_detected =
            QDateTime::fromSecsSinceEpoch(timestampSecs - registrationSecs, Qt::UTC);
        message.bs_timezone_offset = 3;
        message.snr = 5 + index % 20;
        message.rssi = -110 + index % 40;
        message.unique_id = firstId + static_cast<quint64>(index);
        message.extended_data =
            QJsonDocument(marked({{QStringLiteral("line"), telegram.lineNumber}}));
        messages.push_back(message);
    }
    return messages;
}

} // namespace host
