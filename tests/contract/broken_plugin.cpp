#include "tests/contract/broken_plugin.h"

#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_state.h"

#include <QLoggingCategory>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace {

using namespace interfaces;
using test_support::ForwardingRecords;
using test_support::ForwardingUplinks;

bool fault(const char* name) {
    return qEnvironmentVariable("KELVRO_FAULT") == QLatin1String(name);
}

class BrokenUplinks final : public ForwardingUplinks {
public:
    using ForwardingUplinks::ForwardingUplinks;

    void SaveMessage(const model::message& message) override {
        if (!fault("swallows an exception")) {
            ForwardingUplinks::SaveMessage(message);
            return;
        }
        try {
            ForwardingUplinks::SaveMessage(message);
        } catch (...) {
            qWarning("a message is not stored");
        }
    }
    std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) override {
        if (fault("crashes")) {
            std::abort();
        }
        return ForwardingUplinks::GetDeviceProtocolHWType(modem_id);
    }
};

class BrokenDownlinks final : public IDLAPPMessageRepository {
public:
    explicit BrokenDownlinks(IDLAPPMessageRepository& whole) : m_whole(whole) {}

    void SaveMessage(model::dl_message& message) override { m_whole.SaveMessage(message); }
    model::dl_message GetById(const QString& id) override {
        if (!fault("throws something else")) {
            return m_whole.GetById(id);
        }
        try {
            return m_whole.GetById(id);
        } catch (const QString& text) {
            throw std::runtime_error(text.toStdString());
        }
    }
    std::shared_ptr<std::map<int, std::list<model::dl_message>>>
    GetCommands(const model::filter_dl& filter) override {
        auto narrower = filter;
        if (fault("excludes the end of a period")) {
            narrower.end = filter.end.addSecs(-1);
        }
        return m_whole.GetCommands(narrower);
    }
    std::shared_ptr<std::map<int, std::list<model::dl_message>>>
    GetNotAckCommands(const model::filter_dl& filter) override {
        return m_whole.GetNotAckCommands(filter);
    }
    void SetStatus(const QString& id, model::dl_message::dl_status status) override {
        m_whole.SetStatus(id, status);
    }
    void AckCommand(const QString& id) override { m_whole.AckCommand(id); }
    void DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                        const QDateTime& to) override {
        m_whole.DeleteMessages(modem_ids, from, to);
    }

private:
    IDLAPPMessageRepository& m_whole;
};

class BrokenMessages final : public IMessagesDatabase {
public:
    explicit BrokenMessages(std::shared_ptr<IMessagesDatabase> whole)
        : m_whole(std::move(whole)), m_uplinks(*m_whole->UlMessageRepository()),
          m_moved(*m_whole->UlMessageRepository()), m_downlinks(*m_whole->DlMessageRepository()) {}

    void CreateDatabase() override { m_whole->CreateDatabase(); }
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}
    IULAPPMessageRepository* UlMessageRepository() override {
        m_odd = !m_odd;
        return m_odd && fault("moves a repository") ? &m_moved : &m_uplinks;
    }
    IDLAPPMessageRepository* DlMessageRepository() override { return &m_downlinks; }

private:
    std::shared_ptr<IMessagesDatabase> m_whole;
    BrokenUplinks m_uplinks;
    BrokenUplinks m_moved;
    BrokenDownlinks m_downlinks;
    bool m_odd = false;
};

/// The int that a number could have been.
QVariant withoutFraction(const QVariant& value) {
    const double number = value.toDouble();
    const bool isInt = value.type() == QVariant::Double && std::trunc(number) == number &&
                       std::abs(number) < std::numeric_limits<int>::max();
    return isInt ? QVariant(static_cast<int>(number)) : value;
}

class BrokenRecords final : public ForwardingRecords {
public:
    using ForwardingRecords::ForwardingRecords;

    void SaveValues(const std::list<model::dev_value>& values) override {
        auto fewer = values;
        if (fault("loses a record") && fewer.size() > 100) {
            fewer.erase(std::next(fewer.begin(), 100));
        }
        ForwardingRecords::SaveValues(fewer);
    }
    void SaveEvents(const std::list<model::dev_event>& events) override {
        auto changed = events;
        if (fault("changes a member")) {
            for (auto& event : changed) {
                event.message_id.clear();
            }
        }
        ForwardingRecords::SaveEvents(changed);
    }
    std::shared_ptr<std::map<int, std::list<model::dev_value>>>
    GetValues(const model::filter_eav& filter) override {
        while (fault("hangs") && filter.first_last && filter.obis_codes.empty()) {
            pause();
        }
        auto found = ForwardingRecords::GetValues(filter);
        if (fault("gives numbers as ints")) {
            for (auto& [device, values] : *found) {
                for (auto& value : values) {
                    value.value = withoutFraction(value.value);
                }
            }
        }
        return found;
    }
    std::shared_ptr<std::map<int, std::list<model::dev_event>>>
    GetEvents(const model::filter_eav& filter) override {
        if (fault("gives a null pointer") && filter.modem_ids.empty()) {
            return nullptr;
        }
        auto found = ForwardingRecords::GetEvents(filter);
        if (fault("gives the oldest first")) {
            for (auto& [device, events] : *found) {
                events.reverse();
            }
        }
        return found;
    }
    void DeleteValues(const model::filter_eav& filter) override {
        auto wider = filter;
        if (fault("deletes other tags")) {
            wider.tags.clear();
        }
        ForwardingRecords::DeleteValues(wider);
    }
};

class BrokenStates final : public IDriverState {
public:
    explicit BrokenStates(std::shared_ptr<IDriverState> whole) : m_whole(std::move(whole)) {}

    void SetPrefix(const QString& prefix) override { m_whole->SetPrefix(prefix); }
    const QString& GetPrefix() override { return m_whole->GetPrefix(); }
    bool Pull(int modem_id) override { return m_whole->Pull(modem_id); }
    bool Push(int modem_id, bool persist) override {
        return (persist && fault("persists nothing")) || m_whole->Push(modem_id, persist);
    }
    bool Delete(int modem_id) override { return m_whole->Delete(modem_id); }
    std::variant<int, double, QByteArray> GetValue(int modem_id, const QString& name) override {
        auto value = m_whole->GetValue(modem_id, name);
        const auto* const number = std::get_if<double>(&value);
        if (number != nullptr && fault("gives a state's numbers as ints")) {
            const auto other = withoutFraction(*number);
            return other.type() == QVariant::Int ? other.toInt() : value;
        }
        return value;
    }
    void SetValue(int modem_id, const QString& name,
                  const std::variant<int, double, QByteArray>& value) override {
        m_whole->SetValue(modem_id, name, value);
    }
    QVariant GetValueAsVariant(int modem_id, const QString& name) override {
        return m_whole->GetValueAsVariant(modem_id, name);
    }
    void SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) override {
        m_whole->SetValueAsVariant(modem_id, name, value);
    }
    QJsonObject GetAll(int modem_id) override { return m_whole->GetAll(modem_id); }
    QList<QVariant> GetIDs(const QString& first, const QString& second) override {
        return m_whole->GetIDs(first, second);
    }
    bool DeleteDevices(const QList<int>& modem_ids, const QDateTime& from,
                       const QDateTime& to) override {
        return m_whole->DeleteDevices(modem_ids, from, to);
    }
    std::shared_ptr<QHash<int, QJsonObject>> GetAllStates(const QString& first,
                                                          const QString& second) override {
        return m_whole->GetAllStates(first, second);
    }
    IDriverDLqueue* DLqueue() override { return m_whole->DLqueue(); }

private:
    std::shared_ptr<IDriverState> m_whole;
};

} // namespace

BrokenPlugin::BrokenPlugin() {
    if (fault("throws when it is loaded")) {
        throw std::runtime_error("this driver does not feel well");
    }
    if (fault("logs nothing")) {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    }
    if (fault("talks")) {
        std::puts(R"({"item": "plugin.metadata", "result": "failed"})");
        std::fflush(stdout);
    }
}

std::shared_ptr<IMessagesDatabase>
BrokenPlugin::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) {
    if (fault("adopts the parent") && parent != nullptr) {
        new QObject(parent);
    }
    try {
        return std::make_shared<BrokenMessages>(real().CreateMessageDatabaseInst(settings, parent));
    } catch (...) {
        if (fault("gives no object")) {
            return nullptr;
        }
        throw;
    }
}
std::shared_ptr<IEAVDatabase> BrokenPlugin::CreateEavDatabaseInst(const QJsonObject& settings,
                                                                  QObject* parent) {
    static thread_local std::shared_ptr<IEAVDatabase> kept;
    auto made = std::make_shared<test_support::ValuesWith<BrokenRecords>>(
        real().CreateEavDatabaseInst(settings, parent));
    if (fault("keeps an object")) {
        kept = made;
    }
    return made;
}
std::shared_ptr<IDriverState> BrokenPlugin::CreateDriverStateInst(const QJsonObject& settings,
                                                                  QObject* parent) {
    return std::make_shared<BrokenStates>(real().CreateDriverStateInst(settings, parent));
}
