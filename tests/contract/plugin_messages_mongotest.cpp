#include "interfaces/idl_app_message_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/virtual_table.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/record_samples.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

using namespace interfaces;
using namespace test_support;
using namespace test_support::literals;
using testing::ElementsAre;
using testing::IsEmpty;
using virtual_table::slot;

namespace {

class PluginMessages : public FixedMongoDatabase {
protected:
    std::shared_ptr<IMessagesDatabase> create() {
        return plugin.factory()->CreateMessageDatabaseInst(settingsFor(mongoUrl()), nullptr);
    }

    static model::message uplink() {
        model::message message = sampleMessage();
        message.ttl = utcSecs(4'102'444'800); // in 2100
        return message;
    }

    log_capture log;
    LoadedPlugin plugin;
};

TEST_F(PluginMessages, AreLaidOutBeforeTheHostHasTheObject) {
    const auto messages = create();

    EXPECT_THAT(database.collections(), ElementsAre("dl_messages", "ul_messages"));
    EXPECT_EQ(database.indexes("ul_messages").size(), 7u);
    EXPECT_EQ(database.indexes("dl_messages").size(), 6u);
}

TEST_F(PluginMessages, HaveTheirInterfaceBehindTheQtObject) {
    const auto messages = create();

    EXPECT_EQ(dynamic_cast<void*>(messages.get()), dynamic_cast<QObject*>(messages.get()));
    EXPECT_NE(dynamic_cast<void*>(messages.get()), static_cast<void*>(messages.get()));
}

TEST_F(PluginMessages, LayOutThroughSlotOneAndIgnoreTransactionsThroughTheNextThree) {
    const auto messages = create();
    database.drop();
    slot<void()>::call(messages.get(), 4);
    slot<void()>::call(messages.get(), 2);
    slot<void()>::call(messages.get(), 3);
    EXPECT_THAT(database.collections(), IsEmpty());
    slot<void()>::call(messages.get(), 1);

    EXPECT_THAT(database.collections(), ElementsAre("dl_messages", "ul_messages"));
}

TEST_F(PluginMessages, ThrowTheDriversExceptionsToTheHost) {
    const auto messages = create();
    messages->UlMessageRepository()->SaveMessage(uplink());

    EXPECT_THROW(messages->UlMessageRepository()->SaveMessage(uplink()), mongocxx::v1::exception);
    EXPECT_THROW(messages->DlMessageRepository()->AckCommand("123"_q), bsoncxx::v1::exception);
}

TEST_F(PluginMessages, LogThroughTheHostsMessageHandler) {
    const auto messages = create();
    EXPECT_THAT(log.lines(), IsEmpty());
    messages->UlMessageRepository()->SaveMessage(uplink());

    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines().front(), debugLine(log.lines().front().text));
    EXPECT_TRUE(log.lines().front().text.startsWith("\"Save UL message executed in "_q));
}

TEST_F(PluginMessages, AreRefusedByTheDriverWithoutAUrl) {
    for (const QJsonObject& settings :
         {QJsonObject{}, QJsonObject{{"url"_q, 5}}, QJsonObject{{"url"_q, ""_q}},
          QJsonObject{{"URL"_q, QString::fromStdString(mongoUrl())}},
          QJsonObject{{"redis"_q, QJsonObject{}}}}) {
        EXPECT_THROW(plugin.factory()->CreateMessageDatabaseInst(settings, nullptr),
                     mongocxx::v1::exception);
    }
    EXPECT_THAT(database.collections(), IsEmpty());
}

TEST_F(PluginMessages, AreRefusedByTheDriverWithAMalformedUrl) {
    EXPECT_THROW(plugin.factory()->CreateMessageDatabaseInst(settingsFor("nonsense"), nullptr),
                 mongocxx::v1::exception);
}

TEST_F(PluginMessages, AreNotCreatedWhenTheServerCannotBeReached) {
    EXPECT_THROW(
        plugin.factory()->CreateMessageDatabaseInst(settingsFor(unreachableMongoUrl()), nullptr),
        mongocxx::v1::exception);
}

} // namespace
