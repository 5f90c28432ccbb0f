// What a Redis server may send, at any point, to everything that the driver has for Redis. The
// durable copies in MongoDB are left out: these stand in for their store.

#include "fuzz/support/choices.h"
#include "fuzz/support/scripted_redis.h"
#include "fuzz/support/target.h"
#include "mongo/persistent_store.h"
#include "redis/device_client_database_redis.h"
#include "redis/driver_state.h"

#include <mongocxx/v1/instance.hpp>

#include <exception>

template <typename Interface>
mongo::persistent_store<Interface>::persistent_store(const std::string& mongoUrl,
                                                     std::string_view collection)
    : m_uri(mongoUrl), m_client(m_uri), m_database(m_client.database("none")),
      m_collection(collection) {}
template <typename Interface>
void mongo::persistent_store<Interface>::Create() {}
template <typename Interface>
bool mongo::persistent_store<Interface>::Save(int /*modem_id*/, const QJsonObject& /*state*/) {
    return false;
}
template <typename Interface>
QJsonObject mongo::persistent_store<Interface>::Get(int /*modem_id*/) {
    return {};
}
template <typename Interface>
bool mongo::persistent_store<Interface>::Delete(int /*modem_id*/) {
    return false;
}
template class mongo::persistent_store<interfaces::IDriverStatePersistent>;
template class mongo::persistent_store<interfaces::IDriverDLqueuePersistent>;

namespace {

template <typename Operation>
void mayHaveNoAnswer(const Operation& operation) {
    try {
        operation();
    } catch (const RedisClient::Connection::Exception& failure) {
        fuzz::require(*failure.what() != '\0', "the exception has a text");
    }
}

void operate(redis::DriverStateRedis& states, std::uint32_t kind) {
    const QString first = QStringLiteral("first");
    switch (kind) {
    case 0:
        states.Pull(7);
        break;
    case 1:
        states.Push(7, true);
        break;
    case 2:
        states.Delete(7);
        break;
    case 3:
        states.GetIDs(first, first);
        break;
    case 4:
        states.GetAllStates(first, first);
        break;
    case 5:
        states.DLqueue()->Pull(7);
        break;
    case 6:
        states.DLqueue()->Push(7, {}, true);
        break;
    default:
        states.DLqueue()->Delete(7);
    }
}

void askForClients(const redis_conf& conf) {
    redis::DeviceClientDatabaseRedis database{conf};
    database.DeviceClientsRepository()->GetDeviceClients(7);
    database.DeviceClientsRepository()->GetDeviceInfo(7);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const mongocxx::v1::instance driver;
    static fuzz::ScriptedRedis server;
    static const redis_conf conf = [] {
        redis_conf conf;
        conf.port = server.port();
        conf.auth = QStringLiteral("secret");
        conf.name = QStringLiteral("name");
        return conf;
    }();
    static redis::DriverStateRedis states{conf, "mongodb://127.0.0.1:1"};

    fuzz::choices choices{fuzz::textOf(data, size)};
    const std::uint32_t first = choices.below(9);
    const std::uint32_t second = choices.below(9);
    server.play(choices.rest());
    for (const std::uint32_t kind : {first, second}) {
        mayHaveNoAnswer([&] {
            if (kind == 8) {
                askForClients(conf);
            } else {
                operate(states, kind);
            }
        });
    }
    return 0;
}
