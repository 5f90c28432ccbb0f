#include "interfaces/idl_app_message_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/virtual_table.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/record_equality.h"
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
    std::shared_ptr<IMessagesDatabase> create(QObject* parent = nullptr) {
        return plugin.factory()->CreateMessageDatabaseInst(settingsFor(mongoUrl()), parent);
    }

    static QDateTime in2100() { return utcMsecs(4'102'444'800'123); }

    static model::message uplink() {
        model::message message = sampleMessage();
        message.ttl = in2100();
        return message;
    }

    static model::dl_message downlink() {
        model::dl_message message = sampleCommand();
        message.ttl = in2100();
        message.status = model::dl_message::dl_status::PENDING;
        return message;
    }

    static model::filter_roll allUplinks() {
        model::filter_roll filter;
        filter.modem_ids = {uplink().modem_id};
        filter.begin = utcSecs(0);
        filter.end = in2100();
        return filter;
    }

    static model::filter_dl allDownlinks() {
        model::filter_dl filter;
        filter.modem_ids = {downlink().modem_id};
        filter.begin = utcSecs(0);
        filter.end = in2100();
        return filter;
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

TEST_F(PluginMessages, AreCreatedThroughSlotOneOfTheFactory) {
    const auto messages =
        slot<std::shared_ptr<IMessagesDatabase>(const QJsonObject&, QObject*)>::call(
            plugin.factory(), 1, settingsFor(mongoUrl()), nullptr);

    ASSERT_NE(messages, nullptr);
    EXPECT_THAT(database.collections(), ElementsAre("dl_messages", "ul_messages"));
}

TEST_F(PluginMessages, BelongToTheHostAlone) {
    const auto first = create();
    const auto second = create();

    EXPECT_EQ(first.use_count(), 1);
    EXPECT_NE(first, second);
}

TEST_F(PluginMessages, HaveTheirInterfaceBehindTheQtObject) {
    const auto messages = create();

    EXPECT_EQ(dynamic_cast<void*>(messages.get()), dynamic_cast<QObject*>(messages.get()));
    EXPECT_NE(dynamic_cast<void*>(messages.get()), static_cast<void*>(messages.get()));
}

TEST_F(PluginMessages, IgnoreTheParent) {
    auto parent = std::make_unique<QObject>();
    const auto messages = create(parent.get());
    EXPECT_THAT(parent->children(), IsEmpty());
    EXPECT_EQ(dynamic_cast<QObject&>(*messages).parent(), nullptr);
    parent.reset();

    messages->UlMessageRepository()->SaveMessage(uplink());
    EXPECT_EQ(database.count("ul_messages"), 1);
}

TEST_F(PluginMessages, OutliveTheFactory) {
    const auto messages = create();
    delete plugin.root();
    messages->UlMessageRepository()->SaveMessage(uplink());

    EXPECT_EQ(messages->UlMessageRepository()->GetMessages(allUplinks())->size(), 1u);
    EXPECT_EQ(database.count("ul_messages"), 1);
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

TEST_F(PluginMessages, HandOutTheirRepositoriesThroughSlotsFiveAndSix) {
    const auto messages = create();
    model::dl_message command = downlink();
    slot<IULAPPMessageRepository*()>::call(messages.get(), 5)->SaveMessage(uplink());
    slot<IDLAPPMessageRepository*()>::call(messages.get(), 6)->SaveMessage(command);

    EXPECT_EQ(database.count("ul_messages", R"({"_id": "1badcafe"})"), 1);
    EXPECT_EQ(database.count("dl_messages",
                             R"({"_id": {"$oid": ")" + command.db_id.toStdString() + R"("}})"),
              1);
}

TEST_F(PluginMessages, ServeUplinksThroughTheirSlots) {
    const auto messages = create();
    auto* uplinks = messages->UlMessageRepository();
    slot<void(const model::message&)>::call(uplinks, 1, uplink());
    EXPECT_EQ(database.count("ul_messages"), 1);

    using result = std::shared_ptr<std::map<int, std::list<model::message>>>;
    const auto found = slot<result(const model::filter_roll&)>::call(uplinks, 2, allUplinks());
    EXPECT_EQ(found->at(uplink().modem_id).front().unique_id, uplink().unique_id);
    EXPECT_EQ((slot<std::pair<QString, QString>(int)>::call(uplinks, 4, 7)),
              std::make_pair(QString(), QString()));

    slot<void(const model::filter_roll&)>::call(uplinks, 3, allUplinks());
    EXPECT_EQ(database.count("ul_messages"), 0);
}

TEST_F(PluginMessages, ServeDownlinksThroughTheirSlots) {
    using result = std::shared_ptr<std::map<int, std::list<model::dl_message>>>;
    using status = model::dl_message::dl_status;
    const auto messages = create();
    auto* downlinks = messages->DlMessageRepository();
    model::dl_message command = downlink();
    slot<void(model::dl_message&)>::call(downlinks, 1, command);
    EXPECT_EQ(database.count("dl_messages", R"({"status": 0})"), 1);

    EXPECT_EQ((slot<model::dl_message(const QString&)>::call(downlinks, 2, command.db_id)).api_key,
              command.api_key);
    slot<void(const QString&, status)>::call(downlinks, 5, command.db_id, status::WAIT_DATA);
    EXPECT_EQ(database.count("dl_messages", R"({"status": 1})"), 1);
    slot<void(const QString&)>::call(downlinks, 6, command.db_id);
    EXPECT_EQ(database.count("dl_messages", R"({"status": 2})"), 1);

    EXPECT_EQ((slot<result(const model::filter_dl&)>::call(downlinks, 3, allDownlinks()))->size(),
              1u);
    EXPECT_TRUE(
        (slot<result(const model::filter_dl&)>::call(downlinks, 4, allDownlinks()))->empty());
    slot<void(const std::list<int>&, const QDateTime&, const QDateTime&)>::call(
        downlinks, 7, {command.modem_id}, utcSecs(0), in2100());
    EXPECT_EQ(database.count("dl_messages"), 0);
}

TEST_F(PluginMessages, ThrowTextsThatTheHostCanCatch) {
    const auto messages = create();
    for (const auto& [id, expected] : {std::pair{"123"_q, "invalid id"_q},
                                       std::pair{"0123456789abcdef01234567"_q, "not exist"_q}}) {
        try {
            messages->DlMessageRepository()->GetById(id);
            FAIL() << "nothing was thrown";
        } catch (const QString& text) {
            EXPECT_EQ(text, expected);
        }
    }
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
