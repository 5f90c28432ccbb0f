#include "tests/support/mongo_server.h"

#include "tests/support/eventually.h"
#include "tests/support/extended_json.h"
#include "tests/support/mongo_database.h"
#include "tests/support/postgresql_server.h"

#include <bsoncxx/v1/document/value.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/exception.hpp>
#include <mongocxx/v1/insert_one_result.hpp>
#include <mongocxx/v1/uri.hpp>

#include <gtest/gtest.h>

#include <optional>

// A MongoDB server of a test's own is killed, one part after the other, and keeps what it has said
// to have stored.

namespace {

using test_support::eventually;

class OwnMongoServer : public testing::Test {
protected:
    OwnMongoServer() { test_support::needMongoInstance(); }

    mongocxx::v1::collection collectionOf(mongocxx::v1::client& client) const {
        return client.database("d").collection("c");
    }

    void insert(int id) {
        mongocxx::v1::client client{mongocxx::v1::uri{server.url()}};
        collectionOf(client).insert_one(documentOf(id));
    }

    /// Over a new connection; a server that is about to serve may still refuse.
    bool has(int id) const {
        return eventually([&] {
            try {
                mongocxx::v1::client client{mongocxx::v1::uri{server.url()}};
                return collectionOf(client).find_one(documentOf(id)).has_value();
            } catch (const mongocxx::v1::exception&) {
                return false;
            }
        });
    }

    static bsoncxx::v1::document::value documentOf(int id) {
        return test_support::fromJson(R"({"_id": )" + std::to_string(id) + "}");
    }

    test_support::PostgresqlServer storage{test_support::Durability::Complete};
    test_support::MongoServer server{storage};
};

TEST_F(OwnMongoServer, KeepsADocumentWhenEachOfItsPartsIsKilled) {
    insert(1);
    server.kill();
    server.start();
    EXPECT_TRUE(has(1));

    insert(2);
    storage.kill();
    storage.start();
    EXPECT_TRUE(has(2));

    insert(3);
    storage.kill();
    server.kill();
    server.start();
    storage.start();
    EXPECT_TRUE(has(3));
}

TEST_F(OwnMongoServer, KeepsItsPortAndItsDataWhenItIsStopped) {
    const auto url = server.url();
    insert(1);

    server.stop();
    storage.stop();
    storage.start();
    server.start();

    EXPECT_EQ(server.url(), url);
    EXPECT_TRUE(has(1));
}

} // namespace
