#include "tests/host/demo/spoiling_plugin.h"

#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"

#include <QPluginLoader>

#include <stdexcept>
#include <utility>

namespace {

class SpoilingRepository final : public interfaces::IULAPPMessageRepository {
public:
    explicit SpoilingRepository(interfaces::IULAPPMessageRepository& spoiled)
        : m_spoiled(spoiled) {}

    void SaveMessage(const model::message& message) override {
        const auto how = qEnvironmentVariable("KELVRO_SPOIL");
        const bool third = ++m_saved == 3;
        auto stored = message;
        if (third && how == QLatin1String("lose")) {
            return;
        }
        if (third && how == QLatin1String("alter")) {
            ++stored.rssi;
        }
        m_spoiled.SaveMessage(stored);
        if (third && how == QLatin1String("repeat")) {
            stored.unique_id -= 1'000'000;
            m_spoiled.SaveMessage(stored);
        }
    }
    std::shared_ptr<std::map<int, std::list<model::message>>>
    GetMessages(const model::filter_roll& filter) override {
        return m_spoiled.GetMessages(filter);
    }
    void DeleteMessages(const model::filter_roll& filter) override {
        m_spoiled.DeleteMessages(filter);
    }
    std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) override {
        return m_spoiled.GetDeviceProtocolHWType(modem_id);
    }

private:
    interfaces::IULAPPMessageRepository& m_spoiled;
    int m_saved = 0;
};

class SpoilingDatabase final : public interfaces::IMessagesDatabase {
public:
    explicit SpoilingDatabase(std::shared_ptr<interfaces::IMessagesDatabase> spoiled)
        : m_spoiled(std::move(spoiled)), m_uplinks(*m_spoiled->UlMessageRepository()) {}

    void CreateDatabase() override { m_spoiled->CreateDatabase(); }
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
    interfaces::IULAPPMessageRepository* UlMessageRepository() override { return &m_uplinks; }
    interfaces::IDLAPPMessageRepository* DlMessageRepository() override {
        return m_spoiled->DlMessageRepository();
    }

private:
    std::shared_ptr<interfaces::IMessagesDatabase> m_spoiled;
    SpoilingRepository m_uplinks;
};

} // namespace

interfaces::IDatabaseFactory& SpoilingPlugin::spoiled() {
    static QPluginLoader loader(qEnvironmentVariable("KELVRO_SPOILED_PLUGIN"));
    auto* const factory = qobject_cast<interfaces::IDatabaseFactory*>(loader.instance());
    if (factory == nullptr) {
        throw std::runtime_error(loader.errorString().toStdString());
    }
    return *factory;
}

std::shared_ptr<interfaces::IMessagesDatabase>
SpoilingPlugin::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<SpoilingDatabase>(
        spoiled().CreateMessageDatabaseInst(settings, parent));
}
std::shared_ptr<interfaces::IEAVDatabase>
SpoilingPlugin::CreateEavDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return spoiled().CreateEavDatabaseInst(settings, parent);
}
std::shared_ptr<interfaces::IDriverState>
SpoilingPlugin::CreateDriverStateInst(const QJsonObject& settings, QObject* parent) {
    return spoiled().CreateDriverStateInst(settings, parent);
}
std::shared_ptr<interfaces::IDeviceClientsDatabase>
SpoilingPlugin::CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return spoiled().CreateClientDatabaseInst(settings, parent);
}
