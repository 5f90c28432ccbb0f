#include "tests/host/ingest/faulty_plugin.h"

#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"

#include <QPluginLoader>
#include <QStringList>

#include <csignal>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace {

/// Counts the calls, and makes the one that the fault is for with it.
void call(const std::function<void()>& whole, const std::function<void()>& half) {
    static const auto fault = qEnvironmentVariable("KELVRO_FAULT").split(QLatin1Char(' '));
    static int calls = 0;
    if (++calls != fault.value(0).toInt()) {
        return whole();
    }
    const auto how = fault.value(1);
    if (how.endsWith(QLatin1String("after"))) {
        whole();
    } else if (how.endsWith(QLatin1String("within"))) {
        half();
    }
    if (how.startsWith(QLatin1String("kill"))) {
        std::raise(SIGKILL);
    }
    throw std::runtime_error("a fault of the test");
}

template <class Record>
std::list<Record> firstHalf(const std::list<Record>& records) {
    return {records.begin(), std::next(records.begin(), static_cast<int>(records.size() / 2))};
}

class FaultyUplinks final : public interfaces::IULAPPMessageRepository {
public:
    explicit FaultyUplinks(interfaces::IULAPPMessageRepository& real) : m_real(real) {}

    void SaveMessage(const model::message& message) override {
        const auto refused = qEnvironmentVariable("KELVRO_REFUSED_METER");
        if (!refused.isEmpty() && message.hw_type == refused) {
            throw std::runtime_error("no such meters here");
        }
        call([&] { m_real.SaveMessage(message); }, [] {});
    }
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

class FaultyRecords final : public interfaces::IEAVRepository {
public:
    explicit FaultyRecords(interfaces::IEAVRepository& real) : m_real(real) {}

    void SaveValues(const std::list<model::dev_value>& values) override {
        const auto refused = qEnvironmentVariable("KELVRO_REFUSED_CODE");
        std::list<model::dev_value> before;
        for (const auto& value : values) {
            if (!refused.isEmpty() && value.obis_code == refused) {
                m_real.SaveValues(before);
                throw std::runtime_error("no such values here");
            }
            before.push_back(value);
        }
        call([&] { m_real.SaveValues(values); }, [&] { m_real.SaveValues(firstHalf(values)); });
    }
    void SaveEvents(const std::list<model::dev_event>& events) override {
        call([&] { m_real.SaveEvents(events); }, [&] { m_real.SaveEvents(firstHalf(events)); });
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

class FaultyMessageDatabase final : public interfaces::IMessagesDatabase {
public:
    explicit FaultyMessageDatabase(std::shared_ptr<interfaces::IMessagesDatabase> real)
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
    FaultyUplinks m_uplinks;
};

class FaultyEavDatabase final : public interfaces::IEAVDatabase {
public:
    explicit FaultyEavDatabase(std::shared_ptr<interfaces::IEAVDatabase> real)
        : m_real(std::move(real)), m_records(*m_real->EAVRepository()) {}

    void CreateDatabase() override { m_real->CreateDatabase(); }
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
    interfaces::IEAVRepository* EAVRepository() override { return &m_records; }

private:
    std::shared_ptr<interfaces::IEAVDatabase> m_real;
    FaultyRecords m_records;
};

} // namespace

interfaces::IDatabaseFactory& FaultyPlugin::real() {
    static QPluginLoader loader(qEnvironmentVariable("KELVRO_REAL_PLUGIN"));
    auto* const factory = qobject_cast<interfaces::IDatabaseFactory*>(loader.instance());
    if (factory == nullptr) {
        throw std::runtime_error(loader.errorString().toStdString());
    }
    return *factory;
}

std::shared_ptr<interfaces::IMessagesDatabase>
FaultyPlugin::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<FaultyMessageDatabase>(
        real().CreateMessageDatabaseInst(settings, parent));
}
std::shared_ptr<interfaces::IEAVDatabase>
FaultyPlugin::CreateEavDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<FaultyEavDatabase>(real().CreateEavDatabaseInst(settings, parent));
}
std::shared_ptr<interfaces::IDriverState>
FaultyPlugin::CreateDriverStateInst(const QJsonObject& settings, QObject* parent) {
    return real().CreateDriverStateInst(settings, parent);
}
std::shared_ptr<interfaces::IDeviceClientsDatabase>
FaultyPlugin::CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return real().CreateClientDatabaseInst(settings, parent);
}
