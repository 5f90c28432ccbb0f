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

} // namespace

DbDriverMongoFactory::DbDriverMongoFactory() {
    qRegisterMetaType<RedisClient::Command>("Command");
    qRegisterMetaType<RedisClient::Command>("RedisClient::Command");
    qRegisterMetaType<RedisClient::Response>("Response");
    qRegisterMetaType<RedisClient::Response>("RedisClient::Response");
    qRegisterMetaType<QVector<QVariant*>>("QVector<QVariant*>");
    qRegisterMetaType<QVariant*>("QVariant*");
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
