#include "tests/soak/device_kind.h"

#include "tests/support/extended_json.h"

#include <bsoncxx/v1/document/value.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QRegularExpression>

#include <utility>

namespace soak {

namespace {

RedisClient::Connection connectionTo(int port) {
    return RedisClient::Connection{
        RedisClient::ConnectionConfig(QStringLiteral("127.0.0.1"), QString(), port)};
}

} // namespace

DeviceKind::DeviceKind(Places places) : m_places(std::move(places)) {}

QString DeviceKind::mark(int call) {
    return QStringLiteral("call %1.").arg(call);
}

int DeviceKind::markedCall(const QByteArray& text) {
    static const QRegularExpression marked(QStringLiteral("call ([0-9]+)\\."));
    return marked.match(QString::fromUtf8(text)).captured(1).toInt();
}

void DeviceKind::save(int call) {
    push(deviceOf(call), call);
}

void DeviceKind::note(int call, bool acknowledged) {
    Copies& copies = copiesOf(deviceOf(call));
    copies.inRedis.note(call, acknowledged);
    copies.durable.note(call, acknowledged);
}

void DeviceKind::found(LastWrite& copy, int call, int device, const char* where) {
    ++m_findings.read;
    if (!copy.mayHold(call)) {
        ++m_findings.lost;
        m_findings.example(QStringLiteral("%1: device %2 has call %3 %4, which is not the last one")
                               .arg(name())
                               .arg(device)
                               .arg(call)
                               .arg(QLatin1String(where)));
    }
}

void DeviceKind::found(LastWrite& copy, const Pulled& pulled, int device, const char* where) {
    found(copy, pulled.call, device, where);
    if (!pulled.differences.isEmpty()) {
        ++m_findings.different;
        m_findings.example(
            QStringLiteral("%1: device %2 %3 differs: %4")
                .arg(name())
                .arg(device)
                .arg(QLatin1String(where), pulled.differences.join(QStringLiteral("; "))));
    }
}

int DeviceKind::durableCall(int device) const {
    mongocxx::v1::client client{mongocxx::v1::uri{m_places.url}};
    const auto document =
        client.database("kelvrostorage")
            .collection(m_places.collection)
            .find_one(test_support::fromJson("{\"_id\": " + std::to_string(device) + "}"));
    return document ? markedCall(QByteArray::fromStdString(test_support::toJson(*document))) : 0;
}

void DeviceKind::check() {
    auto redis = connectionTo(m_places.redisPort);
    for (int device = 1; device <= devices; ++device) {
        Copies& copies = copiesOf(device);
        found(copies.durable, durableCall(device), device, "durably");
        const auto reply = redis.commandSync({"GET", keyOf(device)}, m_places.redisDb);
        found(copies.inRedis, markedCall(reply.getValue().toByteArray()), device, "in Redis");
        found(copies.inRedis, pull(device), device, "through the plug-in");
    }
}

Findings DeviceKind::readBack() {
    check();
    auto redis = connectionTo(m_places.redisPort);
    for (int device = 1; device <= devices; ++device) {
        redis.commandSync({"DEL", keyOf(device)}, m_places.redisDb);
        found(copiesOf(device).durable, pullAnew(device), device,
              "through the plug-in without Redis");
    }
    return m_findings;
}

} // namespace soak
