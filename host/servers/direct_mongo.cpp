#include "host/servers/direct_mongo.h"

#include "host/input/settings.h"
#include "host/servers/store_layout.h"

#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>
#include <mongocxx/v1/write_concern.hpp>

#include <string>

namespace host {

DirectMongo::DirectMongo(const QJsonObject& settings)
    : m_name(serverName(settings)),
      m_client(mongocxx::v1::uri{settings.value(QLatin1String("url")).toString().toStdString()}) {}

QJsonObject DirectMongo::askServer(const QByteArray& command) {
    return plainObject(m_client.database("admin").run_command(documentFromJson(command)));
}

QJsonObject DirectMongo::ask(const QByteArray& command) {
    return plainObject(ask(documentFromJson(command).view()));
}

Document DirectMongo::ask(const DocumentView& command) {
    return m_client.database(databaseName).run_command(command);
}

QStringList DirectMongo::collections() {
    QStringList names;
    auto cursor = m_client.database(databaseName).list_collections();
    for (const auto& collection : cursor) {
        const auto described = plainObject(collection);
        const auto name = described.value(QLatin1String("name")).toString();
        if (described.value(QLatin1String("type")).toString() != QLatin1String("view") &&
            !name.startsWith(QLatin1String("system."))) {
            names.append(name);
        }
    }
    names.sort();
    return names;
}

mongocxx::v1::collection DirectMongo::collection(const QString& name) {
    return m_client.database(databaseName).collection(name.toStdString());
}

Document DirectMongo::writeConcern() const {
    return m_client.uri().write_concern().to_document();
}

} // namespace host
