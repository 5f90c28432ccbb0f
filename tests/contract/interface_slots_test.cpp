#include "tests/contract/recording_databases.h"
#include "tests/contract/recording_states.h"
#include "tests/support/qt_printers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace virtual_table;
using testing::ElementsAre;

namespace virtual_table {

void PrintTo(const call& call, std::ostream* out) {
    *out << call.operation << testing::PrintToString(call.arguments);
}

} // namespace virtual_table

namespace {

TEST(InterfaceSlots, OfTheFactory) {
    recording_factory recorder;
    interfaces::IDatabaseFactory* object = &recorder;
    const QJsonObject settings;
    auto* parent = nowhere<QObject>(0x10);
    using namespace interfaces;

    EXPECT_EQ((slot<std::shared_ptr<IMessagesDatabase>(const QJsonObject&, QObject*)>::call(
                   object, 1, settings, parent))
                  .get(),
              nowhere<IMessagesDatabase>(0x100));
    EXPECT_EQ((slot<std::shared_ptr<IEAVDatabase>(const QJsonObject&, QObject*)>::call(
                   object, 2, settings, parent))
                  .get(),
              nowhere<IEAVDatabase>(0x200));
    EXPECT_EQ((slot<std::shared_ptr<IDriverState>(const QJsonObject&, QObject*)>::call(
                   object, 3, settings, parent))
                  .get(),
              nowhere<IDriverState>(0x300));
    EXPECT_EQ((slot<std::shared_ptr<IDeviceClientsDatabase>(const QJsonObject&, QObject*)>::call(
                   object, 4, settings, parent))
                  .get(),
              nowhere<IDeviceClientsDatabase>(0x400));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("CreateMessageDatabaseInst", &settings, parent),
                            called("CreateEavDatabaseInst", &settings, parent),
                            called("CreateDriverStateInst", &settings, parent),
                            called("CreateClientDatabaseInst", &settings, parent)));
}

template <typename Recorder, typename Interface>
void expectTheSlotsOfIDatabaseFirst() {
    Recorder recorder;
    Interface* object = &recorder;
    static_assert(std::is_base_of_v<interfaces::IDatabase, Interface>);
    EXPECT_EQ(static_cast<void*>(static_cast<interfaces::IDatabase*>(object)), object);
    for (const std::size_t number : {1, 2, 3, 4}) {
        slot<void()>::call(object, number);
    }
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("CreateDatabase"), called("CommitTransaction"),
                            called("RollbackTransaction"), called("BeginTransaction")));
}

TEST(InterfaceSlots, OfTheDatabasesBeginWithTheCommonOnes) {
    expectTheSlotsOfIDatabaseFirst<recording_messages_database, interfaces::IMessagesDatabase>();
    expectTheSlotsOfIDatabaseFirst<recording_eav_database, interfaces::IEAVDatabase>();
    expectTheSlotsOfIDatabaseFirst<recording_clients_database,
                                   interfaces::IDeviceClientsDatabase>();
}

TEST(InterfaceSlots, OfTheMessageDatabase) {
    recording_messages_database recorder;
    interfaces::IMessagesDatabase* object = &recorder;

    EXPECT_EQ(slot<interfaces::IULAPPMessageRepository*()>::call(object, 5),
              nowhere<interfaces::IULAPPMessageRepository>(0x500));
    EXPECT_EQ(slot<interfaces::IDLAPPMessageRepository*()>::call(object, 6),
              nowhere<interfaces::IDLAPPMessageRepository>(0x600));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("UlMessageRepository"), called("DlMessageRepository")));
}

TEST(InterfaceSlots, OfTheEavDatabase) {
    recording_eav_database recorder;
    interfaces::IEAVDatabase* object = &recorder;

    EXPECT_EQ(slot<interfaces::IEAVRepository*()>::call(object, 5),
              nowhere<interfaces::IEAVRepository>(0x500));
    EXPECT_THAT(recorder.calls(), ElementsAre(called("EAVRepository")));
}

TEST(InterfaceSlots, OfTheClientDatabase) {
    recording_clients_database recorder;
    interfaces::IDeviceClientsDatabase* object = &recorder;

    EXPECT_EQ(slot<interfaces::IDeviceClientsRepository*()>::call(object, 5),
              nowhere<interfaces::IDeviceClientsRepository>(0x500));
    EXPECT_THAT(recorder.calls(), ElementsAre(called("DeviceClientsRepository")));
}

TEST(InterfaceSlots, OfTheUplinkRepository) {
    recording_uplinks recorder;
    interfaces::IULAPPMessageRepository* object = &recorder;
    const model::message message;
    const model::filter_roll filter;

    slot<void(const model::message&)>::call(object, 1, message);
    EXPECT_EQ(
        (slot<recording_uplinks::result(const model::filter_roll&)>::call(object, 2, filter)).get(),
        nowhere<recording_uplinks::result::element_type>(0x100));
    slot<void(const model::filter_roll&)>::call(object, 3, filter);
    EXPECT_EQ((slot<std::pair<QString, QString>(int)>::call(object, 4, -7)),
              std::make_pair(QStringLiteral("protocol"), QStringLiteral("hw_type")));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("SaveMessage", &message), called("GetMessages", &filter),
                            called("DeleteMessages", &filter),
                            called("GetDeviceProtocolHWType", -7)));
}

TEST(InterfaceSlots, OfTheDownlinkRepository) {
    recording_downlinks recorder;
    interfaces::IDLAPPMessageRepository* object = &recorder;
    using status = model::dl_message::dl_status;
    model::dl_message message;
    const QString id = QStringLiteral("id");
    const model::filter_dl filter;
    const std::list<int> devices;
    const QDateTime from;
    const QDateTime to;

    slot<void(model::dl_message&)>::call(object, 1, message);
    EXPECT_EQ(message.db_id, QStringLiteral("written back"));
    EXPECT_EQ((slot<model::dl_message(const QString&)>::call(object, 2, id)).db_id, id);
    EXPECT_EQ(
        (slot<recording_downlinks::result(const model::filter_dl&)>::call(object, 3, filter)).get(),
        nowhere<recording_downlinks::result::element_type>(0x300));
    EXPECT_EQ(
        (slot<recording_downlinks::result(const model::filter_dl&)>::call(object, 4, filter)).get(),
        nowhere<recording_downlinks::result::element_type>(0x400));
    slot<void(const QString&, status)>::call(object, 5, id, status::TIMEOUT);
    slot<void(const QString&)>::call(object, 6, id);
    slot<void(const std::list<int>&, const QDateTime&, const QDateTime&)>::call(object, 7, devices,
                                                                                from, to);
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("SaveMessage", &message), called("GetById", &id),
                            called("GetCommands", &filter), called("GetNotAckCommands", &filter),
                            called("SetStatus", &id, 3), called("AckCommand", &id),
                            called("DeleteMessages", &devices, &from, &to)));
}

TEST(InterfaceSlots, OfTheEavRepository) {
    recording_eav_repository recorder;
    interfaces::IEAVRepository* object = &recorder;
    const std::list<model::dev_value> values;
    const std::list<model::dev_event> events;
    const model::filter_eav filter;

    slot<void(const std::list<model::dev_value>&)>::call(object, 1, values);
    slot<void(const std::list<model::dev_event>&)>::call(object, 2, events);
    EXPECT_EQ(
        (slot<recording_eav_repository::values(const model::filter_eav&)>::call(object, 3, filter))
            .get(),
        nowhere<recording_eav_repository::values::element_type>(0x300));
    EXPECT_EQ(
        (slot<recording_eav_repository::events(const model::filter_eav&)>::call(object, 4, filter))
            .get(),
        nowhere<recording_eav_repository::events::element_type>(0x400));
    slot<void(const model::filter_eav&)>::call(object, 5, filter);
    slot<void(const model::filter_eav&)>::call(object, 6, filter);
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("SaveValues", &values), called("SaveEvents", &events),
                            called("GetValues", &filter), called("GetEvents", &filter),
                            called("DeleteValues", &filter), called("DeleteEvents", &filter)));
}

TEST(InterfaceSlots, OfTheClientRepository) {
    recording_clients_repository recorder;
    interfaces::IDeviceClientsRepository* object = &recorder;

    EXPECT_EQ((slot<std::list<QString>(int)>::call(object, 1, 7)),
              std::list<QString>{QStringLiteral("client")});
    EXPECT_EQ((slot<std::pair<QString, QString>(int)>::call(object, 2, 8)),
              std::make_pair(QStringLiteral("protocol"), QStringLiteral("hw_type")));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("GetDeviceClients", 7), called("GetDeviceInfo", 8)));
}

TEST(InterfaceSlots, OneToSevenOfTheDriverState) {
    recording_state recorder;
    interfaces::IDriverState* object = &recorder;
    using value_type = recording_state::number_or_bytes;
    const QString text = QStringLiteral("text");
    const value_type value = 5;

    slot<void(const QString&)>::call(object, 1, text);
    EXPECT_EQ(&slot<const QString&()>::call(object, 2), &recorder.prefix);
    EXPECT_TRUE(slot<bool(int)>::call(object, 3, 73));
    EXPECT_TRUE((slot<bool(int, bool)>::call(object, 4, 74, true)));
    EXPECT_TRUE(slot<bool(int)>::call(object, 5, 75));
    EXPECT_EQ((slot<value_type(int, const QString&)>::call(object, 6, 76, text)), value_type{2.5});
    slot<void(int, const QString&, const value_type&)>::call(object, 7, 77, text, value);
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("SetPrefix", &text), called("GetPrefix"), called("Pull", 73),
                            called("Push", 74, 1), called("Delete", 75),
                            called("GetValue", 76, &text), called("SetValue", 77, &text, &value)));
}

TEST(InterfaceSlots, EightToFourteenOfTheDriverState) {
    recording_state recorder;
    interfaces::IDriverState* object = &recorder;
    const QString first = QStringLiteral("first");
    const QString second = QStringLiteral("second");
    const QVariant value;
    const QList<int> devices;
    const QDateTime from;
    const QDateTime to;

    EXPECT_EQ((slot<QVariant(int, const QString&)>::call(object, 8, 78, first)), QVariant(8));
    slot<void(int, const QString&, const QVariant&)>::call(object, 9, 79, first, value);
    EXPECT_EQ(slot<QJsonObject(int)>::call(object, 10, 80),
              (QJsonObject{{QStringLiteral("all"), 80}}));
    EXPECT_EQ(
        (slot<QList<QVariant>(const QString&, const QString&)>::call(object, 11, first, second)),
        QList<QVariant>{11});
    EXPECT_TRUE((slot<bool(const QList<int>&, const QDateTime&, const QDateTime&)>::call(
        object, 12, devices, from, to)));
    EXPECT_EQ((slot<recording_state::all_states(const QString&, const QString&)>::call(
                   object, 13, first, second))
                  .get(),
              nowhere<recording_state::all_states::element_type>(0x1300));
    EXPECT_EQ(slot<interfaces::IDriverDLqueue*()>::call(object, 14),
              nowhere<interfaces::IDriverDLqueue>(0x1400));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("GetValueAsVariant", 78, &first),
                            called("SetValueAsVariant", 79, &first, &value), called("GetAll", 80),
                            called("GetIDs", &first, &second),
                            called("DeleteDevices", &devices, &from, &to),
                            called("GetAllStates", &first, &second), called("DLqueue")));
}

TEST(InterfaceSlots, OfTheDownlinkQueue) {
    recording_queue recorder;
    interfaces::IDriverDLqueue* object = &recorder;
    const model::dl_queues queues;
    const QList<int> devices;

    EXPECT_TRUE((slot<model::dl_queues(int)>::call(object, 1, 71)).lock);
    EXPECT_TRUE(
        (slot<bool(int, const model::dl_queues&, bool)>::call(object, 2, 72, queues, true)));
    EXPECT_TRUE(slot<bool(int)>::call(object, 3, 73));
    EXPECT_TRUE(slot<bool(const QList<int>&)>::call(object, 4, devices));
    EXPECT_THAT(recorder.calls(),
                ElementsAre(called("Pull", 71), called("Push", 72, &queues, 1),
                            called("Delete", 73), called("DeleteDevices", &devices)));
}

template <typename Interface>
void expectTheSlotsOfAPersistentStore() {
    recording_persistent<Interface> recorder;
    Interface* object = &recorder;
    const QJsonObject state;

    slot<void()>::call(object, 1);
    EXPECT_TRUE((slot<bool(int, const QJsonObject&)>::call(object, 2, 72, state)));
    EXPECT_EQ(slot<QJsonObject(int)>::call(object, 3, 73),
              (QJsonObject{{QStringLiteral("of"), 73}}));
    EXPECT_TRUE(slot<bool(int)>::call(object, 4, 74));
    EXPECT_THAT(recorder.calls(), ElementsAre(called("Create"), called("Save", 72, &state),
                                              called("Get", 73), called("Delete", 74)));
}

TEST(InterfaceSlots, OfThePersistentStores) {
    expectTheSlotsOfAPersistentStore<interfaces::IDriverDLqueuePersistent>();
    expectTheSlotsOfAPersistentStore<interfaces::IDriverStatePersistent>();
}

template <typename Interface>
constexpr bool isPlainInterface =
    std::is_abstract_v<Interface> && sizeof(Interface) == sizeof(void*);

TEST(Interfaces, AreAbstractAndHaveNoDataMembers) {
    using namespace interfaces;
    EXPECT_TRUE(isPlainInterface<IDatabaseFactory>);
    EXPECT_TRUE(isPlainInterface<IDatabase>);
    EXPECT_TRUE(isPlainInterface<IMessagesDatabase>);
    EXPECT_TRUE(isPlainInterface<IEAVDatabase>);
    EXPECT_TRUE(isPlainInterface<IDeviceClientsDatabase>);
    EXPECT_TRUE(isPlainInterface<IULAPPMessageRepository>);
    EXPECT_TRUE(isPlainInterface<IDLAPPMessageRepository>);
    EXPECT_TRUE(isPlainInterface<IEAVRepository>);
    EXPECT_TRUE(isPlainInterface<IDeviceClientsRepository>);
    EXPECT_TRUE(isPlainInterface<IDriverState>);
    EXPECT_TRUE(isPlainInterface<IDriverDLqueue>);
    EXPECT_TRUE(isPlainInterface<IDriverDLqueuePersistent>);
    EXPECT_TRUE(isPlainInterface<IDriverStatePersistent>);
}

TEST(Interfaces, HaveAVirtualDestructorOrNone) {
    using namespace interfaces;
    EXPECT_TRUE(std::has_virtual_destructor_v<IDatabaseFactory>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IDatabase>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IULAPPMessageRepository>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IDLAPPMessageRepository>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IEAVRepository>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IDeviceClientsRepository>);
    EXPECT_FALSE(std::has_virtual_destructor_v<IDriverState>);
    EXPECT_FALSE(std::has_virtual_destructor_v<IDriverDLqueue>);
    EXPECT_FALSE(std::has_virtual_destructor_v<IDriverDLqueuePersistent>);
    EXPECT_FALSE(std::has_virtual_destructor_v<IDriverStatePersistent>);
}

template <typename Recorder, typename Interface>
void expectTheDestructorAheadOfTheSlots() {
    bool destroyed = false;
    Interface* object = new Recorder{&destroyed};
    // Entry 0 destroys, entry 1 destroys and frees.
    entryOf<void (*)(Interface*)>(object, 1)(object);
    EXPECT_TRUE(destroyed);
}

TEST(Interfaces, HaveTheirDestructorAheadOfTheSlots) {
    using namespace interfaces;
    expectTheDestructorAheadOfTheSlots<recording_factory, IDatabaseFactory>();
    expectTheDestructorAheadOfTheSlots<recording_messages_database, IMessagesDatabase>();
    expectTheDestructorAheadOfTheSlots<recording_eav_database, IEAVDatabase>();
    expectTheDestructorAheadOfTheSlots<recording_clients_database, IDeviceClientsDatabase>();
    expectTheDestructorAheadOfTheSlots<recording_uplinks, IULAPPMessageRepository>();
    expectTheDestructorAheadOfTheSlots<recording_downlinks, IDLAPPMessageRepository>();
    expectTheDestructorAheadOfTheSlots<recording_eav_repository, IEAVRepository>();
    expectTheDestructorAheadOfTheSlots<recording_clients_repository, IDeviceClientsRepository>();
}

} // namespace
