#include "host/transfer/export.h"

#include "host/check/attempt.h"
#include "host/console.h"
#include "host/input/settings.h"
#include "host/servers/direct_mongo.h"
#include "host/servers/direct_redis.h"
#include "host/session/interrupt.h"
#include "host/session/session.h"
#include "host/transfer/document_line.h"
#include "host/transfer/export_folder.h"
#include "host/transfer/record_progress.h"
#include "host/transfer/redis_entry.h"
#include "host/transfer/role_names.h"

#include <mongocxx/v1/cursor.hpp>

#include <QElapsedTimer>

#include <functional>

namespace host {

namespace {

/// The records of one store, on their way into its file.
class StoreExport {
public:
    StoreExport(LineFileWriter& writer, RecordProgress& progress)
        : m_writer(writer), m_progress(progress) {}

    /// False if the user wants an end.
    bool add(const QByteArray& line, bool inBase64) {
        m_writer.add(line);
        m_progress.advance();
        m_inBase64 += inBase64 ? 1 : 0;
        return !Interrupt::requested();
    }

    qint64 inBase64() const { return m_inBase64; }

private:
    LineFileWriter& m_writer;
    RecordProgress& m_progress;
    qint64 m_inBase64 = 0;
};

class Export {
public:
    Export(const QString& folder, Session& session)
        : m_session(session), m_mongo(session.settings()), m_redis(session.settings()),
          m_folder(ExportFolder::begin(folder, m_mongo.name(), m_redis.name())),
          m_output(session.output({{QStringLiteral("server"), QStringLiteral("Server")},
                                   {QStringLiteral("store"), QStringLiteral("Store")},
                                   {QStringLiteral("records"), QStringLiteral("Records"), true},
                                   {QStringLiteral("in_base64"), QStringLiteral("In base64"), true},
                                   {QStringLiteral("bytes"), QStringLiteral("Bytes"), true},
                                   {QStringLiteral("seconds"), QStringLiteral("Seconds"), true},
                                   {QStringLiteral("file"), QStringLiteral("File")}})) {}

    /// False if the user ended it.
    bool run() {
        bool whole = true;
        const auto collections =
            attempt(QStringLiteral("listing the collections of %1").arg(m_mongo.name()),
                    [&] { return m_mongo.collections(); });
        for (const auto& name : collections) {
            whole = whole && exportCollection(name);
        }
        for (const auto& [name, db] : redisDatabases(m_session.settings())) {
            whole = whole && exportDatabase(name, db);
        }
        if (whole) {
            m_folder.finish();
        }
        m_output.finish();
        return whole;
    }

private:
    bool exportCollection(const QString& name) {
        auto collection = m_mongo.collection(name);
        return exportStore(
            QStringLiteral("mongodb"), name, [&] { return collection.estimated_document_count(); },
            [&](StoreExport& store) {
                auto cursor = collection.find(documentFromJson("{}"));
                for (const auto& document : cursor) {
                    const auto line = documentLine(document);
                    if (!store.add(line, isBytesLine(line))) {
                        return false;
                    }
                }
                return true;
            });
    }

    bool exportDatabase(const QString& name, int db) {
        return exportStore(
            QStringLiteral("redis"), name, [&] { return m_redis.run({"DBSIZE"}, db).toLongLong(); },
            [&](StoreExport& store) {
                bool wanted = true;
                m_redis.scan(db, [&](const QByteArray& key) {
                    if (const auto entry = readEntry(m_redis, db, key)) {
                        const auto line = entryLine(*entry);
                        wanted = store.add(line, hasBase64(line));
                    }
                    return wanted;
                });
                return wanted;
            });
    }

    bool exportStore(const QString& server, const QString& name,
                     const std::function<qint64()>& expected,
                     const std::function<bool(StoreExport&)>& write) {
        if (const auto* const there = m_folder.find(server, name)) {
            m_session.remarks().line(
                QStringLiteral("%1 is there already, from %2")
                    .arg(there->title(), there->finished.toString(Qt::ISODate)));
            return true;
        }
        auto store = ExportFolder::newStore(server, name);
        QElapsedTimer timer;
        timer.start();
        const auto what =
            QStringLiteral("exporting %1 from %2")
                .arg(store.title(),
                     server == QLatin1String("redis") ? m_redis.name() : m_mongo.name());
        return attempt(what, [&] {
            LineFileWriter writer(m_folder.path(store));
            RecordProgress progress(m_session.remarks(), store.title(), expected());
            StoreExport records(writer, progress);
            if (!write(records)) {
                return false;
            }
            store.sum = writer.finish();
            store.finished = QDateTime::currentDateTimeUtc();
            m_folder.add(store);
            m_output.add({store.server, store.name, store.sum.lines, records.inBase64(),
                          store.sum.bytes, static_cast<double>(timer.elapsed()) / 1000,
                          m_folder.path(store)});
            return true;
        });
    }

    Session& m_session;
    DirectMongo m_mongo;
    DirectRedis m_redis;
    ExportFolder m_folder;
    RecordOutput m_output;
};

} // namespace

bool runExport(const QString& folder, Session& session) {
    const Interrupt interrupt;
    const bool whole = Export(folder, session).run();
    if (!whole) {
        session.remarks().line(
            QStringLiteral(
                "Ended before all was exported. The same command goes on with the stores "
                "that are not in %1 yet.")
                .arg(folder));
    }
    return whole;
}

} // namespace host
