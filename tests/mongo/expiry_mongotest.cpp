#include "mongo/ul_app_message_reopository.h"

#include "model/ul_messages_layout.h"
#include "mongo/store_layout.h"
#include "tests/mongo/records.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"

#include <mongocxx/v1/collection.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace records;
using namespace test_support;

namespace {

class Expiry : public UniqueMongoDatabase {};

// Takes a minute or two: a server looks for expired documents once a minute.
TEST_F(Expiry, RemovesAMessageOnceItsTtlIsAMinuteAgo) {
    const log_capture log;
    auto uplinks = database.handle().collection("ul_messages");
    mongo::createIndexes(uplinks, layout::ul_messages::indexes);
    mongo::ULAPPMessageRepository repository{database.handle()};
    model::message expired = uplink{.id = 1};
    expired.ttl = QDateTime::currentDateTimeUtc().addSecs(-61);
    repository.SaveMessage(expired);
    repository.SaveMessage(uplink{.id = 2});

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes{4};
    while (database.count("ul_messages", R"({"_id": "1"})") != 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the message is still there";
        std::this_thread::sleep_for(std::chrono::milliseconds{200});
    }
    EXPECT_EQ(database.count("ul_messages", R"({"_id": "2"})"), 1);
}

} // namespace
