#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"
#include "mongo/dl_message_repository.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/store_layout.h"
#include "mongo/ul_app_message_reopository.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"

#include <mongocxx/v1/collection.hpp>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

using namespace records;
using namespace test_support;

namespace {

class Expiry : public UniqueMongoDatabase {
protected:
    static constexpr std::array<std::string_view, 4> collections{"ul_messages", "dl_messages",
                                                                 "eav_values", "eav_events"};

    /// One record of each kind, of the given device.
    void storeOneOfEach(int modem, const QDateTime& ttl) {
        model::message message = uplink{.id = static_cast<quint64>(modem), .modem = modem};
        message.ttl = ttl;
        mongo::ULAPPMessageRepository{database.handle()}.SaveMessage(message);

        model::dl_message command = downlink{.modem = modem};
        command.ttl = ttl;
        mongo::DLMessageRepository{database.handle()}.SaveMessage(command);

        model::dev_value value = reading{.modem = modem};
        value.ttl = ttl;
        model::dev_event event = happening{.modem = modem};
        event.ttl = ttl;
        mongo::EAVRepositoryMongo repository{database.handle()};
        repository.SaveValues({value});
        repository.SaveEvents({event});
    }

    template <std::size_t Count>
    void layOut(std::string_view name, const std::array<layout::index, Count>& indexes) {
        auto collection = database.handle().collection(name);
        mongo::createIndexes(collection, indexes);
    }

    std::int64_t countOf(int modem) {
        std::int64_t count = 0;
        for (const auto collection : collections) {
            count += database.count(collection, R"({"modem_id": )" + std::to_string(modem) + "}");
        }
        return count;
    }
};

// Takes a minute or two: a server looks for expired documents once a minute.
TEST_F(Expiry, RemovesEveryKindOfRecordOnceItsTtlIsAMinuteAgo) {
    const log_capture log;
    layOut("ul_messages", layout::ul_messages::indexes);
    layOut("dl_messages", layout::dl_messages::indexes);
    layOut("eav_values", layout::eav_values::indexes);
    layOut("eav_events", layout::eav_events::indexes);
    storeOneOfEach(1, QDateTime::currentDateTimeUtc().addSecs(-61));
    storeOneOfEach(2, QDateTime::currentDateTimeUtc().addDays(1));

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes{4};
    while (countOf(1) != 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << countOf(1) << " are still there";
        std::this_thread::sleep_for(std::chrono::milliseconds{200});
    }
    EXPECT_EQ(countOf(2), 4);
}

} // namespace
