#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/virtual_table.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/record_samples.h"

#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

using namespace interfaces;
using namespace test_support;
using namespace test_support::literals;
using testing::ElementsAre;
using testing::IsEmpty;
using virtual_table::slot;

namespace {

class PluginEav : public FixedMongoDatabase {
protected:
    std::shared_ptr<IEAVDatabase> create(QObject* parent = nullptr) {
        return plugin.factory()->CreateEavDatabaseInst(settingsFor(mongoUrl()), parent);
    }

    static model::filter_eav everything() {
        model::filter_eav filter;
        filter.modem_ids = {sampleValue().modem_id};
        filter.begin = utcSecs(0);
        filter.end = in2100();
        return filter;
    }

    static QDateTime in2100() { return utcMsecs(4'102'444'800'123); }

    static std::list<model::dev_value> values() {
        model::dev_value value = sampleValue();
        value.ttl = in2100();
        return {value};
    }

    static std::list<model::dev_event> events() {
        model::dev_event event = sampleEvent();
        event.ttl = in2100();
        return {event};
    }

    log_capture log;
    LoadedPlugin plugin;
};

TEST_F(PluginEav, IsLaidOutBeforeTheHostHasTheObject) {
    const auto eav = create();

    EXPECT_THAT(database.collections(), ElementsAre("eav_events", "eav_values"));
    EXPECT_GT(database.indexes("eav_events").size(), 1u);
    EXPECT_GT(database.indexes("eav_values").size(), 1u);
}

TEST_F(PluginEav, IsCreatedThroughSlotTwoOfTheFactory) {
    const auto eav = slot<std::shared_ptr<IEAVDatabase>(const QJsonObject&, QObject*)>::call(
        plugin.factory(), 2, settingsFor(mongoUrl()), nullptr);

    ASSERT_NE(eav, nullptr);
    EXPECT_THAT(database.collections(), ElementsAre("eav_events", "eav_values"));
}

TEST_F(PluginEav, BelongsToTheHostAlone) {
    QObject parent;
    const auto eav = create(&parent);

    EXPECT_EQ(eav.use_count(), 1);
    EXPECT_THAT(parent.children(), IsEmpty());
    EXPECT_EQ(dynamic_cast<QObject&>(*eav).parent(), nullptr);
    EXPECT_EQ(dynamic_cast<void*>(eav.get()), dynamic_cast<QObject*>(eav.get()));
    EXPECT_NE(dynamic_cast<void*>(eav.get()), static_cast<void*>(eav.get()));
}

TEST_F(PluginEav, OutlivesTheFactory) {
    const auto eav = create();
    delete plugin.root();
    eav->EAVRepository()->SaveValues(values());

    EXPECT_EQ(database.count("eav_values"), 1);
}

TEST_F(PluginEav, LaysOutThroughSlotOneAndIgnoresTransactionsThroughTheNextThree) {
    const auto eav = create();
    database.drop();
    slot<void()>::call(eav.get(), 4);
    slot<void()>::call(eav.get(), 2);
    slot<void()>::call(eav.get(), 3);
    EXPECT_THAT(database.collections(), IsEmpty());
    slot<void()>::call(eav.get(), 1);

    EXPECT_THAT(database.collections(), ElementsAre("eav_events", "eav_values"));
}

TEST_F(PluginEav, HandsOutItsRepositoryThroughSlotFive) {
    const auto eav = create();

    EXPECT_EQ(slot<IEAVRepository*()>::call(eav.get(), 5), eav->EAVRepository());
    EXPECT_NE(eav->EAVRepository(), nullptr);
}

TEST_F(PluginEav, ServesValuesThroughItsSlots) {
    using result = std::shared_ptr<std::map<int, std::list<model::dev_value>>>;
    const auto eav = create();
    auto* repository = eav->EAVRepository();
    slot<void(const std::list<model::dev_value>&)>::call(repository, 1, values());
    EXPECT_EQ(database.count("eav_values"), 1);

    const auto found = slot<result(const model::filter_eav&)>::call(repository, 3, everything());
    ASSERT_EQ(found->size(), 1u);
    EXPECT_EQ(found->begin()->second.front().obis_code, sampleValue().obis_code);
    slot<void(const model::filter_eav&)>::call(repository, 5, everything());
    EXPECT_EQ(database.count("eav_values"), 0);
}

TEST_F(PluginEav, ServesEventsThroughItsSlots) {
    using result = std::shared_ptr<std::map<int, std::list<model::dev_event>>>;
    const auto eav = create();
    auto* repository = eav->EAVRepository();
    slot<void(const std::list<model::dev_event>&)>::call(repository, 2, events());
    EXPECT_EQ(database.count("eav_events"), 1);

    const auto found = slot<result(const model::filter_eav&)>::call(repository, 4, everything());
    ASSERT_EQ(found->size(), 1u);
    EXPECT_EQ(found->begin()->second.front().event_code, sampleEvent().event_code);
    slot<void(const model::filter_eav&)>::call(repository, 6, everything());
    EXPECT_EQ(database.count("eav_events"), 0);
}

TEST_F(PluginEav, IsRefusedByTheDriverWithoutAUrl) {
    for (const QJsonObject& settings : {QJsonObject{}, QJsonObject{{"url"_q, true}}}) {
        EXPECT_THROW(plugin.factory()->CreateEavDatabaseInst(settings, nullptr),
                     mongocxx::v1::exception);
    }
    EXPECT_THAT(database.collections(), IsEmpty());
}

TEST_F(PluginEav, IsNotCreatedWhenTheServerCannotBeReached) {
    EXPECT_THROW(
        plugin.factory()->CreateEavDatabaseInst(settingsFor(unreachableMongoUrl()), nullptr),
        mongocxx::v1::exception);
}

} // namespace
