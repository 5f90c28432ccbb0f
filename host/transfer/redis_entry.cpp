#include "host/transfer/redis_entry.h"

#include "host/failure.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>
#include <QMap>
#include <QVariantList>

#include <algorithm>
#include <set>
#include <tuple>

namespace host {

namespace {

/// Where an entry that takes several commands is put together.
const char* const workshop = "kelvro-host:import";

QJsonValue jsonOf(const QByteArray& bytes, bool asText) {
    const auto text = QString::fromUtf8(bytes);
    if (asText && text.toUtf8() == bytes) {
        return text;
    }
    return QJsonObject{{QStringLiteral("base64"), QString::fromLatin1(bytes.toBase64())}};
}

QByteArray bytesOf(const QJsonValue& json, const char* what) {
    if (json.isString()) {
        return json.toString().toUtf8();
    }
    const auto base64 = json.toObject().value(QLatin1String("base64"));
    const auto decoded = QByteArray::fromBase64Encoding(base64.toString().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!base64.isString() || !decoded) {
        throw Failure(
            QStringLiteral("the %1 is neither a text nor base64").arg(QLatin1String(what)));
    }
    return decoded.decoded;
}

bool isOneValue(const QByteArray& type) {
    return type == "string" || type == "dump";
}

QByteArray lineOf(const RedisEntry& entry, bool asText) {
    QJsonObject object{{QStringLiteral("key"), jsonOf(entry.key, asText)},
                       {QStringLiteral("type"), QString::fromLatin1(entry.type)}};
    if (isOneValue(entry.type)) {
        object.insert(QStringLiteral("value"), jsonOf(entry.parts.value(0), asText));
    } else {
        QJsonArray parts;
        for (const auto& part : entry.parts) {
            parts.append(jsonOf(part, asText));
        }
        object.insert(QStringLiteral("value"), parts);
    }
    if (entry.expiresMsecs >= 0) {
        object.insert(QStringLiteral("expires_ms"), entry.expiresMsecs);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

bool readsBack(const QByteArray& line, const RedisEntry& entry) {
    try {
        return entryOfLine(line) == entry;
    } catch (const Failure&) {
        return false;
    }
}

QList<QByteArray> listOf(const QVariant& answer) {
    QList<QByteArray> parts;
    for (const auto& part : answer.toList()) {
        parts.append(part.toByteArray());
    }
    return parts;
}

/// The parts, in an order of their own where Redis has none.
QList<QByteArray> comparable(const RedisEntry& entry) {
    auto parts = entry.parts;
    if (entry.type == "set") {
        const std::set<QByteArray> members(parts.begin(), parts.end());
        parts = {members.begin(), members.end()};
    } else if (entry.type == "hash") {
        QMap<QByteArray, QByteArray> fields;
        for (int i = 0; i + 1 < parts.size(); i += 2) {
            fields.insert(parts.at(i), parts.at(i + 1));
        }
        parts = fields.keys() + fields.values();
    }
    return parts;
}

/// Of a key that is no string.
void readParts(DirectRedis& server, int db, RedisEntry& entry) {
    if (entry.type == "set") {
        entry.parts = listOf(server.run({"SMEMBERS", entry.key}, db));
    } else if (entry.type == "hash") {
        entry.parts = listOf(server.run({"HGETALL", entry.key}, db));
    } else if (entry.type == "list") {
        entry.parts = listOf(server.run({"LRANGE", entry.key, "0", "-1"}, db));
    } else if (entry.type == "zset") {
        entry.parts = listOf(server.run({"ZRANGE", entry.key, "0", "-1", "WITHSCORES"}, db));
    } else {
        entry.type = "dump";
        entry.parts = {server.run({"DUMP", entry.key}, db).toByteArray()};
    }
}

qint64 readExpiry(DirectRedis& server, int db, const QByteArray& key) {
    if (const auto instant = server.ask({"PEXPIRETIME", key}, db)) {
        return std::max<qint64>(instant->toLongLong(), -1);
    }
    // A Redis before 7 tells only what is left.
    const auto left = server.run({"PTTL", key}, db).toLongLong();
    return left < 0 ? -1 : QDateTime::currentMSecsSinceEpoch() + left;
}

/// The command with some of the parts at a time, for the server takes no more than a million.
void writeParts(DirectRedis& server, int db, const QByteArray& command,
                const QList<QByteArray>& parts) {
    constexpr int atOnce = 10'000;
    for (int i = 0; i < parts.size(); i += atOnce) {
        server.run(QList<QByteArray>{command, workshop} + parts.mid(i, atOnce), db);
    }
}

/// Redis wants the score before its member.
QList<QByteArray> scoresFirst(QList<QByteArray> parts) {
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        parts.swapItemsAt(i, i + 1);
    }
    return parts;
}

} // namespace

bool operator==(const RedisEntry& one, const RedisEntry& other) {
    return std::tie(one.key, one.type, one.expiresMsecs) ==
               std::tie(other.key, other.type, other.expiresMsecs) &&
           (one.parts == other.parts || comparable(one) == comparable(other));
}

QByteArray entryLine(const RedisEntry& entry) {
    const auto line = lineOf(entry, true);
    return readsBack(line, entry) ? line : lineOf(entry, false);
}

bool hasBase64(const QByteArray& line) {
    return line.contains(R"({"base64":")");
}

RedisEntry entryOfLine(const QByteArray& line) {
    QJsonParseError error{};
    const auto object = QJsonDocument::fromJson(line, &error).object();
    if (error.error != QJsonParseError::NoError || object.isEmpty()) {
        throw Failure(QStringLiteral("not a JSON object: %1").arg(error.errorString()));
    }
    RedisEntry entry{.key = bytesOf(object.value(QLatin1String("key")), "key"),
                     .type = object.value(QLatin1String("type")).toString().toLatin1()};
    static const QList<QByteArray> types{"string", "set", "hash", "list", "zset", "dump"};
    if (!types.contains(entry.type)) {
        throw Failure(QStringLiteral("the type is none that is known here"));
    }
    const auto value = object.value(QLatin1String("value"));
    if (isOneValue(entry.type)) {
        entry.parts = {bytesOf(value, "value")};
    } else if (value.isArray()) {
        for (const auto& part : value.toArray()) {
            entry.parts.append(bytesOf(part, "value"));
        }
    } else {
        throw Failure(QStringLiteral("the value is not a list"));
    }
    if (const auto expires = object.value(QLatin1String("expires_ms")); expires.isDouble()) {
        entry.expiresMsecs = static_cast<qint64>(expires.toDouble());
    }
    return entry;
}

std::optional<RedisEntry> readEntry(DirectRedis& server, int db, const QByteArray& key) {
    RedisEntry entry{.key = key};
    // Nearly all keys are strings: their type need not be asked for.
    if (const auto value = server.ask({"GET", key}, db)) {
        if (!value->isValid()) {
            return {};
        }
        entry.type = "string";
        entry.parts = {value->toByteArray()};
    } else {
        entry.type = server.run({"TYPE", key}, db).toByteArray();
        if (entry.type == "none") {
            return {};
        }
        readParts(server, db, entry);
    }
    entry.expiresMsecs = readExpiry(server, db, key);
    return entry;
}

void writeEntry(DirectRedis& server, int db, const RedisEntry& entry) {
    if (entry.type == "string" && entry.expiresMsecs < 0) {
        server.run({"SET", entry.key, entry.parts.value(0)}, db);
        return;
    }
    server.run({"DEL", workshop}, db);
    if (entry.type == "string") {
        server.run({"SET", workshop, entry.parts.value(0)}, db);
    } else if (entry.type == "dump") {
        server.run({"RESTORE", workshop, "0", entry.parts.value(0)}, db);
    } else if (entry.type == "set") {
        writeParts(server, db, "SADD", entry.parts);
    } else if (entry.type == "hash") {
        writeParts(server, db, "HSET", entry.parts);
    } else if (entry.type == "list") {
        writeParts(server, db, "RPUSH", entry.parts);
    } else {
        writeParts(server, db, "ZADD", scoresFirst(entry.parts));
    }
    if (entry.expiresMsecs >= 0) {
        server.run({"PEXPIREAT", workshop, QByteArray::number(entry.expiresMsecs)}, db);
    }
    server.run({"RENAME", workshop, entry.key}, db);
}

} // namespace host
