#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/ieav_database.h"
#include "interfaces/imessages_database.h"
#include "tests/host/demo/fake_dl_repository.h"
#include "tests/host/demo/fake_driver_store.h"
#include "tests/host/demo/fake_eav_repository.h"
#include "tests/host/demo/fake_ul_repository.h"

#include <memory>

namespace test_support {

/// What a database object does besides handing out its repositories: nothing.
template <class Interface>
class FakeDatabase : public Interface {
public:
    void CreateDatabase() override {}
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
};

class FakeMessages final : public FakeDatabase<interfaces::IMessagesDatabase> {
public:
    FakeMessages(FakeUlRepository& uplinks, FakeDlRepository& downlinks)
        : m_uplinks(uplinks), m_downlinks(downlinks) {}
    interfaces::IULAPPMessageRepository* UlMessageRepository() override { return &m_uplinks; }
    interfaces::IDLAPPMessageRepository* DlMessageRepository() override { return &m_downlinks; }

private:
    FakeUlRepository& m_uplinks;
    FakeDlRepository& m_downlinks;
};

class FakeEav final : public FakeDatabase<interfaces::IEAVDatabase> {
public:
    explicit FakeEav(FakeEavRepository& repository) : m_repository(repository) {}
    interfaces::IEAVRepository* EAVRepository() override { return &m_repository; }

private:
    FakeEavRepository& m_repository;
};

class FakeClients final : public FakeDatabase<interfaces::IDeviceClientsDatabase> {
public:
    explicit FakeClients(FakeStores& stores) : m_registry(stores) {}
    interfaces::IDeviceClientsRepository* DeviceClientsRepository() override { return &m_registry; }

private:
    FakeRegistry m_registry;
};

/// A plug-in whose stores are in memory; they are the factory's.
class FakeFactory final : public interfaces::IDatabaseFactory {
public:
    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& /*settings*/, QObject* /*parent*/) override {
        return std::make_shared<FakeMessages>(uplinks, downlinks);
    }
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& /*settings*/,
                                                                    QObject* /*parent*/) override {
        return std::make_shared<FakeEav>(eav);
    }
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& /*settings*/,
                                                                    QObject* /*parent*/) override {
        return std::make_shared<FakeDriverState>(stores);
    }
    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& /*settings*/, QObject* /*parent*/) override {
        return std::make_shared<FakeClients>(stores);
    }

    FakeUlRepository uplinks;
    FakeDlRepository downlinks;
    FakeEavRepository eav;
    FakeStores stores;
};

} // namespace test_support
