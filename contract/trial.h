#pragma once

#include "contract/catalogue.h"
#include "contract/plugin_under_test.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"

#include <QJsonObject>
#include <QString>

#include <memory>
#include <optional>
#include <set>

namespace contract {

/// What a rule works with: the plug-in, objects of each kind, and devices that no other rule has.
///
/// Objects are made when they are first asked for, and kept for the following rules. Everything
/// throws RuleBroken where the plug-in gives no object, and lets through what it throws.
class Trial {
public:
    /// Devices of each rule.
    static constexpr int devices = devicesOfARule;

    Trial(const QString& pluginFile, QJsonObject settings, std::optional<int> registeredDevice);

    /// The rule to come has the devices `firstDevice` and the three after it.
    void begin(int firstDevice) { m_firstDevice = firstDevice; }

    /// The rule's device 0, 1, 2 or 3.
    int device(int index = 0) const { return m_firstDevice + index; }

    /// A device that the client registry knows, if the caller of the program named one.
    std::optional<int> registeredDevice() const { return m_registeredDevice; }

    const QJsonObject& settings() const { return m_settings; }
    PluginUnderTest& plugin() { return m_plugin; }

    std::shared_ptr<interfaces::IMessagesDatabase> makeMessages(QObject* parent = nullptr);
    std::shared_ptr<interfaces::IEAVDatabase> makeEav(QObject* parent = nullptr);
    /// With the prefix set to prefix().
    std::shared_ptr<interfaces::IDriverState> makeStates(QObject* parent = nullptr);
    std::shared_ptr<interfaces::IDeviceClientsDatabase> makeClients(QObject* parent = nullptr);

    interfaces::IMessagesDatabase& messages();
    interfaces::IEAVDatabase& eavDatabase();
    interfaces::IULAPPMessageRepository& uplinks();
    interfaces::IDLAPPMessageRepository& downlinks();
    interfaces::IEAVRepository& eav();
    interfaces::IDriverState& states();
    interfaces::IDriverDLqueue& queues();
    interfaces::IDeviceClientsDatabase& clientDatabase();
    interfaces::IDeviceClientsRepository& clients();

    /// The rule's own prefix of driver states, SECOND:FIRST as GetIDs() takes it, and another.
    QString prefix() const { return prefixSecond() + QLatin1Char(':') + prefixFirst(); }
    QString otherPrefix() const { return prefix() + QStringLiteral("-other"); }
    static QString prefixSecond() { return QStringLiteral("kelvro-contract"); }
    QString prefixFirst() const { return QString::number(m_firstDevice); }

    /// Those of the rule's devices that have records in the stores (flags of Stores).
    std::set<int> devicesInUse(unsigned stores);

    /// Deletes what the rule's devices have in the stores.
    void clear(unsigned stores);

private:
    PluginUnderTest m_plugin;
    QJsonObject m_settings;
    std::optional<int> m_registeredDevice;
    int m_firstDevice = 0;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_eav;
    std::shared_ptr<interfaces::IDriverState> m_states;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

} // namespace contract
