#include "host/doctor/redis_keys_check.h"

#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

#include <algorithm>

namespace host {

namespace {

/// So many keys of a database are asked for their type and for when they expire.
constexpr int asked = 1'000;

/// Keys of one kind: how many, and one of them.
struct Sighting {
    qint64 count = 0;
    QByteArray example;

    void add(const QByteArray& key) {
        if (++count == 1) {
            example = key;
        }
    }
};

QString shown(const QByteArray& key) {
    constexpr int longest = 60;
    return QLatin1Char('"') + QString::fromUtf8(key.left(longest)) + QLatin1Char('"');
}

QString keysText(const Sighting& sighting) {
    return sighting.count == 1
               ? QStringLiteral("the key %1").arg(shown(sighting.example))
               : QStringLiteral("%1 keys, as %2,").arg(sighting.count).arg(shown(sighting.example));
}

/// The type of value behind keys of this form.
QByteArray typeOfKey(const QByteArray& key) {
    if (key.startsWith("dev:clients:")) {
        return "set";
    }
    return key.startsWith("dev:properties:") ? "hash" : "string";
}

const RedisRole& roleNamed(const std::vector<RedisRole>& roles, const QString& name) {
    return *std::ranges::find(roles, name, &RedisRole::name);
}

/// All keys of one database.
class DatabaseKeys {
public:
    DatabaseKeys(DirectRedis& server, const std::vector<RedisRole>& roles, int db)
        : m_server(server), m_roles(roles), m_db(db) {
        server.scan(db, [this](const QByteArray& key) {
            add(key);
            return true;
        });
    }

    Findings findings() const {
        Findings findings;
        addCounts(findings);
        for (auto strange = m_strange.begin(); strange != m_strange.end(); ++strange) {
            addStrange(findings, strange.key(), strange.value());
        }
        if (m_mistyped.count > 0) {
            findings.push_back({.severity = Severity::Warning,
                                .subject = subject(),
                                .found = keysText(m_mistyped) +
                                         QStringLiteral(" of another type than the plug-in reads"),
                                .advice = QStringLiteral("find out who writes them; the plug-in "
                                                         "takes them for missing")});
        }
        if (m_expiring.count > 0) {
            findings.push_back(
                {.severity = Severity::Warning,
                 .subject = subject(),
                 .found = keysText(m_expiring) +
                          QStringLiteral(" will expire; the plug-in gives none a time"),
                 .advice = QStringLiteral("find out who does; PERSIST keeps a key")});
        }
        return findings;
    }

private:
    void add(const QByteArray& key) {
        const auto role = roleOfKey(key);
        const bool here = std::ranges::any_of(
            m_roles, [&](const RedisRole& each) { return each.name == role && each.db == m_db; });
        (here ? m_right : m_strange)[role].add(key);
        if (here && m_looked++ < asked) {
            lookAt(key);
        }
    }

    void lookAt(const QByteArray& key) {
        const auto type = m_server.ask({"TYPE", key}, m_db);
        if (type && *type != typeOfKey(key) && *type != QByteArray("none")) {
            m_mistyped.add(key);
        }
        const auto left = m_server.ask({"PTTL", key}, m_db);
        if (left && left->toLongLong() >= 0) {
            m_expiring.add(key);
        }
    }

    QString subject() const { return QStringLiteral("keys in Redis database %1").arg(m_db); }

    void addCounts(Findings& findings) const {
        QStringList parts;
        QJsonObject details{{QStringLiteral("database"), m_db}};
        for (const auto& role : m_roles) {
            if (role.db == m_db) {
                const auto count = m_right.value(role.name).count;
                parts.append(QStringLiteral("%1 of %2").arg(count).arg(role.holds));
                details.insert(role.name + QStringLiteral("_keys"), count);
            }
        }
        auto found = parts.join(QStringLiteral(", "));
        if (m_looked > asked) {
            found += QStringLiteral("; types and expiry of the first %1 looked at").arg(asked);
        }
        findings.push_back({.subject = subject(), .found = found, .details = details});
    }

    void addStrange(Findings& findings, const QString& role, const Sighting& sighting) const {
        if (role.isEmpty()) {
            findings.push_back({.severity = Severity::Note,
                                .subject = subject(),
                                .found = keysText(sighting) +
                                         QStringLiteral(" of a form that is not the plug-in's")});
            return;
        }
        const auto& proper = roleNamed(m_roles, role);
        findings.push_back(
            {.severity = Severity::Warning,
             .subject = subject(),
             .found =
                 QStringLiteral("%1 of %2, which the plug-in looks for in database %3 (\"%4\")")
                     .arg(keysText(sighting), proper.holds)
                     .arg(proper.db)
                     .arg(proper.setting),
             .advice =
                 QStringLiteral("set \"%1\" to the database that has them, or MOVE them there")
                     .arg(proper.setting)});
    }

    DirectRedis& m_server;
    const std::vector<RedisRole>& m_roles;
    int m_db;
    QMap<QString, Sighting> m_right;
    QMap<QString, Sighting> m_strange;
    Sighting m_mistyped;
    Sighting m_expiring;
    qint64 m_looked = 0;
};

/// The databases that have keys, if the server tells.
QList<int> databasesWithKeys(DirectRedis& server) {
    static const QRegularExpression line(QStringLiteral("^db(\\d+):"),
                                         QRegularExpression::MultilineOption);
    QList<int> databases;
    const auto info = server.ask({"INFO", "keyspace"});
    auto match = line.globalMatch(QString::fromLatin1(info.value_or(QVariant()).toByteArray()));
    while (match.hasNext()) {
        databases.append(match.next().captured(1).toInt());
    }
    return databases;
}

/// Keys that are the plug-in's beyond doubt, in a database that the settings do not name.
Findings strayFindings(DirectRedis& server, int db) {
    QMap<QString, Sighting> sightings;
    int looked = 0;
    server.scan(db, [&](const QByteArray& key) {
        const auto role = roleOfKey(key);
        if (role == QLatin1String("client") || role == QLatin1String("queue")) {
            sightings[role].add(key);
        }
        return ++looked < asked;
    });
    Findings findings;
    for (const auto& sighting : sightings) {
        findings.push_back(
            {.severity = Severity::Warning,
             .subject = QStringLiteral("keys in Redis database %1").arg(db),
             .found = keysText(sighting) +
                      QStringLiteral(" in the plug-in's form, where the settings name no database"),
             .advice = QStringLiteral("look at the databases in the settings: \"cleint_db\", "
                                      "\"state_db\" and \"queue_db\"")});
    }
    return findings;
}

} // namespace

QString roleOfKey(const QByteArray& key) {
    static const QRegularExpression client(QStringLiteral("^dev:(clients|properties):-?[0-9]+$"));
    static const QRegularExpression queue(QStringLiteral("^-?[0-9]+$"));
    static const QRegularExpression state(QStringLiteral(":-?[0-9]+$"));
    const auto text = QString::fromLatin1(key);
    if (client.match(text).hasMatch()) {
        return QStringLiteral("client");
    }
    if (queue.match(text).hasMatch()) {
        return QStringLiteral("queue");
    }
    return state.match(text).hasMatch() ? QStringLiteral("state") : QString();
}

Findings redisKeyFindings(DirectRedis& server, const std::vector<RedisRole>& roles) {
    Findings findings;
    QSet<int> seen;
    const auto take = [&](int db, const Findings& found) {
        seen.insert(db);
        findings.insert(findings.end(), found.begin(), found.end());
    };
    for (const auto& role : roles) {
        if (!seen.contains(role.db)) {
            take(role.db, DatabaseKeys(server, roles, role.db).findings());
        }
    }
    for (const auto db : databasesWithKeys(server)) {
        if (!seen.contains(db)) {
            take(db, strayFindings(server, db));
        }
    }
    return findings;
}

} // namespace host
