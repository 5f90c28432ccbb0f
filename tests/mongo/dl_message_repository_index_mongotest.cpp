#include "model/bson_utils.h"
#include "model/documents/dl_message.h"
#include "mongo/store_layout.h"
#include "tests/mongo/downlink_repository_fixture.h"

#include <mongocxx/v1/collection.hpp>

using namespace records;
using namespace test_support;
using testing::AnyOf;
using testing::Each;
using testing::IsEmpty;
using testing::Not;

namespace {

/// Which indexes the server takes for the repository's queries. Two of them begin with the device
/// and the time; which one a server prefers is its own affair.
class DownlinkIndexes : public DownlinkRepositoryTest {
protected:
    DownlinkIndexes() {
        auto downlinks = database.handle().collection(collection);
        mongo::createIndexes(downlinks, layout::dl_messages::indexes);
        std::vector<bsoncxx::v1::document::value> documents;
        for (int number = 0; number < 300; ++number) {
            const downlink command{.modem = number % 30,
                                   .at = number,
                                   .status = static_cast<model::dl_message::dl_status>(number % 4)};
            documents.push_back(bson_utils::toBson(command.record()));
        }
        database.insertMany(collection, documents);
    }

    std::set<std::string> indexesUsed() {
        return database.indexesUsedBy(client.onlySent().part({"find", "filter", "sort", "limit"}));
    }
};

MATCHER(AreOfDeviceAndTime, "") {
    return testing::Value(arg, Not(IsEmpty())) &&
           testing::Value(
               arg, Each(AnyOf("modem_id_1_timestamp_-1", "modem_id_1_timestamp_-1_status_1")));
}

TEST_F(DownlinkIndexes, OfDeviceAndTimeServeGetCommands) {
    auto filter = downlinksOf({7});
    filter.begin = utc(100);
    filter.end = utc(200);
    repository.GetCommands(filter);

    EXPECT_THAT(indexesUsed(), AreOfDeviceAndTime());
}

TEST_F(DownlinkIndexes, OfDeviceAndTimeServeGetNotAckCommands) {
    auto filter = downlinksOf({7});
    filter.begin = utc(100);
    filter.end = utc(200);
    repository.GetNotAckCommands(filter);

    EXPECT_THAT(indexesUsed(), AreOfDeviceAndTime());
}

TEST_F(DownlinkIndexes, OfDeviceAndTimeServeDeleteMessages) {
    repository.DeleteMessages({7}, utc(100), utc(200));
    const auto deletion = client.onlySent().body["deletes"].get_array().value;
    const auto filter = deletion[0].get_document().value["q"].get_document().value;

    EXPECT_THAT(
        database.indexesUsedBy(R"({"find": "dl_messages", "filter": )" + toJson(filter) + "}"),
        AreOfDeviceAndTime());
}

TEST_F(DownlinkIndexes, OfTheIdServesGetById) {
    thrownText([&] { repository.GetById(unknownIdText()); });

    EXPECT_THAT(indexesUsed(), testing::ElementsAre("_id_"));
}

} // namespace
