#include "mongo/db_driver_mongo.h"

#include "tests/mongo/records.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"

#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::string_view uplinks = "ul_messages";
constexpr std::string_view downlinks = "dl_messages";

class MessageDatabase : public FixedMongoDatabase {
protected:
    /// Everything that a second layout could change.
    std::vector<std::string> layout() {
        std::vector<std::string> lines;
        for (const std::string& name : database.collections()) {
            for (const listed_index& index : database.indexes(name)) {
                lines.push_back(name + ' ' + index.name + ' ' + index.key + ' ' +
                                std::to_string(index.expireAfterSeconds.value_or(-1)) + ' ' +
                                index.otherOptions);
            }
        }
        return lines;
    }

    std::vector<std::string> keysOf(std::string_view collection) {
        std::vector<std::string> keys;
        for (const listed_index& index : database.indexes(collection)) {
            keys.push_back(index.key);
        }
        return keys;
    }

    log_capture log;
    mongo::DbDriverMongo driver{mongoUrl()};
};

TEST_F(MessageDatabase, CreatesTheTwoCollectionsAndNoOther) {
    driver.CreateDatabase();

    EXPECT_THAT(database.collections(), ElementsAre(downlinks, uplinks));
    EXPECT_EQ(database.count(uplinks) + database.count(downlinks), 0);
}

TEST_F(MessageDatabase, CreatesTheSixIndexesOfUplinksInOrder) {
    driver.CreateDatabase();

    EXPECT_THAT(keysOf(uplinks),
                ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"timestamp": -1})"),
                            canonical(R"({"modem_id": 1, "timestamp": -1})"),
                            canonical(R"({"modem_id": 1, "time_detected": -1})"),
                            canonical(R"({"modem_id": 1, "tag": 1, "timestamp": -1})"),
                            canonical(R"({"modem_id": "hashed"})"), canonical(R"({"ttl": 1})")));
}

TEST_F(MessageDatabase, CreatesTheFiveIndexesOfDownlinksInOrder) {
    driver.CreateDatabase();

    EXPECT_THAT(keysOf(downlinks),
                ElementsAre(canonical(R"({"_id": 1})"),
                            canonical(R"({"modem_id": 1, "timestamp": -1})"),
                            canonical(R"({"modem_id": 1, "status": 1})"),
                            canonical(R"({"modem_id": 1, "timestamp": -1, "status": 1})"),
                            canonical(R"({"modem_id": "hashed"})"), canonical(R"({"ttl": 1})")));
}

TEST_F(MessageDatabase, LetsDocumentsExpireSixtySecondsAfterTheirTtlAndByNoOtherIndex) {
    driver.CreateDatabase();

    for (const auto collection : {uplinks, downlinks}) {
        for (const listed_index& index : database.indexes(collection)) {
            EXPECT_EQ(index.expireAfterSeconds.value_or(-1), index.name == "ttl_1" ? 60 : -1)
                << collection << ' ' << index.name;
        }
    }
}

TEST_F(MessageDatabase, GivesItsIndexesNoNamesAndNoOtherOptions) {
    driver.CreateDatabase();

    std::vector<std::string> names;
    for (const auto collection : {uplinks, downlinks}) {
        for (const listed_index& index : database.indexes(collection)) {
            names.push_back(index.name);
            EXPECT_EQ(index.otherOptions, canonical("{}")) << collection << ' ' << index.name;
        }
    }
    EXPECT_THAT(names, ElementsAre("_id_", "timestamp_-1", "modem_id_1_timestamp_-1",
                                   "modem_id_1_time_detected_-1", "modem_id_1_tag_1_timestamp_-1",
                                   "modem_id_hashed", "ttl_1", "_id_", "modem_id_1_timestamp_-1",
                                   "modem_id_1_status_1", "modem_id_1_timestamp_-1_status_1",
                                   "modem_id_hashed", "ttl_1"));
}

TEST_F(MessageDatabase, ASecondLayoutChangesNothing) {
    driver.CreateDatabase();
    driver.UlMessageRepository()->SaveMessage(uplink{});
    const auto before = layout();
    driver.CreateDatabase();
    mongo::DbDriverMongo{mongoUrl()}.CreateDatabase();

    EXPECT_EQ(layout(), before);
    EXPECT_EQ(database.count(uplinks), 1);
}

// Deliberate: "ul_messages" alone stands for a prepared store.
TEST_F(MessageDatabase, UplinksWithoutDownlinksGetNoLayoutAtAll) {
    database.run(R"({"create": "ul_messages"})");
    driver.CreateDatabase();

    EXPECT_THAT(database.collections(), ElementsAre(uplinks));
    EXPECT_THAT(keysOf(uplinks), ElementsAre(canonical(R"({"_id": 1})")));
}

TEST_F(MessageDatabase, DownlinksWithoutUplinksGetTheWholeLayout) {
    database.insert(downlinks, R"({"_id": 5})");
    driver.CreateDatabase();

    EXPECT_EQ(keysOf(uplinks).size(), 7u);
    EXPECT_EQ(keysOf(downlinks).size(), 6u);
    EXPECT_THAT(database.documents(downlinks), ElementsAre(canonical(R"({"_id": 5})")));
}

TEST_F(MessageDatabase, ASaveAheadOfTheLayoutLeavesTheStoreWithoutIndexes) {
    driver.UlMessageRepository()->SaveMessage(uplink{});
    driver.CreateDatabase();

    EXPECT_THAT(database.collections(), ElementsAre(uplinks));
    EXPECT_THAT(keysOf(uplinks), ElementsAre(canonical(R"({"_id": 1})")));
}

TEST_F(MessageDatabase, AnIndexThatIsRefusedEndsTheLayout) {
    database.run(R"({"createIndexes": "dl_messages", "indexes": [
        {"key": {"ttl": 1}, "name": "ttl_1", "expireAfterSeconds": 5}]})");

    EXPECT_THROW(driver.CreateDatabase(), mongocxx::v1::exception);
    EXPECT_EQ(keysOf(uplinks).size(), 7u);
    EXPECT_EQ(keysOf(downlinks).size(), 6u);
    for (const listed_index& index : database.indexes(downlinks)) {
        EXPECT_EQ(index.expireAfterSeconds.value_or(-1), index.name == "ttl_1" ? 5 : -1);
    }
}

TEST_F(MessageDatabase, LogsNothingAboutItsLayout) {
    driver.CreateDatabase();

    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(MessageDatabase, UplinksAndDownlinksGoToTheirOwnCollections) {
    model::dl_message command = downlink{};
    driver.UlMessageRepository()->SaveMessage(uplink{.id = 0xabc});
    driver.DlMessageRepository()->SaveMessage(command);

    EXPECT_EQ(database.count(uplinks, R"({"_id": "abc"})"), 1);
    EXPECT_EQ(
        database.count(downlinks, R"({"_id": {"$oid": ")" + command.db_id.toStdString() + R"("}})"),
        1);
    EXPECT_EQ(database.count(uplinks) + database.count(downlinks), 2);
}

TEST_F(MessageDatabase, HandsOutTheSameRepositoriesEveryTime) {
    EXPECT_EQ(driver.UlMessageRepository(), driver.UlMessageRepository());
    EXPECT_EQ(driver.DlMessageRepository(), driver.DlMessageRepository());
    EXPECT_NE(driver.UlMessageRepository(), nullptr);
    EXPECT_NE(driver.DlMessageRepository(), nullptr);
}

TEST_F(MessageDatabase, TwoObjectsSeeTheSameStore) {
    mongo::DbDriverMongo other{mongoUrl()};
    driver.UlMessageRepository()->SaveMessage(uplink{.id = 3});

    EXPECT_EQ(idsOf(*other.UlMessageRepository()->GetMessages(uplinksOf({7}))),
              (ids_by_device{{7, {3}}}));
    EXPECT_NE(driver.UlMessageRepository(), other.UlMessageRepository());
}

// Deliberate: every host finds its data in the same place.
TEST_F(MessageDatabase, ADatabaseNamedInTheUrlIsNotUsed) {
    temporary_database elsewhere;
    mongo::DbDriverMongo named{mongoUrlOfDatabase(elsewhere.name())};
    named.CreateDatabase();
    named.UlMessageRepository()->SaveMessage(uplink{.id = 0xabc});

    EXPECT_EQ(database.count(uplinks, R"({"_id": "abc"})"), 1);
    EXPECT_THAT(elsewhere.collections(), IsEmpty());
}

TEST_F(MessageDatabase, ASaveBetweenBeginAndRollbackStaysStored) {
    driver.CreateDatabase();
    driver.BeginTransaction();
    driver.UlMessageRepository()->SaveMessage(uplink{.id = 0xabc});
    EXPECT_EQ(database.count(uplinks), 1);
    driver.RollbackTransaction();

    EXPECT_EQ(database.count(uplinks, R"({"_id": "abc"})"), 1);
}

TEST_F(MessageDatabase, TransactionsMayComeInAnyOrder) {
    driver.CommitTransaction();
    driver.RollbackTransaction();
    driver.BeginTransaction();
    driver.BeginTransaction();
    driver.UlMessageRepository()->SaveMessage(uplink{});
    driver.CommitTransaction();

    EXPECT_EQ(database.count(uplinks), 1);
}

TEST_F(MessageDatabase, HasNoQtParent) {
    EXPECT_EQ(driver.parent(), nullptr);
}

TEST_F(MessageDatabase, HasItsInterfaceBehindTheQtObject) {
    EXPECT_EQ(static_cast<void*>(static_cast<QObject*>(&driver)), &driver);
    EXPECT_GT(static_cast<void*>(static_cast<interfaces::IMessagesDatabase*>(&driver)), &driver);
}

TEST(MessageDatabaseUrl, MalformedIsRefusedByTheConstructor) {
    unreachableMongoUrl(); // makes the driver's instance
    for (const char* url :
         {"", "nonsense", "mongodb://", "http://127.0.0.1/", "mongodb://127.0.0.1:99999/",
          "mongodb://[::1/", "mongodb://127.0.0.1:27017/?authMechanism=nonsense"}) {
        EXPECT_THROW(mongo::DbDriverMongo{url}, mongocxx::v1::exception) << '"' << url << '"';
    }
}

TEST(MessageDatabaseUrl, IsNotTriedByTheConstructor) {
    EXPECT_NO_THROW(mongo::DbDriverMongo{unreachableMongoUrl()});
}

TEST(MessageDatabaseUrl, OfAnUnreachableServerFailsTheLayout) {
    mongo::DbDriverMongo driver{unreachableMongoUrl()};

    EXPECT_THROW(driver.CreateDatabase(), mongocxx::v1::exception);
}

TEST(MessageDatabaseUrl, OfAnUnreachableServerLeavesTransactionsDoingNothing) {
    mongo::DbDriverMongo driver{unreachableMongoUrl()};

    EXPECT_NO_THROW(driver.BeginTransaction());
    EXPECT_NO_THROW(driver.CommitTransaction());
    EXPECT_NO_THROW(driver.RollbackTransaction());
}

} // namespace
