#include "plugin/db_driver_mongo_factory.h"

#include "mongo/db_driver_mongo.h"
#include "mongo/eav_db_driver_mongo.h"
#include "redis/device_client_database_redis.h"
#include "redis/driver_state.h"
#include "redis/redis_conf.h"
#include "redisclient/redisclient.h"

#include <QMetaType>
#include <QVariant>
#include <QVector>

namespace {

std::string mongoUrl(const QJsonObject& settings) {
    return settings.value(QLatin1String("url")).toString().toStdString();
}

redis_conf redisConf(const QJsonObject& settings) {
    return redis_conf_from_json(settings.value(QLatin1String("redis")).toObject());
}

/// False for a type of another size or kind than `Type`.
template <typename Type>
bool canBe(const QMetaType& known) {
    constexpr int declared = QMetaType::WasDeclaredAsMetaType; // or not: the same type to Qt
    constexpr int flags = QtPrivate::QMetaTypeTypeFlags<Type>::Flags;
    return known.sizeOf() == sizeof(Type) && (known.flags() | declared) == (flags | declared);
}

/// Registers the type under all of the names, as one. A name that means something else, in a host
/// with a Redis client of its own perhaps, is left alone: Qt would end the process over it.
template <typename Type>
void registerMetaType(std::initializer_list<const char*> names) {
    int id = QMetaType::UnknownType;
    for (const char* name : names) {
        if (const QMetaType known(QMetaType::type(name)); known.isValid()) {
            if (canBe<Type>(known)) {
                id = known.id();
            } else {
                qWarning("Kelvrostorage leaves the meta-type name \"%s\" to the host's type", name);
            }
        } else if (id != QMetaType::UnknownType) {
            QMetaType::registerTypedef(name, id);
        } else {
            // Given an object, Qt takes this very name and not the one of the type's declaration.
            Type any{};
            id = qRegisterMetaType<Type>(name, &any);
        }
    }
}

} // namespace

DbDriverMongoFactory::DbDriverMongoFactory() {
    registerMetaType<RedisClient::Command>({"RedisClient::Command", "Command"});
    registerMetaType<RedisClient::Response>({"RedisClient::Response", "Response"});
    registerMetaType<QVector<QVariant*>>({"QVector<QVariant*>"});
    registerMetaType<QVariant*>({"QVariant*"});
}

std::shared_ptr<interfaces::IMessagesDatabase>
DbDriverMongoFactory::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* /*parent*/) {
    auto database = std::make_shared<mongo::DbDriverMongo>(mongoUrl(settings));
    database->CreateDatabase();
    return database;
}

std::shared_ptr<interfaces::IEAVDatabase>
DbDriverMongoFactory::CreateEavDatabaseInst(const QJsonObject& settings, QObject* /*parent*/) {
    auto database = std::make_shared<mongo::EavDbDriverMongo>(mongoUrl(settings));
    database->CreateDatabase();
    return database;
}

std::shared_ptr<interfaces::IDriverState>
DbDriverMongoFactory::CreateDriverStateInst(const QJsonObject& settings, QObject* /*parent*/) {
    return std::make_shared<redis::DriverStateRedis>(redisConf(settings), mongoUrl(settings));
}

std::shared_ptr<interfaces::IDeviceClientsDatabase>
DbDriverMongoFactory::CreateClientDatabaseInst(const QJsonObject& settings, QObject* /*parent*/) {
    return std::make_shared<redis::DeviceClientDatabaseRedis>(redisConf(settings));
}
