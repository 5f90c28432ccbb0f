#include "tests/support/mongo_database.h"

#include "tests/support/qt_literals.h"

#include <bson/bson.h>
#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/find_options.hpp>
#include <mongocxx/v1/indexes.hpp>
#include <mongocxx/v1/insert_many_result.hpp>
#include <mongocxx/v1/insert_one_result.hpp>
#include <mongocxx/v1/instance.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace test_support {

using namespace literals;

namespace {

// Splits mongodb://hosts/database?options after the hosts; the slash may be missing.
std::size_t endOfHosts(const std::string& url) {
    const std::size_t hosts = url.find("://") + 3;
    return std::min(url.find_first_of("/?", hosts), url.size());
}

std::int64_t wholeNumber(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case bsoncxx::v1::types::id::k_int32:
        return element.get_int32().value;
    case bsoncxx::v1::types::id::k_int64:
        return element.get_int64().value;
    default:
        throw std::runtime_error("the server's number is not a whole one");
    }
}

// PostgreSQL's plan says "Index Name", MongoDB's "indexName"; plans that were only thought about
// are listed beside the chosen one.
void collectIndexNames(const QJsonValue& plan, std::set<std::string>& names) {
    for (const QJsonValue& element : plan.toArray()) {
        collectIndexNames(element, names);
    }
    const QJsonObject object = plan.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (member.key() == "IndexCosts"_q || member.key() == "rejectedPlans"_q) {
            continue;
        }
        if (member.key() == "Index Name"_q || member.key() == "indexName"_q) {
            names.insert(member.value().toString().toStdString());
        }
        collectIndexNames(member.value(), names);
    }
}

listed_index listed(const bsoncxx::v1::document::view& index) {
    listed_index result;
    bson_t whole;
    bson_t rest = BSON_INITIALIZER;
    bson_init_static(&whole, index.data(), index.size());
    // "v", "ns" and "storageEngine" tell about the server, not about what was asked for.
    bson_copy_to_excluding_noinit(&whole, &rest, "v", "ns", "storageEngine", "key", "name",
                                  "expireAfterSeconds", nullptr);
    result.otherOptions = toJson(bsoncxx::v1::document::view{bson_get_data(&rest), rest.len});
    bson_destroy(&rest);
    result.name = static_cast<std::string>(index["name"].get_string().value);
    result.key = toJson(index["key"].get_document().value);
    if (const auto expiry = index["expireAfterSeconds"]) {
        result.expireAfterSeconds = wholeNumber(expiry);
    }
    return result;
}

} // namespace

void needMongoInstance() {
    static const mongocxx::v1::instance instance;
}

std::string mongoUrl() {
    const char* url = std::getenv("MONGODB_URL");
    if (url == nullptr || *url == '\0') {
        throw std::runtime_error("MONGODB_URL names no server; run the tests with ./dev test");
    }
    needMongoInstance();
    return url;
}

std::string mongoUrlWith(std::string_view option) {
    std::string url = mongoUrl();
    if (url.find('?') != std::string::npos) {
        url += '&';
    } else {
        url += endOfHosts(url) == url.size() ? "/?" : "?";
    }
    return url.append(option);
}

std::string mongoUrlOfDatabase(std::string_view database) {
    const std::string url = mongoUrl();
    const std::size_t hosts = endOfHosts(url);
    const std::size_t options = std::min(url.find('?'), url.size());
    return url.substr(0, hosts) + "/" + std::string{database} + url.substr(options);
}

std::string unreachableMongoUrl() {
    needMongoInstance();
    // Port 1 of the own machine refuses at once.
    return "mongodb://127.0.0.1:1/?serverSelectionTimeoutMS=200&connectTimeoutMS=200";
}

std::string uniqueDatabaseName() {
    std::random_device random;
    std::ostringstream name;
    name << "kelvro_test_" << getpid() << '_' << std::hex << random();
    return name.str();
}

mongo_database::mongo_database(std::string name)
    : m_name(std::move(name)), m_client(mongocxx::v1::uri{mongoUrl()}) {}

std::string mongo_database::run(std::string_view command) {
    return toJson(handle().run_command(fromJson(command)));
}

std::set<std::string> mongo_database::indexesUsedBy(std::string_view findCommand) {
    const std::string plan = run("{\"explain\": " + std::string{findCommand} + "}");
    std::set<std::string> names;
    collectIndexNames(QJsonDocument::fromJson(QByteArray::fromStdString(plan)).object(), names);
    return names;
}

void mongo_database::insert(std::string_view collection, std::string_view document) {
    insert(collection, fromJson(document).view());
}

void mongo_database::insert(std::string_view collection,
                            const bsoncxx::v1::document::view& document) {
    handle().collection(collection).insert_one(document);
}

void mongo_database::insertMany(std::string_view collection,
                                const std::vector<bsoncxx::v1::document::value>& documents) {
    handle().collection(collection).insert_many(documents);
}

std::vector<std::string> mongo_database::documents(std::string_view collection,
                                                   std::string_view filter) {
    mongocxx::v1::find_options options;
    options.sort(fromJson(R"({"_id": 1})"));
    std::vector<std::string> documents;
    auto cursor = handle().collection(collection).find(fromJson(filter), options);
    for (const auto& document : cursor) {
        documents.push_back(toJson(document));
    }
    return documents;
}

bsoncxx::v1::document::value mongo_database::document(std::string_view collection,
                                                      std::string_view filter) {
    std::vector<bsoncxx::v1::document::value> documents;
    auto cursor = handle().collection(collection).find(fromJson(filter));
    for (const auto& document : cursor) {
        documents.emplace_back(document);
    }
    if (documents.size() != 1) {
        throw std::runtime_error(std::to_string(documents.size()) + " documents of " +
                                 std::string{collection} + " match " + std::string{filter});
    }
    return documents.front();
}

std::int64_t mongo_database::count(std::string_view collection, std::string_view filter) {
    return handle().collection(collection).count_documents(fromJson(filter));
}

std::vector<listed_index> mongo_database::indexes(std::string_view collection) {
    std::vector<listed_index> indexes;
    if (handle().has_collection(collection)) {
        auto cursor = handle().collection(collection).indexes().list();
        for (const auto& index : cursor) {
            indexes.push_back(listed(index));
        }
    }
    return indexes;
}

std::vector<std::string> mongo_database::indexKeys(std::string_view collection) {
    std::vector<std::string> keys;
    for (const listed_index& index : indexes(collection)) {
        keys.push_back(index.key);
    }
    return keys;
}

std::vector<std::string> mongo_database::collections() {
    auto names = handle().list_collection_names();
    std::ranges::sort(names);
    return names;
}

UniqueMongoDatabase::UniqueMongoDatabase() : database(uniqueDatabaseName()) {}

UniqueMongoDatabase::~UniqueMongoDatabase() {
    database.drop();
}

FixedMongoDatabase::FixedMongoDatabase() : database("kelvrostorage") {
    if (database.collections().empty()) {
        return;
    }
    const char* allowed = std::getenv("KELVRO_ALLOW_DROP");
    if (allowed == nullptr || std::string_view{allowed} != "1") {
        throw std::runtime_error(
            "the server of MONGODB_URL has a database \"kelvrostorage\" with collections in it, "
            "which this test would drop; KELVRO_ALLOW_DROP=1 allows that");
    }
    database.drop();
}

FixedMongoDatabase::~FixedMongoDatabase() {
    database.drop();
}

} // namespace test_support
