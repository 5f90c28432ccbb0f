#include "host/doctor/redis_check.h"

#include "host/doctor/redis_keys_check.h"
#include "host/doctor/server_checks.h"
#include "host/input/settings.h"
#include "host/servers/direct_redis.h"

#include <QDateTime>
#include <QVariantList>

#include <exception>

namespace host {

namespace {

QString area() {
    return QStringLiteral("Redis");
}

void append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

Finding notAllowed(const QString& subject, const QString& command) {
    return {
        .severity = Severity::Note,
        .subject = subject,
        .found =
            QStringLiteral("not allowed to look: the server refuses %1 to this user").arg(command)};
}

/// The pairs that CONFIG GET gives.
RedisFacts pairs(const QVariantList& answer) {
    RedisFacts facts;
    for (int i = 0; i + 1 < answer.size(); i += 2) {
        facts.insert(answer.at(i).toByteArray(), answer.at(i + 1).toByteArray());
    }
    return facts;
}

Findings reach(DirectRedis& server) {
    // Also refused, as by a server that cannot keep what is written, it is a round trip.
    server.ask({"PING"});
    Findings findings;
    findings.push_back(roundTripFinding(area(), [&] { server.ask({"PING"}); }));
    const auto before = QDateTime::currentMSecsSinceEpoch();
    const auto answer = server.ask({"TIME"});
    const auto after = QDateTime::currentMSecsSinceEpoch();
    if (answer) {
        const auto parts = answer->toList();
        findings.push_back(clockFinding(area(),
                                        parts.value(0).toByteArray().toLongLong() * 1000 +
                                            parts.value(1).toByteArray().toLongLong() / 1000,
                                        before, after));
    } else {
        findings.push_back(notAllowed(QStringLiteral("clock of Redis"), QStringLiteral("TIME")));
    }
    return findings;
}

Findings keptFindings(DirectRedis& server, const RedisFacts& info) {
    Findings findings;
    if (info.value("role") == "slave") {
        findings.push_back(
            {.severity = Severity::Error,
             .subject = QStringLiteral("role of Redis"),
             .found = QStringLiteral("it is a replica, which refuses what is written"),
             .advice = QStringLiteral("name the primary in the settings, or an address that leads "
                                      "to it")});
    }
    append(findings, redisMemoryFindings(info));
    const auto config = server.ask({"CONFIG", "GET", "save"});
    const auto sync = server.ask({"CONFIG", "GET", "appendfsync"});
    RedisFacts facts;
    if (config && sync) {
        facts = pairs(config->toList() + sync->toList());
    } else {
        findings.push_back(
            notAllowed(QStringLiteral("configuration of Redis"), QStringLiteral("CONFIG GET")));
    }
    append(findings, redisPersistenceFindings(info, facts));
    return findings;
}

} // namespace

RedisFacts redisInfo(const QByteArray& text) {
    RedisFacts facts;
    for (const auto& line : text.split('\n')) {
        if (const int colon = line.indexOf(':'); colon > 0) {
            facts.insert(line.left(colon), line.mid(colon + 1).trimmed());
        }
    }
    return facts;
}

Findings redisMemoryFindings(const RedisFacts& info) {
    const auto limit = info.value("maxmemory").toLongLong();
    const auto used = info.value("used_memory").toLongLong();
    const auto policy = QString::fromLatin1(info.value("maxmemory_policy"));
    Finding finding{.subject = QStringLiteral("memory of Redis"),
                    .found = QStringLiteral("maxmemory-policy %1, %2 bytes used, %3")
                                 .arg(policy)
                                 .arg(used)
                                 .arg(limit == 0 ? QStringLiteral("no limit")
                                                 : QStringLiteral("limit %1").arg(limit)),
                    .details = {{QStringLiteral("used_bytes"), used},
                                {QStringLiteral("limit_bytes"), limit},
                                {QStringLiteral("policy"), policy}}};
    // Of the policies that begin with "volatile" no key of the plug-in's is the victim: none
    // expires.
    if (policy.startsWith(QLatin1String("allkeys"))) {
        finding.severity = limit > 0 ? Severity::Warning : Severity::Note;
        finding.found += limit > 0
                             ? QStringLiteral(": states, queues and the registry may be dropped")
                             : QStringLiteral(": with a limit, keys would be dropped");
        finding.advice = QStringLiteral("maxmemory-policy noeviction");
    } else if (limit > 0 && used > limit / 10 * 9) {
        finding.severity = Severity::Warning;
        finding.found += QStringLiteral(": writes will soon be refused");
        finding.advice = QStringLiteral("raise maxmemory");
    }
    return {finding};
}

Findings redisPersistenceFindings(const RedisFacts& info, const RedisFacts& config) {
    Findings findings;
    const auto failed = [&](const char* fact, const char* what) {
        if (info.contains(fact) && info.value(fact) != "ok") {
            findings.push_back(
                {.severity = Severity::Error,
                 .subject = QStringLiteral("persistence of Redis"),
                 .found = QString::fromLatin1(what),
                 .advice = QStringLiteral("look into its log: a full disk, or a folder "
                                          "that it must not write to")});
        }
    };
    failed("rdb_last_bgsave_status", "the last save of its data failed");
    failed("aof_last_write_status", "the last write to its append-only file failed");
    failed("aof_last_bgrewrite_status", "the last rewriting of its append-only file failed");

    Finding finding{.subject = QStringLiteral("persistence of Redis")};
    const auto sync = QString::fromLatin1(config.value("appendfsync"));
    if (info.value("aof_enabled") == "1") {
        finding.found = sync.isEmpty() ? QStringLiteral("appendonly yes")
                                       : QStringLiteral("appendonly yes, appendfsync %1").arg(sync);
        if (sync == QLatin1String("no")) {
            finding.severity = Severity::Note;
            finding.found += QStringLiteral(": a power cut may take half a minute of writes");
            finding.advice = QStringLiteral("appendfsync everysec, or always");
        }
    } else if (config.contains("save") && config.value("save").isEmpty()) {
        finding.severity = Severity::Warning;
        finding.found =
            QStringLiteral("none: when it ends, all states, queues and the registry are "
                           "gone, but for the durable copies in MongoDB");
        finding.advice = QStringLiteral("appendonly yes");
    } else {
        finding.severity = Severity::Note;
        finding.found =
            QStringLiteral("appendonly no: when it is killed, what was written since its "
                           "last save is gone");
        finding.advice = QStringLiteral("appendonly yes, where that matters");
    }
    findings.push_back(finding);
    return findings;
}

Findings redisFindings(const QJsonObject& settings) {
    Findings findings;
    try {
        DirectRedis server(settings);
        const auto reached = reach(server);
        const auto answer = server.ask({"INFO"});
        const auto info = redisInfo(answer.value_or(QVariant()).toByteArray());
        findings.push_back(
            {.subject = area(),
             .found = QStringLiteral("%1 is there").arg(server.name()) +
                      (info.isEmpty() ? QString()
                                      : QStringLiteral(", Redis ") +
                                            QString::fromLatin1(info.value("redis_version")))});
        append(findings, reached);
        if (info.isEmpty()) {
            findings.push_back(notAllowed(QStringLiteral("memory and persistence of Redis"),
                                          QStringLiteral("INFO")));
        } else {
            append(findings, keptFindings(server, info));
        }
        append(findings, redisKeyFindings(server, redisRoles(redisSettings(settings))));
    } catch (const std::exception& error) {
        findings.push_back(
            {.severity = Severity::Error,
             .subject = area(),
             .found = QStringLiteral("%1 cannot be asked: %2")
                          .arg(redisName(settings), QString::fromUtf8(error.what())),
             .advice = QStringLiteral("see that it runs, that \"redis\" in the settings names it "
                                      "rightly, and what this user may do")});
    }
    return findings;
}

} // namespace host
