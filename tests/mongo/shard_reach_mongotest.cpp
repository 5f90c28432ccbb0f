#include "mongo/dl_message_repository.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/ul_app_message_reopository.h"

#include "tests/mongo/eav_repository_fixture.h"
#include "tests/support/mongo_commands.h"
#include "tests/support/mongo_database.h"

#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// How far a request goes on a cluster that is sharded by the hashed device number: by what of it a
// router decides. docs/operations/growing.md has the same in words.

using namespace records;
using namespace test_support;
using testing::ElementsAre;

namespace {

class ShardReach : public UniqueMongoDatabase {
protected:
    /// Of each request that the operation sends.
    std::vector<std::string> of(const std::function<void()>& operation) {
        client.forget();
        operation();
        std::vector<std::string> reaches;
        for (const sent_command& command : client.sent()) {
            reaches.push_back(reachOf(command));
        }
        return reaches;
    }

    recording_client client{mongoUrl()};
    mongocxx::v1::database store = client.database(database.name());
    mongo::ULAPPMessageRepository uplinks{store};
    mongo::DLMessageRepository commands{store};
    mongo::EAVRepositoryMongo eav{store};

    static constexpr const char* ofDocuments = "each document's device";
    static constexpr const char* ofDevice = "one device";
    static constexpr const char* ofDevices = "the devices listed";
    static constexpr const char* everywhere = "all shards";

private:
    static std::string reachOf(const sent_command& command) {
        const bsoncxx::v1::document::view body = command.body;
        if (command.name == "insert") {
            return ofDocuments;
        }
        if (command.name == "find") {
            return reachOf(body["filter"].get_document().value);
        }
        const auto list = body[command.name + "s"].get_array().value; // "updates", "deletes"
        return reachOf(list[0]["q"].get_document().value);
    }

    static std::string reachOf(bsoncxx::v1::document::view filter) {
        const auto device = filter["modem_id"];
        if (!device) {
            return everywhere;
        }
        return device.type_id() == bsoncxx::v1::types::id::k_int32 ? ofDevice : ofDevices;
    }
};

TEST_F(ShardReach, OfUplinkMessages) {
    auto byDetection = uplinksOf({7, 8});
    byDetection.by_time_detected = true;

    EXPECT_THAT(of([&] { uplinks.SaveMessage(uplink{}); }), ElementsAre(ofDocuments));
    EXPECT_THAT(of([&] { uplinks.GetMessages(uplinksOf({7, 8})); }), ElementsAre(ofDevices));
    EXPECT_THAT(of([&] { uplinks.GetMessages(byDetection); }), ElementsAre(ofDevices));
    EXPECT_THAT(of([&] { uplinks.DeleteMessages(uplinksOf({7, 8})); }), ElementsAre(ofDevices));
}

TEST_F(ShardReach, OfDownlinkCommands) {
    model::dl_message command = downlink{};
    EXPECT_THAT(of([&] { commands.SaveMessage(command); }), ElementsAre(ofDocuments));
    EXPECT_THAT(of([&] { commands.GetCommands(downlinksOf({7, 8})); }),
                ElementsAre(ofDevice, ofDevice));
    EXPECT_THAT(of([&] { commands.GetNotAckCommands(downlinksOf({7, 8})); }),
                ElementsAre(ofDevice, ofDevice));
    EXPECT_THAT(of([&] { commands.GetById(command.db_id); }), ElementsAre(everywhere));
    EXPECT_THAT(
        of([&] { commands.SetStatus(command.db_id, model::dl_message::dl_status::EXECUTED); }),
        ElementsAre(everywhere));
    EXPECT_THAT(of([&] { commands.AckCommand(command.db_id); }), ElementsAre(everywhere));
    EXPECT_THAT(of([&] { commands.DeleteMessages({7, 8}, utc(0), in2100()); }),
                ElementsAre(ofDevice, ofDevice));
}

TEST_F(ShardReach, OfValuesAndEvents) {
    auto firstAndLast = allOf({7, 8});
    firstAndLast.obis_codes = {"1-0:1.8.0"_q};
    firstAndLast.first_last = true;

    EXPECT_THAT(of([&] { eav.SaveValues({reading{}, reading{.modem = 8}}); }),
                ElementsAre(ofDocuments));
    EXPECT_THAT(of([&] { eav.SaveEvents({happening{}, happening{.modem = 8}}); }),
                ElementsAre(ofDocuments));
    EXPECT_THAT(of([&] { eav.GetValues(allOf({7, 8})); }), ElementsAre(ofDevices));
    EXPECT_THAT(of([&] { eav.GetValues(firstAndLast); }),
                ElementsAre(ofDevice, ofDevice, ofDevice, ofDevice));
    EXPECT_THAT(of([&] { eav.GetEvents(allOf({7, 8})); }), ElementsAre(ofDevices));
    EXPECT_THAT(of([&] { eav.DeleteValues(allOf({7, 8})); }), ElementsAre(ofDevices));
    EXPECT_THAT(of([&] { eav.DeleteEvents(allOf({7, 8})); }), ElementsAre(ofDevices));
}

// The concerns of the connection string go with every request; no operation has its own.
class UrlOptions : public UniqueMongoDatabase {};

TEST_F(UrlOptions, SayWhenAWriteIsAcknowledgedAndWhatIsRead) {
    recording_client client{mongoUrlWith("w=majority&journal=true&readConcernLevel=majority")};
    mongo::EAVRepositoryMongo eav{client.database(database.name())};

    eav.SaveValues({reading{}});
    EXPECT_EQ(client.onlySent().part({"writeConcern"}),
              canonical(R"({"writeConcern": {"w": "majority", "j": true}})"));
    client.forget();
    eav.GetValues(allOf({7}));
    EXPECT_EQ(client.onlySent().part({"readConcern"}),
              canonical(R"({"readConcern": {"level": "majority"}})"));
}

} // namespace
