#pragma once

#include "tests/support/extended_json.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/database.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

/// Creates the MongoDB driver's process-wide instance, as a host does, unless there is one.
void needMongoInstance();

/// The MongoDB server of the environment variable MONGODB_URL. Throws std::runtime_error without
/// one: a missing server is a failure, never a skip. Creates the MongoDB driver's process-wide
/// instance.
std::string mongoUrl();

/// The same server with one more connection option ("appname=test").
std::string mongoUrlWith(std::string_view option);

/// The same server with the connection string naming this database.
std::string mongoUrlOfDatabase(std::string_view database);

/// A server that is not there: its port is closed.
std::string unreachableMongoUrl();

/// A name that no other test takes.
std::string uniqueDatabaseName();

/// An index as the server lists it, in extended JSON.
struct listed_index {
    std::string name;
    std::string key;
    std::optional<std::int64_t> expireAfterSeconds;
    /// What it lists beyond these three and the server's own affairs: nothing as a rule.
    std::string otherOptions;
};

/// One database seen with a client and requests of the test's own, past the code under test.
///
/// Owns its client. Every operation blocks; the MongoDB driver's exceptions pass through.
class mongo_database {
public:
    explicit mongo_database(std::string name);

    const std::string& name() const { return m_name; }
    mongocxx::v1::database handle() { return m_client.database(m_name); }

    /// Runs a command and gives the whole answer.
    std::string run(std::string_view command);

    /// Names of the indexes by which the server finds what a "find" command asks for; empty if it
    /// reads the whole collection.
    std::set<std::string> indexesUsedBy(std::string_view findCommand);

    void insert(std::string_view collection, std::string_view document);
    void insert(std::string_view collection, const bsoncxx::v1::document::view& document);
    void insertMany(std::string_view collection,
                    const std::vector<bsoncxx::v1::document::value>& documents);

    /// Canonical extended JSON, in the order of "_id".
    std::vector<std::string> documents(std::string_view collection, std::string_view filter = "{}");

    /// The one document of the collection that matches; throws std::runtime_error if there is not
    /// just one.
    bsoncxx::v1::document::value document(std::string_view collection,
                                          std::string_view filter = "{}");

    std::int64_t count(std::string_view collection, std::string_view filter = "{}");

    /// In the order in which they were created; empty without such a collection.
    std::vector<listed_index> indexes(std::string_view collection);
    std::vector<std::string> indexKeys(std::string_view collection);

    /// Names, sorted.
    std::vector<std::string> collections();

    void drop() { handle().drop(); }

private:
    std::string m_name;
    mongocxx::v1::client m_client;
};

/// A database under a name that no other test takes, dropped at the end whatever happens.
class temporary_database : public mongo_database {
public:
    temporary_database() : mongo_database(uniqueDatabaseName()) {}
    ~temporary_database() { drop(); }

    temporary_database(const temporary_database&) = delete;
    temporary_database& operator=(const temporary_database&) = delete;
};

/// A database of the test's own, dropped at its end. Such tests need LOCKS common-mongodb: see
/// tests/CMakeLists.txt.
class UniqueMongoDatabase : public testing::Test {
protected:
    UniqueMongoDatabase();
    ~UniqueMongoDatabase() override;

    mongo_database database;
};

/// The driver's fixed database "kelvrostorage", empty at the start of a test and dropped at its
/// end.
///
/// Such tests need LOCKS common-mongodb too. A database with collections in it is dropped only if
/// KELVRO_ALLOW_DROP says that the server is ours; otherwise it may hold somebody's data, is left
/// alone, and the test fails.
class FixedMongoDatabase : public testing::Test {
protected:
    FixedMongoDatabase();
    ~FixedMongoDatabase() override;

    mongo_database database;
};

} // namespace test_support
