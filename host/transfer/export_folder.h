#pragma once

#include "host/transfer/line_file.h"

#include <QDateTime>
#include <QString>

#include <vector>

namespace host {

/// One store of an export: a collection, or what Redis keeps for a role.
struct ExportedStore {
    /// "mongodb" or "redis".
    QString server;
    /// Of a collection its name; of Redis the roles of its database, as "state" or "state+queue".
    QString name;
    /// Below the folder.
    QString file;
    LineFileSum sum;
    QDateTime begun;
    QDateTime finished;

    /// For messages: "mongodb ul_messages".
    QString title() const { return server + QLatin1Char(' ') + name; }
};

/// The folder of an export: a file of lines for each store, and manifest.json, which says which of
/// them are whole. Every change of the manifest is on the disk before anything else is done.
///
/// All throw Failure, naming folder or file.
class ExportFolder {
public:
    /// Makes a folder, or takes up one in which an export from the same servers did not come to its
    /// end.
    static ExportFolder begin(const QString& path, const QString& mongo, const QString& redis);

    /// A folder with a finished export.
    static ExportFolder open(const QString& path);

    const std::vector<ExportedStore>& stores() const { return m_stores; }
    /// Nothing if the store is not exported yet.
    const ExportedStore* find(const QString& server, const QString& name) const;

    /// A store that shall be exported: its file and the time are filled in.
    static ExportedStore newStore(const QString& server, const QString& name);
    QString path(const ExportedStore& store) const;

    /// A store whose file is whole.
    void add(const ExportedStore& store);
    /// All stores are there: the export can be imported.
    void finish();

private:
    explicit ExportFolder(QString path);
    void read();
    void write() const;

    QString m_path;
    QString m_mongo;
    QString m_redis;
    QDateTime m_begun;
    QDateTime m_finished;
    std::vector<ExportedStore> m_stores;
};

} // namespace host
