#include "host/doctor/mongo_check.h"

#include "host/doctor/index_check.h"
#include "host/doctor/server_checks.h"
#include "host/input/settings.h"
#include "host/output/record_output.h"
#include "host/servers/direct_mongo.h"
#include "host/servers/store_layout.h"

#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/oid.hpp>
#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/count_options.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/find_options.hpp>
#include <mongocxx/v1/indexes.hpp>

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <optional>

namespace host {

namespace {

/// For a look that has to read much of a collection.
constexpr std::chrono::seconds patience{30};

QString area() {
    return QStringLiteral("MongoDB");
}

/// The collection with which another one is laid out; empty if it is looked for by itself.
QString partnerOf(const QString& collection) {
    if (collection == QLatin1String("dl_messages")) {
        return QStringLiteral("ul_messages");
    }
    if (collection == QLatin1String("eav_events")) {
        return QStringLiteral("eav_values");
    }
    return {};
}

QString bytesText(double bytes) {
    return QLocale::c().formattedDataSize(static_cast<qint64>(bytes));
}

class MongoExamination {
public:
    MongoExamination(const QJsonObject& settings, bool localTimes)
        : m_server(settings), m_localTimes(localTimes) {}

    Findings findings() {
        reach();
        std::vector<CollectionLayout> present;
        look(QStringLiteral("collections"), [&] { present = lookAtCollections(); });
        for (const auto& collection : present) {
            look(QStringLiteral("indexes of %1").arg(collection.name),
                 [&] { lookAtIndexes(collection); });
            look(QStringLiteral("size of %1").arg(collection.name),
                 [&] { lookAtSize(collection); });
            if (collection.expires()) {
                look(QStringLiteral("newest of %1").arg(collection.name),
                     [&] { lookAtNewest(collection); });
                look(QStringLiteral("expiry of %1").arg(collection.name),
                     [&] { lookAtExpired(collection); });
            }
        }
        return m_findings;
    }

private:
    /// What the server refuses, or takes too long for, is a finding; the rest is looked at.
    template <class Look>
    void look(const QString& subject, Look look) {
        try {
            look();
        } catch (const std::exception& error) {
            m_findings.push_back({.severity = Severity::Warning,
                                  .subject = subject,
                                  .found = QStringLiteral("could not be looked at: %1")
                                               .arg(QString::fromUtf8(error.what())),
                                  .advice = QStringLiteral("look at the user's rights, and at what "
                                                           "the server is busy with")});
        }
    }

    /// Throws the MongoDB driver's exceptions if the server cannot be asked anything.
    void reach() {
        m_server.askServer(R"({"ping": 1})");
        const auto before = QDateTime::currentMSecsSinceEpoch();
        const auto hello = m_server.askServer(R"({"hello": 1})");
        const auto after = QDateTime::currentMSecsSinceEpoch();
        m_findings.push_back(
            {.subject = area(),
             .found = QStringLiteral("%1 is there, %2").arg(m_server.name(), version())});
        m_findings.push_back(
            roundTripFinding(area(), [this] { m_server.askServer(R"({"ping": 1})"); }));
        const auto time = QDateTime::fromString(hello.value(QLatin1String("localTime"))
                                                    .toObject()
                                                    .value(QLatin1String("$date"))
                                                    .toString(),
                                                Qt::ISODateWithMs);
        if (time.isValid()) {
            m_now = time;
            m_findings.push_back(clockFinding(area(), time.toMSecsSinceEpoch(), before, after));
        }
    }

    QString version() {
        const auto info = m_server.askServer(R"({"buildInfo": 1})");
        const auto ferret = info.value(QLatin1String("ferretdb")).toObject();
        const auto version =
            QStringLiteral("MongoDB %1").arg(info.value(QLatin1String("version")).toString());
        return ferret.isEmpty()
                   ? version
                   : QStringLiteral("FerretDB %1 as %2")
                         .arg(ferret.value(QLatin1String("version")).toString(), version);
    }

    /// Gives those of the plug-in's collections that are there.
    std::vector<CollectionLayout> lookAtCollections() {
        const auto subject = QStringLiteral("collections");
        const auto names = m_server.collections();
        std::vector<CollectionLayout> present;
        QStringList unmade;
        for (const auto& layout : storeLayout()) {
            if (names.contains(layout.name)) {
                present.push_back(layout);
            } else if (names.contains(partnerOf(layout.name))) {
                // Whoever opens the store finds the partner and takes all for laid out.
                const auto missing = indexFindings(layout, {});
                m_findings.insert(m_findings.end(), missing.begin(), missing.end());
            } else {
                unmade.append(layout.name);
            }
        }
        if (!unmade.isEmpty()) {
            m_findings.push_back(
                {.severity = Severity::Note,
                 .subject = subject,
                 .found = unmade.join(QStringLiteral(", ")) + QStringLiteral(" not made yet"),
                 .advice = QStringLiteral("nothing: a host makes them when it first "
                                          "opens their stores")});
        }
        for (const auto& name : names) {
            if (std::ranges::find(storeLayout(), name, &CollectionLayout::name) ==
                storeLayout().end()) {
                m_findings.push_back(
                    {.severity = Severity::Note,
                     .subject = subject,
                     .found = QStringLiteral("%1 is not one of the plug-in's").arg(name)});
            }
        }
        return present;
    }

    void lookAtIndexes(const CollectionLayout& layout) {
        std::vector<ListedIndex> listed;
        auto cursor = m_server.collection(layout.name).indexes().list();
        for (const auto& index : cursor) {
            listed.push_back(listedIndex(index));
        }
        const auto found = indexFindings(layout, listed);
        m_findings.insert(m_findings.end(), found.begin(), found.end());
    }

    void lookAtSize(const CollectionLayout& layout) {
        const auto answer =
            m_server.ask(QStringLiteral(R"({"collStats": "%1"})").arg(layout.name).toUtf8());
        QStringList parts;
        QJsonObject details{{QStringLiteral("collection"), layout.name}};
        const auto tell = [&](const char* asked, const char* name,
                              const std::function<QString(double)>& text) {
            // Not every server tells all of them.
            if (const auto value = answer.value(QLatin1String(asked)); value.isDouble()) {
                parts.append(text(value.toDouble()));
                details.insert(QLatin1String(name), value);
            }
        };
        tell("count", "documents", [&](double count) {
            return QStringLiteral("%1 %2").arg(count, 0, 'f', 0).arg(layout.holds);
        });
        tell("size", "bytes", bytesText);
        tell("storageSize", "storage_bytes",
             [](double bytes) { return QStringLiteral("%1 on the disk").arg(bytesText(bytes)); });
        tell("totalIndexSize", "index_bytes",
             [](double bytes) { return QStringLiteral("%1 of indexes").arg(bytesText(bytes)); });
        m_findings.push_back({.severity = parts.isEmpty() ? Severity::Note : Severity::Ok,
                              .subject = QStringLiteral("size of %1").arg(layout.name),
                              .found = parts.isEmpty() ? QStringLiteral("the server does not tell")
                                                       : parts.join(QStringLiteral(", ")),
                              .details = details});
    }

    /// When the newest record came: of uplink messages by their own time, for which there is an
    /// index; of the others by the id that they were given when they were stored.
    std::optional<qint64> newestSecs(const CollectionLayout& layout) {
        const bool uplinks = layout.name == QLatin1String("ul_messages");
        mongocxx::v1::find_options options;
        options.sort(documentFromJson(uplinks ? R"({"timestamp": -1})" : R"({"_id": -1})"));
        options.projection(documentFromJson(R"({"timestamp": 1})"));
        options.limit(1);
        options.max_time(patience);
        // What stands for an invalid time is later than all others, and ids of other types may be.
        const auto filter = documentFromJson(
            uplinks ? R"({"timestamp": {"$lt": 4294967295}})"
                    : R"({"_id": {"$lte": {"$oid": "ffffffffffffffffffffffff"}}})");
        auto cursor = m_server.collection(layout.name).find(filter, options);
        for (const auto& document : cursor) {
            if (uplinks) {
                return static_cast<qint64>(
                    plainObject(document).value(QLatin1String("timestamp")).toDouble());
            }
            return document["_id"].get_oid().value.get_time_t();
        }
        return {};
    }

    void lookAtNewest(const CollectionLayout& layout) {
        const auto secs = newestSecs(layout);
        if (!secs) {
            return;
        }
        const auto time =
            timeCell(QDateTime::fromSecsSinceEpoch(*secs, Qt::UTC), m_localTimes).toString();
        const auto age = m_now.toSecsSinceEpoch() - *secs;
        constexpr qint64 tolerated = 300;
        Finding finding{.subject = QStringLiteral("newest of %1").arg(layout.name),
                        .found = age < 0 ? QStringLiteral("%1, %2 ahead").arg(time, duration(-age))
                                         : QStringLiteral("%1, %2 ago").arg(time, duration(age)),
                        .details = {{QStringLiteral("collection"), layout.name},
                                    {QStringLiteral("age_secs"), age}}};
        if (age < -tolerated) {
            finding.severity = Severity::Note;
            finding.advice = QStringLiteral("look at the clock of the host that stored it");
        }
        m_findings.push_back(finding);
    }

    void lookAtExpired(const CollectionLayout& layout) {
        constexpr int grace = 300; // the server removes in rounds
        constexpr std::int64_t most = 100'000;
        const auto latest = m_now.addSecs(-expireAfterSecs - grace).toMSecsSinceEpoch();
        mongocxx::v1::count_options options;
        options.limit(most);
        options.max_time(patience);
        const auto count =
            m_server.collection(layout.name)
                .count_documents(
                    documentFromJson(
                        QStringLiteral(R"({"ttl": {"$lt": {"$date": {"$numberLong": "%1"}}}})")
                            .arg(latest)
                            .toUtf8()),
                    options);
        Finding finding{.subject = QStringLiteral("expiry of %1").arg(layout.name),
                        .found = QStringLiteral("nothing is there that should have gone"),
                        .details = {{QStringLiteral("collection"), layout.name},
                                    {QStringLiteral("expired"), static_cast<qint64>(count)}}};
        if (count > 0) {
            finding.severity = Severity::Warning;
            finding.found =
                QStringLiteral("%1%2 documents are past their time by more than %3, and "
                               "still there")
                    .arg(count)
                    .arg(count == most ? QStringLiteral(" or more") : QString())
                    .arg(duration(grace));
            finding.advice = QStringLiteral(
                "see that the server removes them: the index on ttl is there, MongoDB's parameter "
                "ttlMonitorEnabled is on, and below FerretDB PostgreSQL runs pg_cron");
        }
        m_findings.push_back(finding);
    }

    DirectMongo m_server;
    bool m_localTimes;
    QDateTime m_now = QDateTime::currentDateTimeUtc();
    Findings m_findings;
};

} // namespace

Findings mongoFindings(const QJsonObject& settings, bool localTimes) {
    try {
        return MongoExamination(settings, localTimes).findings();
    } catch (const std::exception& error) {
        return {
            {.severity = Severity::Error,
             .subject = area(),
             .found = QStringLiteral("%1 cannot be asked: %2")
                          .arg(serverName(settings), QString::fromUtf8(error.what())),
             .advice = QStringLiteral("see that it runs, that \"url\" names it rightly, and that "
                                      "nothing on the way keeps this machine out")}};
    }
}

} // namespace host
