#include "host/transfer/export_folder.h"

#include "host/failure.h"
#include "host/file_writing.h"
#include "host/session/installation.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace host {

namespace {

const char* const formatName = "kelvrostorage-export";
constexpr int formatVersion = 1;

QString key(const char* name) {
    return QString::fromLatin1(name);
}

QString textOf(const QDateTime& time) {
    return time.toUTC().toString(Qt::ISODateWithMs);
}

QDateTime timeOf(const QJsonValue& text) {
    return QDateTime::fromString(text.toString(), Qt::ISODateWithMs);
}

QJsonObject toJson(const ExportedStore& store) {
    return {
        {key("server"), store.server},       {key("store"), store.name},
        {key("file"), store.file},           {key("records"), store.sum.lines},
        {key("bytes"), store.sum.bytes},     {key("sha256"), QString::fromLatin1(store.sum.sha256)},
        {key("begun"), textOf(store.begun)}, {key("finished"), textOf(store.finished)}};
}

ExportedStore storeOf(const QJsonObject& object) {
    return {.server = object.value(key("server")).toString(),
            .name = object.value(key("store")).toString(),
            .file = object.value(key("file")).toString(),
            .sum = {.lines = static_cast<qint64>(object.value(key("records")).toDouble()),
                    .bytes = static_cast<qint64>(object.value(key("bytes")).toDouble()),
                    .sha256 = object.value(key("sha256")).toString().toLatin1()},
            .begun = timeOf(object.value(key("begun"))),
            .finished = timeOf(object.value(key("finished")))};
}

QString manifestOf(const QString& path) {
    return path + QStringLiteral("/manifest.json");
}

void makeFolder(const QString& path) {
    if (!QDir().mkpath(path)) {
        throw Failure(QStringLiteral("cannot make the folder %1").arg(path));
    }
    QFile::setPermissions(path,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

} // namespace

ExportFolder::ExportFolder(QString path) : m_path(std::move(path)) {}

ExportFolder ExportFolder::begin(const QString& path, const QString& mongo, const QString& redis) {
    ExportFolder folder(path);
    if (QFile::exists(manifestOf(path))) {
        folder.read();
        if (folder.m_finished.isValid()) {
            throw Failure(QStringLiteral("the folder %1 has a finished export").arg(path));
        }
        if (folder.m_mongo != mongo || folder.m_redis != redis) {
            throw Failure(
                QStringLiteral("the folder %1 has part of an export from other servers: %2 and %3")
                    .arg(path, folder.m_mongo, folder.m_redis));
        }
        return folder;
    }
    if (!QDir(path).isEmpty()) {
        throw Failure(QStringLiteral("the folder %1 is not empty, and no export").arg(path));
    }
    for (const auto* part : {"", "/mongodb", "/redis"}) {
        makeFolder(path + QLatin1String(part));
    }
    folder.m_mongo = mongo;
    folder.m_redis = redis;
    folder.m_begun = QDateTime::currentDateTimeUtc();
    folder.write();
    return folder;
}

ExportFolder ExportFolder::open(const QString& path) {
    ExportFolder folder(path);
    folder.read();
    if (!folder.m_finished.isValid()) {
        throw Failure(QStringLiteral("the export in %1 did not come to its end: run `kelvro-host "
                                     "export %1` again first")
                          .arg(path));
    }
    return folder;
}

const ExportedStore* ExportFolder::find(const QString& server, const QString& name) const {
    const auto found = std::ranges::find_if(m_stores, [&](const ExportedStore& store) {
        return store.server == server && store.name == name;
    });
    return found == m_stores.end() ? nullptr : &*found;
}

ExportedStore ExportFolder::newStore(const QString& server, const QString& name) {
    // A collection may have any name.
    const auto fileName =
        QString::fromLatin1(QUrl::toPercentEncoding(name, QByteArrayLiteral("+")));
    return {.server = server,
            .name = name,
            .file = QStringLiteral("%1/%2.jsonl").arg(server, fileName),
            .sum = {},
            .begun = QDateTime::currentDateTimeUtc(),
            .finished = {}};
}

QString ExportFolder::path(const ExportedStore& store) const {
    return m_path + QLatin1Char('/') + store.file;
}

void ExportFolder::add(const ExportedStore& store) {
    m_stores.push_back(store);
    write();
}

void ExportFolder::finish() {
    m_finished = QDateTime::currentDateTimeUtc();
    write();
}

void ExportFolder::read() {
    QFile file(manifestOf(m_path));
    if (!file.open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("%1 has no export: cannot read %2: %3")
                          .arg(m_path, file.fileName(), file.errorString()));
    }
    const auto manifest = QJsonDocument::fromJson(file.readAll()).object();
    if (manifest.value(key("format")).toString() != QLatin1String(formatName)) {
        throw Failure(QStringLiteral("%1 is no manifest of an export").arg(file.fileName()));
    }
    if (manifest.value(key("version")).toInt() != formatVersion) {
        throw Failure(QStringLiteral("%1 is of a version that this program does not know")
                          .arg(file.fileName()));
    }
    m_mongo = manifest.value(key("mongodb")).toString();
    m_redis = manifest.value(key("redis")).toString();
    m_begun = timeOf(manifest.value(key("begun")));
    m_finished = timeOf(manifest.value(key("finished")));
    for (const auto& store : manifest.value(key("stores")).toArray()) {
        m_stores.push_back(storeOf(store.toObject()));
    }
}

void ExportFolder::write() const {
    QJsonArray stores;
    for (const auto& store : m_stores) {
        stores.append(toJson(store));
    }
    QJsonObject manifest{
        {key("format"), key(formatName)},
        {key("version"), formatVersion},
        {key("program"), QString(QStringLiteral("kelvro-host ") + programVersion())},
        {key("mongodb"), m_mongo},
        {key("redis"), m_redis},
        {key("begun"), textOf(m_begun)},
        {key("stores"), stores}};
    if (m_finished.isValid()) {
        manifest.insert(key("finished"), textOf(m_finished));
    }
    replaceFile(manifestOf(m_path), QJsonDocument(manifest).toJson());
}

} // namespace host
