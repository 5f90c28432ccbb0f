#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"

#include <QObject>
#include <QPluginLoader>

#include <stdexcept>
#include <utility>

/// For plug-ins that do one thing otherwise than the plug-in of KELVRO_REAL_PLUGIN: these do all as
/// it does, and what is to be done otherwise is overridden.
namespace test_support {

class ForwardingPlugin : public QObject, public interfaces::IDatabaseFactory {
    Q_OBJECT
    Q_INTERFACES(interfaces::IDatabaseFactory)

public:
    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override {
        return real().CreateMessageDatabaseInst(settings, parent);
    }
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override {
        return real().CreateEavDatabaseInst(settings, parent);
    }
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override {
        return real().CreateDriverStateInst(settings, parent);
    }
    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) override {
        return real().CreateClientDatabaseInst(settings, parent);
    }

protected:
    static interfaces::IDatabaseFactory& real() {
        // Loaded once, whatever thread comes first: a loader has no lock.
        static interfaces::IDatabaseFactory& factory = []() -> interfaces::IDatabaseFactory& {
            QPluginLoader loader(qEnvironmentVariable("KELVRO_REAL_PLUGIN"));
            auto* const loaded = qobject_cast<interfaces::IDatabaseFactory*>(loader.instance());
            if (loaded == nullptr) {
                throw std::runtime_error(loader.errorString().toStdString());
            }
            return *loaded;
        }();
        return factory;
    }
};

class ForwardingUplinks : public interfaces::IULAPPMessageRepository {
public:
    explicit ForwardingUplinks(interfaces::IULAPPMessageRepository& real) : m_real(real) {}

    void SaveMessage(const model::message& message) override { m_real.SaveMessage(message); }
    std::shared_ptr<std::map<int, std::list<model::message>>>
    GetMessages(const model::filter_roll& filter) override {
        return m_real.GetMessages(filter);
    }
    void DeleteMessages(const model::filter_roll& filter) override {
        m_real.DeleteMessages(filter);
    }
    std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) override {
        return m_real.GetDeviceProtocolHWType(modem_id);
    }

private:
    interfaces::IULAPPMessageRepository& m_real;
};

class ForwardingRecords : public interfaces::IEAVRepository {
public:
    explicit ForwardingRecords(interfaces::IEAVRepository& real) : m_real(real) {}

    void SaveValues(const std::list<model::dev_value>& values) override {
        m_real.SaveValues(values);
    }
    void SaveEvents(const std::list<model::dev_event>& events) override {
        m_real.SaveEvents(events);
    }
    std::shared_ptr<std::map<int, std::list<model::dev_value>>>
    GetValues(const model::filter_eav& filter) override {
        return m_real.GetValues(filter);
    }
    std::shared_ptr<std::map<int, std::list<model::dev_event>>>
    GetEvents(const model::filter_eav& filter) override {
        return m_real.GetEvents(filter);
    }
    void DeleteValues(const model::filter_eav& filter) override { m_real.DeleteValues(filter); }
    void DeleteEvents(const model::filter_eav& filter) override { m_real.DeleteEvents(filter); }

private:
    interfaces::IEAVRepository& m_real;
};

/// A message store with other uplinks, which are made of the real ones.
template <class Uplinks>
class MessagesWith : public interfaces::IMessagesDatabase {
public:
    explicit MessagesWith(std::shared_ptr<interfaces::IMessagesDatabase> real)
        : m_real(std::move(real)), m_uplinks(*m_real->UlMessageRepository()) {}

    void CreateDatabase() override { m_real->CreateDatabase(); }
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
    interfaces::IULAPPMessageRepository* UlMessageRepository() override { return &m_uplinks; }
    interfaces::IDLAPPMessageRepository* DlMessageRepository() override {
        return m_real->DlMessageRepository();
    }

private:
    std::shared_ptr<interfaces::IMessagesDatabase> m_real;
    Uplinks m_uplinks;
};

/// A value store with other records, which are made of the real ones.
template <class Records>
class ValuesWith final : public interfaces::IEAVDatabase {
public:
    explicit ValuesWith(std::shared_ptr<interfaces::IEAVDatabase> real)
        : m_real(std::move(real)), m_records(*m_real->EAVRepository()) {}

    void CreateDatabase() override { m_real->CreateDatabase(); }
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
    interfaces::IEAVRepository* EAVRepository() override { return &m_records; }

private:
    std::shared_ptr<interfaces::IEAVDatabase> m_real;
    Records m_records;
};

} // namespace test_support
