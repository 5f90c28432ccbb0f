#include "host/doctor/settings_check.h"

#include "host/input/mongo_timeouts.h"
#include "host/input/mongo_url.h"
#include "host/input/settings.h"

#include <QFileInfo>
#include <QJsonValue>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <limits>

namespace host {

namespace {

struct Known {
    QString key;
    QJsonValue::Type type;
    /// Of a number.
    int least = 0;
    int most = 0;
    /// What stands if the key is not there, for people.
    // NOLINTBEGIN(readability-redundant-member-init): GCC warns where one without is left out.
    QString standing = {};
    // NOLINTEND(readability-redundant-member-init)
};

const std::vector<Known>& knownOnTop() {
    static const std::vector<Known> known{
        {.key = QStringLiteral("url"), .type = QJsonValue::String},
        {.key = QStringLiteral("redis"), .type = QJsonValue::Object},
    };
    return known;
}

const std::vector<Known>& knownOfRedis() {
    const auto text = [](const char* key, const char* standing) {
        return Known{.key = QString::fromLatin1(key),
                     .type = QJsonValue::String,
                     .standing = QString::fromLatin1(standing)};
    };
    const auto number = [](const char* key, int least, int most, const char* standing) {
        return Known{.key = QString::fromLatin1(key),
                     .type = QJsonValue::Double,
                     .least = least,
                     .most = most,
                     .standing = QString::fromLatin1(standing)};
    };
    constexpr int lastPort = 65'535;
    constexpr int lastDatabase = std::numeric_limits<int>::max();
    static const std::vector<Known> known{
        text("host", "127.0.0.1"),
        text("auth", "no password"),
        text("name", "no name"),
        number("port", 1, lastPort, "6379"),
        number("cleint_db", 0, lastDatabase, "2"),
        number("state_db", 0, lastDatabase, "0"),
        number("queue_db", 0, lastDatabase, "7"),
    };
    return known;
}

/// How many letters have to be put in, taken out, changed or swapped with their neighbour to make
/// one word of the other.
int distance(const QString& one, const QString& other) {
    QVector<QVector<int>> steps(one.size() + 1, QVector<int>(other.size() + 1));
    for (int i = 0; i <= one.size(); ++i) {
        for (int j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const bool same = one.at(i - 1) == other.at(j - 1);
            steps[i][j] = std::min(
                {steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && one.at(i - 1) == other.at(j - 2) &&
                one.at(i - 2) == other.at(j - 1)) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps.last().last();
}

/// The known key that was probably meant; empty if none is near.
QString nearest(const QString& key, const std::vector<Known>& known) {
    constexpr int near = 3;
    const auto word = key.toLower();
    const auto away = [&](const Known& each) { return distance(word, each.key); };
    const auto& best = *std::ranges::min_element(known, {}, away);
    return away(best) < std::min(near, word.size()) ? best.key : QString();
}

bool hasKey(const std::vector<Known>& known, const QString& key) {
    return std::ranges::find(known, key, &Known::key) != known.end();
}

QString quoted(const QString& key) {
    return QLatin1Char('"') + key + QLatin1Char('"');
}

QString subjectOf(const QString& place, const QString& key) {
    return place + quoted(key);
}

/// `elsewhere` is what the other object may have; `there` says where that is.
Finding unknownKey(const QString& place, const QString& key, const std::vector<Known>& known,
                   const std::vector<Known>& elsewhere, const QString& there) {
    Finding finding{.severity = Severity::Warning,
                    .subject = subjectOf(place, key),
                    .found = QStringLiteral("is not understood: the plug-in ignores it")};
    const auto meant = nearest(key, known);
    if (hasKey(elsewhere, key)) {
        finding.advice = QStringLiteral("it belongs %1").arg(there);
    } else if (meant == QLatin1String("cleint_db")) {
        finding.advice = QStringLiteral("write \"cleint_db\": the key is spelled so");
    } else if (!meant.isEmpty()) {
        finding.advice = QStringLiteral("write %1").arg(quoted(meant));
    } else {
        finding.advice = QStringLiteral("take it out");
    }
    return finding;
}

QString typeName(QJsonValue::Type type) {
    switch (type) {
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    default:
        return QStringLiteral("an object");
    }
}

/// What is wrong with the value; empty if nothing is.
QString faultOf(const QJsonValue& value, const Known& known) {
    if (value.type() != known.type) {
        return QStringLiteral("is not %1").arg(typeName(known.type));
    }
    if (known.type != QJsonValue::Double) {
        return {};
    }
    const double number = value.toDouble();
    if (number != std::trunc(number)) {
        return QStringLiteral("is not a whole number");
    }
    if (number < known.least || number > known.most) {
        return known.key == QLatin1String("port")
                   ? QStringLiteral("is no port: these are 1 to 65535")
                   : QStringLiteral("is no database: these are counted from 0");
    }
    return {};
}

void checkKeys(Findings& findings, const QJsonObject& object, const QString& place,
               const std::vector<Known>& known, const std::vector<Known>& elsewhere,
               const QString& there) {
    for (const auto& key : object.keys()) {
        if (!hasKey(known, key)) {
            findings.push_back(unknownKey(place, key, known, elsewhere, there));
        }
    }
    for (const auto& each : known) {
        const auto value = object.value(each.key);
        if (value.isUndefined()) {
            continue;
        }
        if (const auto fault = faultOf(value, each); !fault.isEmpty()) {
            const bool mistyped = !each.standing.isEmpty() && !fault.startsWith(u"is no ");
            findings.push_back(
                {.severity = Severity::Error,
                 .subject = subjectOf(place, each.key),
                 .found = mistyped
                              ? fault + QStringLiteral(": the plug-in takes %1").arg(each.standing)
                              : fault,
                 .advice = QStringLiteral("write %1 there").arg(typeName(each.type))});
        }
    }
}

/// The recommended time-outs that the connection string does not name, as they are added to it.
QString missingTimeouts(const QString& url) {
    auto added = withTimeouts(url).mid(url.size());
    while (added.startsWith(u'/') || added.startsWith(u'?') || added.startsWith(u'&')) {
        added.remove(0, 1);
    }
    return added;
}

/// The options of a connection string that are time-outs with another value than the recommended
/// one, with that one.
QStringList otherTimeouts(const QString& url) {
    QStringList others;
    const auto recommended =
        missingTimeouts(QStringLiteral("mongodb://localhost/")).split(QLatin1Char('&'));
    for (const auto& option : url.section(QLatin1Char('?'), 1).split(QLatin1Char('&'))) {
        for (const auto& wanted : recommended) {
            const auto name = wanted.section(QLatin1Char('='), 0, 0);
            if (option.startsWith(name + QLatin1Char('='), Qt::CaseInsensitive) &&
                option.compare(wanted, Qt::CaseInsensitive) != 0) {
                others.append(QStringLiteral("%1 (%2)").arg(option, wanted.section(u'=', 1)));
            }
        }
    }
    return others;
}

Findings timeoutFindings(const QString& url) {
    const auto subject = QStringLiteral("time-outs in \"url\"");
    Findings findings;
    if (const auto missing = missingTimeouts(url); !missing.isEmpty()) {
        findings.push_back({.severity = Severity::Note,
                            .subject = subject,
                            .found = QStringLiteral("not all of the recommended ones are set"),
                            .advice = QStringLiteral("add the options %1").arg(missing)});
    }
    if (const auto others = otherTimeouts(url); !others.isEmpty()) {
        findings.push_back({.severity = Severity::Note,
                            .subject = subject,
                            .found = QStringLiteral("others than recommended, which are in "
                                                    "parentheses: ") +
                                     others.join(QStringLiteral(", "))});
    }
    if (findings.empty()) {
        findings.push_back({.subject = subject, .found = QStringLiteral("as recommended")});
    }
    return findings;
}

Findings urlFindings(const QString& url) {
    const auto subject = QStringLiteral("\"url\"");
    if (url.isEmpty()) {
        return {{.severity = Severity::Error,
                 .subject = subject,
                 .found = QStringLiteral("is not there: nothing says where MongoDB is"),
                 .advice = QStringLiteral("add \"url\": \"mongodb://HOST:PORT/\"")}};
    }
    if (!url.startsWith(QLatin1String("mongodb://")) &&
        !url.startsWith(QLatin1String("mongodb+srv://"))) {
        return {{.severity = Severity::Error,
                 .subject = subject,
                 .found = QStringLiteral("does not begin with mongodb:// or mongodb+srv://"),
                 .advice = QStringLiteral("write \"url\": \"mongodb://HOST:PORT/\"")}};
    }
    if (const auto fault = mongoUrlFault(url); !fault.isEmpty()) {
        return {{.severity = Severity::Error,
                 .subject = subject,
                 .found = fault,
                 .advice = QStringLiteral("mend it: the MongoDB library would take the wrong part "
                                          "for a host's name, and show it")}};
    }
    return timeoutFindings(url);
}

Findings databaseFindings(const RedisSettings& redis) {
    const bool shared = redis.stateDb == redis.queueDb || redis.stateDb == redis.clientDb ||
                        redis.queueDb == redis.clientDb;
    const auto found = QStringLiteral("states in %1, queues in %2, client registry in %3")
                           .arg(redis.stateDb)
                           .arg(redis.queueDb)
                           .arg(redis.clientDb);
    return {{.severity = shared ? Severity::Note : Severity::Ok,
             .subject = QStringLiteral("Redis databases"),
             .found = shared ? found + QStringLiteral(": not one for each") : found}};
}

} // namespace

Findings settingsFindings(const QJsonObject& settings) {
    Findings findings;
    const auto redis = settings.value(QLatin1String("redis"));
    checkKeys(findings, settings, QString(), knownOnTop(), knownOfRedis(),
              QStringLiteral("into the object \"redis\""));
    checkKeys(findings, redis.toObject(), QStringLiteral("redis: "), knownOfRedis(), knownOnTop(),
              QStringLiteral("outside of the object \"redis\""));
    const bool understood = findings.empty();
    if (understood) {
        findings.push_back(
            {.subject = QStringLiteral("keys"), .found = QStringLiteral("all are understood")});
    }
    for (const auto& part : {urlFindings(settings.value(QLatin1String("url")).toString()),
                             databaseFindings(redisSettings(settings))}) {
        findings.insert(findings.end(), part.begin(), part.end());
    }
    return findings;
}

Findings settingsFileFindings(const QString& fileName, const QJsonObject& settings) {
    const auto subject = QStringLiteral("settings file");
    if (holdSecrets(settings) &&
        QFileInfo(fileName).permissions().testFlag(QFileDevice::ReadOther)) {
        return {{.severity = Severity::Warning,
                 .subject = subject,
                 .found = QStringLiteral("%1 has a password in it, and every user may read it")
                              .arg(fileName),
                 .advice = QStringLiteral("chmod 600 %1").arg(fileName)}};
    }
    return {{.subject = subject, .found = fileName}};
}

} // namespace host
