#include "host/transfer/import.h"

#include "host/check/attempt.h"
#include "host/console.h"
#include "host/failure.h"
#include "host/servers/direct_mongo.h"
#include "host/servers/direct_redis.h"
#include "host/session/interrupt.h"
#include "host/session/session.h"
#include "host/transfer/document_line.h"
#include "host/transfer/export_folder.h"
#include "host/transfer/mongo_import.h"
#include "host/transfer/record_progress.h"
#include "host/transfer/redis_entry.h"
#include "host/transfer/redis_import.h"
#include "host/transfer/role_names.h"

#include <QElapsedTimer>

#include <algorithm>
#include <functional>
#include <memory>

namespace host {

namespace {

bool isOfMongo(const ExportedStore& store) {
    return store.server == QLatin1String("mongodb");
}

/// What is wrong with a line of the store; empty if nothing is.
QString faultOf(const ExportedStore& store, const QByteArray& line) {
    try {
        const auto again = isOfMongo(store) ? documentLine(documentOfLine(line).view())
                                            : entryLine(entryOfLine(line));
        return again == line ? QString() : QStringLiteral("is not as it was written");
    } catch (const Failure& failure) {
        return QStringLiteral("is damaged: ") + QString::fromUtf8(failure.what());
    }
}

/// Throws Failure if the file is not the one that was written, naming its first damaged line if
/// there is one.
void checkFile(const ExportedStore& store, const QString& fileName,
               const std::function<void(qint64)>& read) {
    const auto sum = sumOf(fileName, read);
    if (sum == store.sum) {
        return;
    }
    LineFileReader reader(fileName);
    QByteArray line;
    while (reader.next(line)) {
        if (const auto fault = faultOf(store, line); !fault.isEmpty()) {
            throw Failure(
                QStringLiteral("%1, line %2 %3").arg(fileName).arg(reader.lineNumber()).arg(fault));
        }
    }
    throw Failure(QStringLiteral("%1 is not as it was written: %2 lines and %3 bytes, or other "
                                 "content, rather than %4 lines and %5 bytes")
                      .arg(fileName)
                      .arg(sum.lines)
                      .arg(sum.bytes)
                      .arg(store.sum.lines)
                      .arg(store.sum.bytes));
}

class Import {
public:
    Import(const ImportOptions& options, Session& session)
        : m_options(options), m_session(session), m_folder(ExportFolder::open(options.folder)),
          m_mongo(session.settings()), m_redis(session.settings()),
          m_output(session.output(
              {{QStringLiteral("server"), QStringLiteral("Server")},
               {QStringLiteral("store"), QStringLiteral("Store")},
               {QStringLiteral("records"), QStringLiteral("Records"), true},
               {QStringLiteral("added"), QStringLiteral("Added"), true},
               {QStringLiteral("there_already"), QStringLiteral("There already"), true},
               {QStringLiteral("different"), QStringLiteral("Other content"), true},
               {QStringLiteral("replaced"), QStringLiteral("Replaced"), true},
               {QStringLiteral("expired"), QStringLiteral("Expired"), true},
               {QStringLiteral("missing"), QStringLiteral("Missing"), true},
               {QStringLiteral("in_store"), QStringLiteral("In the store"), true},
               {QStringLiteral("seconds"), QStringLiteral("Seconds"), true}})) {}

    /// False if records are missing afterwards, or the user ended it.
    bool run() {
        check();
        if (!m_options.merge && !m_options.replace) {
            requireEmpty();
        }
        // The plug-in lays out its collections when it opens its stores.
        m_session.messages();
        m_session.values();
        m_session.states();
        bool whole = true;
        for (const auto& store : m_folder.stores()) {
            whole = whole && importStore(store);
        }
        m_output.finish();
        return whole && m_missing == 0;
    }

private:
    void check() {
        constexpr qint64 step = 100'000'000;
        qint64 total = 0;
        for (const auto& store : m_folder.stores()) {
            total += store.sum.bytes;
        }
        auto progress =
            m_session.remarks().progress(QStringLiteral("checking files, hundreds of megabytes"),
                                         static_cast<int>(std::max<qint64>(total / step, 1)));
        qint64 checked = 0;
        const auto read = [&](qint64 bytes) {
            if (Interrupt::requested()) {
                throw Failure(QStringLiteral("ended before anything was imported"));
            }
            if (const auto steps = (checked + bytes) / step - checked / step; steps > 0) {
                progress.advance(static_cast<int>(steps));
            }
            checked += bytes;
        };
        for (const auto& store : m_folder.stores()) {
            checkFile(store, m_folder.path(store), read);
            if (!isOfMongo(store)) {
                databaseOfRoles(m_session.settings(), store.name);
            }
        }
    }

    std::unique_ptr<StoreImport> importOf(const ExportedStore& store) {
        const auto existing = m_options.replace ? Existing::Replace : Existing::Keep;
        if (isOfMongo(store)) {
            return std::make_unique<MongoImport>(m_mongo, store.name, existing);
        }
        return std::make_unique<RedisImport>(
            m_redis, databaseOfRoles(m_session.settings(), store.name), existing);
    }

    QString serverOf(const ExportedStore& store) const {
        return isOfMongo(store) ? m_mongo.name() : m_redis.name();
    }

    void requireEmpty() {
        for (const auto& store : m_folder.stores()) {
            const auto records = attempt(QStringLiteral("counting the records of %1 at %2")
                                             .arg(store.title(), serverOf(store)),
                                         [&] { return importOf(store)->records(); });
            if (store.sum.lines > 0 && records > 0) {
                throw Failure(QStringLiteral("%1 has %2 records already; to go on with an import "
                                             "that was broken off, or to add to them, give --merge")
                                  .arg(store.title())
                                  .arg(records));
            }
        }
    }

    /// False if the user ended it.
    bool importStore(const ExportedStore& store) {
        QElapsedTimer timer;
        timer.start();
        const auto fileName = m_folder.path(store);
        const auto what = QStringLiteral("importing %1 into %2").arg(fileName, serverOf(store));
        return attempt(what, [&] {
            const auto records = importOf(store);
            const bool whole = addLines(*records, store, fileName);
            const auto missing = records->missing();
            m_missing += missing > 0 ? missing : 0;
            const auto& counts = records->counts();
            m_output.add({store.server, store.name, store.sum.lines, counts.added, counts.same,
                          counts.different, counts.replaced, counts.expired,
                          missing > 0 ? missing : 0, records->records(),
                          static_cast<double>(timer.elapsed()) / 1000});
            return whole;
        });
    }

    /// False if the user ended it.
    bool addLines(StoreImport& records, const ExportedStore& store, const QString& fileName) {
        RecordProgress progress(m_session.remarks(), store.title(), store.sum.lines);
        LineFileReader reader(fileName);
        QByteArray line;
        bool whole = true;
        try {
            while (whole && reader.next(line)) {
                records.add(line, reader.lineNumber());
                progress.advance();
                whole = !Interrupt::requested();
            }
            records.flush();
        } catch (const Failure& failure) {
            throw Failure(fileName + QStringLiteral(": ") + QString::fromUtf8(failure.what()));
        }
        return whole;
    }

    const ImportOptions& m_options;
    Session& m_session;
    ExportFolder m_folder;
    DirectMongo m_mongo;
    DirectRedis m_redis;
    RecordOutput m_output;
    qint64 m_missing = 0;
};

} // namespace

bool runImport(const ImportOptions& options, Session& session) {
    const Interrupt interrupt;
    const bool whole = Import(options, session).run();
    if (Interrupt::requested()) {
        session.remarks().line(QStringLiteral(
            "Ended before all was imported. The same command with --merge goes on."));
    } else if (!whole) {
        session.remarks().line(
            QStringLiteral("Records that the server has acknowledged are not there: see Missing."));
    }
    return whole;
}

} // namespace host
