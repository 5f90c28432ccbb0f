// Requests at the server's limits and beyond: many devices in one query, more in one call than a
// message of the protocol holds (48 MB), a document of more than 16 MB.

#include "mongo/dl_message_repository.h"
#include "mongo/driver_state_persistent.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/ul_app_message_reopository.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/mongo/records.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"

#include <gmock/gmock.h>
#include <mongocxx/v1/exception.hpp>

#include <numeric>

using namespace records;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

class LargeRequests : public test_support::UniqueMongoDatabase {
protected:
    /// Numbered from 1, so that the last of them has this number.
    static std::list<int> devices(int count) {
        std::list<int> numbers(static_cast<std::size_t>(count));
        std::iota(numbers.begin(), numbers.end(), 1);
        return numbers;
    }

    /// That a document is too large, in the MongoDB driver's words.
    template <typename Operation>
    static void expectTooLarge(const Operation& operation) {
        try {
            operation();
            ADD_FAILURE() << "it was not refused";
        } catch (const mongocxx::v1::exception& refusal) {
            EXPECT_THAT(refusal.what(), HasSubstr("too large"));
        }
    }

    test_support::log_capture log;
};

TEST_F(LargeRequests, AskForAHundredThousandDevices) {
    constexpr int last = 100'000;
    mongo::ULAPPMessageRepository uplinks{database.handle()};
    mongo::EAVRepositoryMongo readings{database.handle()};
    uplinks.SaveMessage(uplink{.modem = last});
    readings.SaveValues({reading{.modem = last}});
    readings.SaveEvents({happening{.modem = last}});

    EXPECT_THAT(uplinks.GetMessages(uplinksOf(devices(last)))->at(last), SizeIs(1));
    EXPECT_THAT(readings.GetValues(allOf(devices(last)))->at(last), SizeIs(1));
    EXPECT_THAT(readings.GetEvents(allOf(devices(last)))->at(last), SizeIs(1));

    uplinks.DeleteMessages(uplinksOf(devices(last)));
    readings.DeleteValues(allOf(devices(last)));
    readings.DeleteEvents(allOf(devices(last)));
    for (const char* collection : {"ul_messages", "eav_values", "eav_events"}) {
        EXPECT_EQ(database.count(collection), 0) << collection;
    }
}

// One request for each device.
TEST_F(LargeRequests, AskForTheCommandsOfTenThousandDevices) {
    constexpr int last = 10'000;
    mongo::DLMessageRepository repository{database.handle()};
    model::dl_message command = downlink{.modem = last};
    repository.SaveMessage(command);

    EXPECT_THAT(repository.GetCommands(downlinksOf(devices(last)))->at(last), SizeIs(1));
    EXPECT_THAT(repository.GetNotAckCommands(downlinksOf(devices(last)))->at(last), SizeIs(1));

    repository.DeleteMessages(devices(last), utc(0), in2100());
    EXPECT_EQ(database.count("dl_messages"), 0);
}

TEST_F(LargeRequests, ForMoreDevicesThanARequestHoldsAreRefused) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    repository.SaveValues({reading{}});

    EXPECT_THROW(repository.GetValues(allOf(devices(4'000'000))), mongocxx::v1::exception);
    EXPECT_THAT(repository.GetValues(allOf({7}))->at(7), SizeIs(1));
}

TEST_F(LargeRequests, StoreMoreThanOneMessageHolds) {
    constexpr int count = 64;
    mongo::EAVRepositoryMongo repository{database.handle()};
    const std::list<model::dev_value> values(count, reading{.value = QString(1 << 20, u'x')});

    repository.SaveValues(values);

    EXPECT_EQ(database.count("eav_values"), count);
    EXPECT_THAT(repository.GetValues(allOf({7}))->at(7), SizeIs(count));
}

TEST_F(LargeRequests, WithADocumentOfMoreThan16MegabytesAreRefused) {
    constexpr int tooMany = 17 << 20;
    mongo::ULAPPMessageRepository uplinks{database.handle()};
    mongo::EAVRepositoryMongo readings{database.handle()};
    mongo::DLMessageRepository downlinks{database.handle()};
    model::message message = uplink{};
    message.payload = QByteArray(tooMany / 2, 'x');
    model::dl_message command = downlink{};
    command.payload = message.payload;

    expectTooLarge([&] { uplinks.SaveMessage(message); });
    expectTooLarge([&] { downlinks.SaveMessage(command); });
    expectTooLarge([&] { readings.SaveValues({reading{.value = QString(tooMany, u'x')}}); });

    for (const char* collection : {"ul_messages", "dl_messages", "eav_values"}) {
        EXPECT_EQ(database.count(collection), 0) << collection;
    }
    uplinks.SaveMessage(uplink{});
    EXPECT_EQ(database.count("ul_messages"), 1);
}

// The driver sends none of those that were to go in one message with it.
TEST_F(LargeRequests, WithOneValueThatIsTooLargeAreRefusedWhole) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    const std::list<model::dev_value> values{
        reading{.at = 1}, reading{.at = 2, .value = QString(17 << 20, u'x')}, reading{.at = 3}};

    expectTooLarge([&] { repository.SaveValues(values); });

    EXPECT_EQ(database.count("eav_values"), 0);
}

} // namespace
