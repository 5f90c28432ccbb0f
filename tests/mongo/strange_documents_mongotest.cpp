// What other writers may have put into the collections: a query of it answers, or throws the
// exception that the interfaces name, and never harms the records beside it.

#include "tests/mongo/strange_documents.h"

#include "model/bson_utils.h"
#include "mongo/dl_message_repository.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/ul_app_message_reopository.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/mongo/records.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

#include <functional>

using namespace records;
using namespace strange_documents;
using test_support::mongo_database;

namespace {

constexpr int sound = 7;
constexpr int firstStrange = 1000;

/// Inserts each variant as the document of a device of its own. Gives the devices of those that
/// the server took.
std::vector<int> insertVariants(mongo_database& database, const char* collection,
                                const bsoncxx::v1::document::value& document) {
    std::vector<int> devices;
    int device = firstStrange;
    for (elements variant : variantsOf(elementsOf(document.view()), "modem_id")) {
        ++device;
        for (element& element : variant) {
            if (element.key == "modem_id") {
                element.bytes = raw::int32("modem_id", device);
            } else if (element.key == "_id" && element.bytes.front() == '\x02') {
                element.bytes = raw::string("_id", std::to_string(device));
            }
        }
        const auto bytes = bytesOf(variant);
        try {
            database.insert(collection, bytes.view());
            devices.push_back(device);
        } catch (const mongocxx::v1::exception&) {
            // an "_id" of a type that the server does not take
        }
    }
    EXPECT_GT(devices.size(), std::size_t{250}) << "hardly anything strange is there";
    return devices;
}

template <typename Record>
using query = std::function<std::shared_ptr<std::map<int, std::list<Record>>>(std::list<int>)>;

/// Asks for each strange document together with the sound one. Gives how many queries threw.
template <typename Record>
int refusals(const std::vector<int>& devices, const query<Record>& ask,
             const std::list<Record>& expected) {
    int refused = 0;
    for (const int device : devices) {
        try {
            EXPECT_EQ(ask({sound, device})->at(sound), expected) << "beside device " << device;
        } catch (const bsoncxx::v1::exception& refusal) {
            EXPECT_STRNE(refusal.what(), "");
            ++refused;
        }
    }
    EXPECT_EQ(ask({sound})->at(sound), expected);
    return refused;
}

class StrangeDocuments : public test_support::UniqueMongoDatabase {
protected:
    test_support::log_capture log;
};

TEST_F(StrangeDocuments, AmongUplinksAreReadOrRefused) {
    mongo::ULAPPMessageRepository repository{database.handle()};
    const auto ask = [&](bool byTimeDetected) -> query<model::message> {
        return [&, byTimeDetected](std::list<int> devices) {
            auto filter = uplinksOf(std::move(devices));
            filter.by_time_detected = byTimeDetected;
            return repository.GetMessages(filter);
        };
    };
    repository.SaveMessage(uplink{.modem = sound});
    const std::list<model::message> expected = ask(false)({sound})->at(sound);
    const auto devices =
        insertVariants(database, "ul_messages", bson_utils::toBson(uplink{}.record()));

    EXPECT_GT(refusals(devices, ask(false), expected), 300);
    EXPECT_GT(refusals(devices, ask(true), expected), 300);

    repository.DeleteMessages(uplinksOf({devices.begin(), devices.end()}));
    EXPECT_EQ(database.count("ul_messages"), 1);
}

TEST_F(StrangeDocuments, AmongDownlinksAreRead) {
    mongo::DLMessageRepository repository{database.handle()};
    model::dl_message message = downlink{.modem = sound};
    repository.SaveMessage(message);
    const query<model::dl_message> all = [&](std::list<int> devices) {
        return repository.GetCommands(downlinksOf(std::move(devices)));
    };
    const query<model::dl_message> open = [&](std::list<int> devices) {
        return repository.GetNotAckCommands(downlinksOf(std::move(devices)));
    };
    const std::list<model::dl_message> expected = all({sound})->at(sound);
    const auto devices =
        insertVariants(database, "dl_messages", bson_utils::toBson(downlink{}.record()));

    EXPECT_EQ(refusals(devices, all, expected), 0);
    EXPECT_EQ(refusals(devices, open, expected), 0);
    EXPECT_EQ(repository.GetById(message.db_id), expected.front());

    repository.DeleteMessages({devices.begin(), devices.end()}, utc(0), in2100());
    EXPECT_EQ(all({sound})->at(sound), expected);
}

TEST_F(StrangeDocuments, AmongValuesAreRead) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    repository.SaveValues({reading{.modem = sound}});
    const query<model::dev_value> all = [&](std::list<int> devices) {
        return repository.GetValues(allOf(std::move(devices)));
    };
    const query<model::dev_value> firstLast = [&](std::list<int> devices) {
        auto filter = allOf(std::move(devices));
        filter.first_last = true;
        filter.obis_codes = {reading{}.obis};
        return repository.GetValues(filter);
    };
    const std::list<model::dev_value> expected = all({sound})->at(sound);
    const std::list<model::dev_value> twice = {expected.front(), expected.front()};
    const auto devices =
        insertVariants(database, "eav_values", bson_utils::toBson(reading{}.record()));

    EXPECT_EQ(refusals(devices, all, expected), 0);
    EXPECT_EQ(refusals(devices, firstLast, twice), 0);

    repository.DeleteValues(allOf({devices.begin(), devices.end()}));
    EXPECT_EQ(all({sound})->at(sound), expected);
}

TEST_F(StrangeDocuments, AmongEventsAreRead) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    repository.SaveEvents({happening{.modem = sound}});
    const query<model::dev_event> all = [&](std::list<int> devices) {
        return repository.GetEvents(allOf(std::move(devices)));
    };
    const std::list<model::dev_event> expected = all({sound})->at(sound);
    const auto devices =
        insertVariants(database, "eav_events", bson_utils::toBson(happening{}.record()));

    EXPECT_EQ(refusals(devices, all, expected), 0);

    repository.DeleteEvents(allOf({devices.begin(), devices.end()}));
    EXPECT_EQ(all({sound})->at(sound), expected);
}

} // namespace
