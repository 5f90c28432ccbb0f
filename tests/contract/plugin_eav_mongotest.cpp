#include "interfaces/ieav_database.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/virtual_table.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"

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
    std::shared_ptr<IEAVDatabase> create() {
        return plugin.factory()->CreateEavDatabaseInst(settingsFor(mongoUrl()), nullptr);
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

TEST_F(PluginEav, HasItsInterfaceBehindTheQtObject) {
    const auto eav = create();

    EXPECT_EQ(dynamic_cast<void*>(eav.get()), dynamic_cast<QObject*>(eav.get()));
    EXPECT_NE(dynamic_cast<void*>(eav.get()), static_cast<void*>(eav.get()));
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
