#include "plugin/db_driver_mongo_factory.h"

#include "interfaces/idevice_clients_database.h"
#include "interfaces/idriver_state.h"
#include "mongo/db_driver_mongo.h"
#include "mongo/eav_db_driver_mongo.h"
#include "redisclient/redisclient.h"

#include <QMetaType>
#include <QVariant>
#include <QVector>

#include <stdexcept>

namespace {

std::string mongoUrl(const QJsonObject& settings) {
    return settings.value(QLatin1String("url")).toString().toStdString();
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
DbDriverMongoFactory::CreateDriverStateInst(const QJsonObject& /*settings*/, QObject* /*parent*/) {
    throw std::runtime_error("CreateDriverStateInst is not available yet");
}

std::shared_ptr<interfaces::IDeviceClientsDatabase>
DbDriverMongoFactory::CreateClientDatabaseInst(const QJsonObject& /*settings*/,
                                               QObject* /*parent*/) {
    throw std::runtime_error("CreateClientDatabaseInst is not available yet");
}
