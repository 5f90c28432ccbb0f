#pragma once

#include "host/servers/direct_mongo.h"
#include "host/transfer/store_import.h"

#include <QDateTime>
#include <QString>

#include <vector>

namespace host {

/// Documents for one collection, stored some at a time: as many as are there and not more than a
/// few megabytes. Borrows the server.
class MongoImport final : public StoreImport {
public:
    MongoImport(DirectMongo& server, QString collection, Existing existing);

    qint64 records() override;
    void add(const QByteArray& line, qint64 lineNumber) override;
    void flush() override;
    qint64 missing() override;

private:
    struct Waiting {
        Document document;
        qint64 lineNumber;
        /// Whether the collection has one with its "_id".
        bool there = false;
        bool same = false;
    };

    bool stays(const DocumentView& document) const;
    qint64 staying();
    void lookForThem();
    void insertNew();
    void replaceOthers();
    /// Sends a command and marks those whose "_id" turned out to be taken; throws if one was
    /// refused for another reason.
    void write(const DocumentView& command, const std::vector<Waiting*>& documents);

    DirectMongo& m_server;
    QString m_collection;
    Existing m_existing;
    /// Documents that the server removes earlier are not missed.
    QDateTime m_horizon = QDateTime::currentDateTimeUtc().addDays(1);
    qint64 m_stayingBefore;
    qint64 m_stayingAdded = 0;
    std::vector<Waiting> m_waiting;
    std::size_t m_waitingBytes = 0;
};

} // namespace host
