#pragma once

#include "host/servers/extended_json.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace host {

/// The plug-in's database on the MongoDB server of its settings, asked past the plug-in: for what
/// the interfaces cannot say.
///
/// Owns its client, which connects with the first question. Every question blocks; the MongoDB
/// driver's exceptions pass through.
class DirectMongo {
public:
    explicit DirectMongo(const QJsonObject& settings);

    /// For messages; without secrets.
    const QString& name() const { return m_name; }

    /// The answer to a command, which is extended JSON, for the whole server.
    QJsonObject askServer(const QByteArray& command);

    /// The answer to a command for the database.
    QJsonObject ask(const QByteArray& command);
    Document ask(const DocumentView& command);

    /// Sorted, without views and what the server keeps for itself.
    QStringList collections();

    mongocxx::v1::collection collection(const QString& name);

    /// How many servers have to have written something, as the connection string says; empty if it
    /// does not.
    Document writeConcern() const;

private:
    QString m_name;
    mongocxx::v1::client m_client;
};

} // namespace host
