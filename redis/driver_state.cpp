#include "redis/driver_state.h"

#include "model/json/compact_json.h"
#include "model/json/json_variant.h"
#include "redis/device_json.h"
#include "redis/device_key.h"
#include "redis/text.h"

#include <algorithm>
#include <type_traits>

namespace redis {

namespace {

/// Hosts match the text of this exception; the library's own differs between its versions.
class valueless_state : public std::bad_variant_access {
public:
    const char* what() const noexcept override { return "Unexpected index"; }
};

QJsonValue toJsonValue(const std::variant<int, double, QByteArray>& value) {
    if (value.valueless_by_exception()) {
        throw valueless_state();
    }
    return std::visit(
        [](const auto& active) -> QJsonValue {
            if constexpr (std::is_same_v<std::decay_t<decltype(active)>, QByteArray>) {
                return untilZero(active);
            } else {
                return active;
            }
        },
        value);
}

/// `id` is a device's number, or what an overridden GetIDs() has instead.
QByteArray listedKey(const QByteArray& start, const QVariant& id) {
    return id.type() == QVariant::Int ? deviceKey(start, id.toInt())
                                      : QByteArray(start + id.toString().toUtf8());
}

} // namespace

DriverStateRedis::DriverStateRedis(const redis_conf& conf, const std::string& mongoUrl)
    : m_connection(conf.connection()), m_downlinkQueues(conf, mongoUrl), m_persistent(mongoUrl),
      m_db(conf.state_db) {
    states().open();
}

void DriverStateRedis::SetPrefix(const QString& prefix) {
    m_prefix = prefix;
    m_keyStart = (prefix + QLatin1Char(':')).toLatin1();
}

const QString& DriverStateRedis::GetPrefix() {
    return m_prefix;
}

bool DriverStateRedis::Pull(int modem_id) {
    m_states[modem_id] = states().pull(keyOf(modem_id), modem_id);
    return true;
}

bool DriverStateRedis::Push(int modem_id, bool persist) {
    const QJsonObject& state = m_states[modem_id];
    states().push(keyOf(modem_id), modem_id, model_convertors::compactJson(state), persist,
                  [&] { return state; });
    return true;
}

bool DriverStateRedis::Delete(int modem_id) {
    // Deliberate: the working copy stays until the next Pull.
    states().remove(keyOf(modem_id), modem_id);
    return true;
}

std::variant<int, double, QByteArray> DriverStateRedis::GetValue(int modem_id,
                                                                 const QString& name) {
    const QJsonObject& state = m_states[modem_id];
    const auto member = state.constFind(name);
    if (member == state.constEnd()) {
        return 0;
    }
    // Deliberate: a number is a double, also one that was set as an int, and text that reads as a
    // number is that number.
    const QVariant value = toVariantOfDoubles(member.value());
    if (value.type() == QVariant::Double) {
        return value.toDouble();
    }
    bool ok = false;
    if (const int number = value.toInt(&ok); ok) {
        return number;
    }
    if (const double number = value.toDouble(&ok); ok) {
        return number;
    }
    return value.toByteArray();
}

void DriverStateRedis::SetValue(int modem_id, const QString& name,
                                const std::variant<int, double, QByteArray>& value) {
    const QJsonValue json = toJsonValue(value);
    m_states[modem_id].insert(name, json);
}

QVariant DriverStateRedis::GetValueAsVariant(int modem_id, const QString& name) {
    const QJsonObject& state = m_states[modem_id];
    const auto member = state.constFind(name);
    return member == state.constEnd() ? QVariant{} : toVariantOfDoubles(member.value());
}

void DriverStateRedis::SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) {
    m_states[modem_id].insert(name, value.toJsonObject());
}

QJsonObject DriverStateRedis::GetAll(int modem_id) {
    return m_states[modem_id];
}

QList<QVariant> DriverStateRedis::GetIDs(const QString& first, const QString& second) {
    const QByteArray pattern = (second + QLatin1Char(':') + first + QLatin1String(":*")).toLatin1();
    QList<QVariant> ids;
    int cursor = 0;
    do {
        const QVariantList reply =
            send({"SCAN", QByteArray::number(cursor), "MATCH", pattern, "COUNT", "1000"})
                .getValue()
                .toList();
        cursor = reply.value(0).toByteArray().toInt();
        const QVariantList keys = reply.value(1).toList();
        for (const QVariant& key : keys) {
            ids.append(deviceOf(key.toByteArray()));
        }
    } while (cursor != 0);
    return ids;
}

bool DriverStateRedis::DeleteDevices(const QList<int>& modem_ids, const QDateTime& /*from*/,
                                     const QDateTime& /*to*/) {
    for (const int modem_id : modem_ids) {
        Delete(modem_id);
    }
    return true;
}

std::shared_ptr<QHash<int, QJsonObject>> DriverStateRedis::GetAllStates(const QString& first,
                                                                        const QString& second) {
    auto found = std::make_shared<QHash<int, QJsonObject>>();
    const QList<QVariant> ids = GetIDs(first, second);
    const QByteArray start = (second + QLatin1Char(':') + first + QLatin1Char(':')).toUtf8();
    QList<QByteArray> command{"MGET"};
    command.reserve(ids.size() + 1);
    for (const QVariant& id : ids) {
        command.append(listedKey(start, id));
    }
    // Sent without keys too; the server's complaint then gives no states.
    const QVariantList replies = send(command).getValue().toList();
    const int size = std::min(ids.size(), replies.size());
    found->reserve(size);
    for (int i = 0; i < size; ++i) {
        const QVariant& reply = replies[i];
        if (reply.type() == QVariant::ByteArray) {
            found->insert(ids[i].toInt(), objectOf(reply.toByteArray()));
        }
    }
    return found;
}

interfaces::IDriverDLqueue* DriverStateRedis::DLqueue() {
    return &m_downlinkQueues;
}

device_json<mongo::driver_state_persistent> DriverStateRedis::states() {
    return {m_connection, m_db, m_persistent};
}

RedisClient::Response DriverStateRedis::send(const QList<QByteArray>& command) {
    return m_connection.commandSync(command, m_db);
}

QByteArray DriverStateRedis::keyOf(int modem_id) const {
    return deviceKey(m_keyStart, modem_id);
}

} // namespace redis
