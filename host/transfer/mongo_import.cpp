#include "host/transfer/mongo_import.h"

#include "host/failure.h"
#include "host/transfer/document_line.h"

#include <bson/bson.h>
#include <mongocxx/v1/count_options.hpp>
#include <mongocxx/v1/cursor.hpp>

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>

#include <utility>

namespace host {

namespace {

constexpr std::size_t mostDocuments = 1'000;
constexpr std::size_t mostBytes = 8'000'000;
constexpr int duplicateKey = 11'000;

/// A BSON document in the making.
class Builder {
public:
    Builder() { bson_init(&m_bson); }
    ~Builder() { bson_destroy(&m_bson); }
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    bson_t* get() { return &m_bson; }
    DocumentView view() const { return DocumentView{bson_get_data(&m_bson), m_bson.len}; }

private:
    bson_t m_bson{};
};

/// A list of documents or ids in the making.
class ListBuilder {
public:
    ListBuilder() : m_builder(bson_array_builder_new()) {}
    ~ListBuilder() { bson_array_builder_destroy(m_builder); }
    ListBuilder(const ListBuilder&) = delete;
    ListBuilder& operator=(const ListBuilder&) = delete;

    bson_array_builder_t* get() { return m_builder; }

    /// Appends the list to `parent`, and is empty then.
    void appendTo(Builder& parent, const char* key) {
        Builder list;
        bson_destroy(list.get());
        if (!bson_array_builder_build(m_builder, list.get()) ||
            !bson_append_array(parent.get(), key, -1, list.get())) {
            throw Failure(QStringLiteral("the list of documents is too large"));
        }
    }

private:
    bson_array_builder_t* m_builder;
};

/// The library's view of a document, which has to live longer. Cannot be copied: a bson_t refers to
/// itself.
class Borrowed {
public:
    explicit Borrowed(const DocumentView& document) {
        if (!bson_init_static(&m_bson, document.data(), document.size())) {
            throw Failure(QStringLiteral("not a BSON document"));
        }
    }
    ~Borrowed() = default;
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    const bson_t* get() const { return &m_bson; }

private:
    bson_t m_bson{};
};

/// The "_id" of a document, which has to live longer.
bson_iter_t idOf(const Borrowed& document) {
    bson_iter_t id;
    if (!bson_iter_init_find(&id, document.get(), "_id")) {
        throw Failure(QStringLiteral("the document has no _id"));
    }
    return id;
}

/// {"_id": …}, as it is in the document.
void appendId(Builder& query, const DocumentView& document) {
    const Borrowed whole(document);
    const auto id = idOf(whole);
    bson_append_iter(query.get(), "_id", -1, &id);
}

/// What tells ids apart byte by byte.
QByteArray idBytes(const DocumentView& document) {
    Builder id;
    appendId(id, document);
    return QByteArray(reinterpret_cast<const char*>(id.view().data()),
                      static_cast<int>(id.view().size()));
}

void appendDocument(ListBuilder& list, const DocumentView& document) {
    const Borrowed whole(document);
    bson_array_builder_append_document(list.get(), whole.get());
}

/// {"q": {"_id": …}, "u": the document}
void appendReplacement(ListBuilder& updates, const DocumentView& document) {
    Builder query;
    appendId(query, document);
    const Borrowed whole(document);
    Builder update;
    bson_append_document(update.get(), "q", -1, query.get());
    bson_append_document(update.get(), "u", -1, whole.get());
    appendDocument(updates, update.view());
}

/// The command `verb` for the collection, up to its list of documents.
void beginWrite(Builder& command, const char* verb, const QString& collection,
                const DocumentView& writeConcern) {
    const auto name = collection.toUtf8();
    bson_append_utf8(command.get(), verb, -1, name.constData(), name.size());
    bson_append_bool(command.get(), "ordered", -1, false);
    if (!writeConcern.empty()) {
        const Borrowed concern(writeConcern);
        bson_append_document(command.get(), "writeConcern", -1, concern.get());
    }
}

} // namespace

MongoImport::MongoImport(DirectMongo& server, QString collection, Existing existing)
    : m_server(server), m_collection(std::move(collection)), m_existing(existing),
      m_stayingBefore(staying()) {}

qint64 MongoImport::records() {
    return m_server.collection(m_collection).count_documents(documentFromJson("{}"));
}

qint64 MongoImport::staying() {
    return m_server.collection(m_collection)
        .count_documents(documentFromJson(
            QStringLiteral(R"({"ttl": {"$not": {"$lt": {"$date": {"$numberLong": "%1"}}}}})")
                .arg(m_horizon.toMSecsSinceEpoch())
                .toUtf8()));
}

bool MongoImport::stays(const DocumentView& document) const {
    const Borrowed whole(document);
    bson_iter_t ttl;
    return !bson_iter_init_find(&ttl, whole.get(), "ttl") || !BSON_ITER_HOLDS_DATE_TIME(&ttl) ||
           bson_iter_date_time(&ttl) >= m_horizon.toMSecsSinceEpoch();
}

qint64 MongoImport::missing() {
    return m_stayingBefore + m_stayingAdded - staying();
}

void MongoImport::add(const QByteArray& line, qint64 lineNumber) {
    auto document = documentOfLine(line);
    const auto size = document.size();
    if (m_waiting.size() == mostDocuments ||
        (!m_waiting.empty() && m_waitingBytes + size > mostBytes)) {
        flush();
    }
    m_waitingBytes += size;
    m_waiting.push_back({.document = std::move(document), .lineNumber = lineNumber});
}

void MongoImport::flush() {
    if (m_waiting.empty()) {
        return;
    }
    lookForThem();
    insertNew();
    if (m_existing == Existing::Replace) {
        replaceOthers();
    }
    auto& other =
        m_existing == Existing::Keep ? mutableCounts().different : mutableCounts().replaced;
    for (const auto& each : m_waiting) {
        if (each.there) {
            ++(each.same ? mutableCounts().same : other);
        }
    }
    m_waiting.clear();
    m_waitingBytes = 0;
}

void MongoImport::lookForThem() {
    QHash<QByteArray, Waiting*> byId;
    ListBuilder ids;
    for (auto& each : m_waiting) {
        const Borrowed whole(each.document.view());
        const auto id = idOf(whole);
        bson_array_builder_append_iter(ids.get(), &id);
        byId.insert(idBytes(each.document.view()), &each);
    }
    Builder operators;
    ids.appendTo(operators, "$in");
    Builder filter;
    bson_append_document(filter.get(), "_id", -1, operators.get());

    auto cursor = m_server.collection(m_collection).find(filter.view());
    for (const auto& stored : cursor) {
        auto* const each = byId.value(idBytes(stored));
        if (each == nullptr) {
            continue; // a number of another type, which the insertion will find
        }
        each->there = true;
        each->same = stored == each->document.view();
        if (!each->same && m_existing == Existing::Replace) {
            m_stayingAdded += (stays(each->document.view()) ? 1 : 0) - (stays(stored) ? 1 : 0);
        }
    }
}

void MongoImport::insertNew() {
    std::vector<Waiting*> documents;
    for (auto& each : m_waiting) {
        if (!each.there) {
            documents.push_back(&each);
        }
    }
    if (documents.empty()) {
        return;
    }
    Builder command;
    beginWrite(command, "insert", m_collection, m_server.writeConcern().view());
    ListBuilder list;
    for (const auto* each : documents) {
        appendDocument(list, each->document.view());
    }
    list.appendTo(command, "documents");
    write(command.view(), documents);
    for (const auto* each : documents) {
        if (!each->there) {
            ++mutableCounts().added;
            m_stayingAdded += stays(each->document.view()) ? 1 : 0;
        }
    }
}

void MongoImport::replaceOthers() {
    std::vector<Waiting*> documents;
    for (auto& each : m_waiting) {
        if (each.there && !each.same) {
            documents.push_back(&each);
        }
    }
    if (documents.empty()) {
        return;
    }
    Builder command;
    beginWrite(command, "update", m_collection, m_server.writeConcern().view());
    ListBuilder updates;
    for (const auto* each : documents) {
        appendReplacement(updates, each->document.view());
    }
    updates.appendTo(command, "updates");
    write(command.view(), documents);
}

void MongoImport::write(const DocumentView& command, const std::vector<Waiting*>& documents) {
    const auto answer = plainObject(m_server.ask(command).view());
    for (const auto& error : answer.value(QLatin1String("writeErrors")).toArray()) {
        const auto refused = error.toObject();
        auto& each =
            *documents.at(static_cast<std::size_t>(refused.value(QLatin1String("index")).toInt()));
        if (refused.value(QLatin1String("code")).toInt() != duplicateKey) {
            throw Failure(QStringLiteral("line %1 was refused: %2")
                              .arg(each.lineNumber)
                              .arg(refused.value(QLatin1String("errmsg")).toString()));
        }
        each.there = true;
    }
    if (const auto concern = answer.value(QLatin1String("writeConcernError")); concern.isObject()) {
        throw Failure(QStringLiteral("not enough servers have written it: %1")
                          .arg(concern.toObject().value(QLatin1String("errmsg")).toString()));
    }
}

} // namespace host
