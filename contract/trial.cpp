#include "contract/trial.h"

#include "contract/expectations.h"
#include "contract/kinds.h"

#include <utility>

namespace contract {

namespace {

template <class Interface>
std::shared_ptr<Interface> made(const char* what, std::shared_ptr<Interface> object) {
    expectObject(QLatin1String(what), object);
    return object;
}

bool isEmpty(const model::dl_queues& queues) {
    return queues.dl.isEmpty() && !queues.lock && queues.status == model::dl_queues::status::NONE;
}

} // namespace

Trial::Trial(const QString& pluginFile, QJsonObject settings, std::optional<int> registeredDevice)
    : m_plugin(pluginFile), m_settings(std::move(settings)), m_registeredDevice(registeredDevice) {}

std::shared_ptr<interfaces::IMessagesDatabase> Trial::makeMessages(QObject* parent) {
    return made("a message database",
                m_plugin.factory().CreateMessageDatabaseInst(m_settings, parent));
}

std::shared_ptr<interfaces::IEAVDatabase> Trial::makeEav(QObject* parent) {
    return made("an EAV database", m_plugin.factory().CreateEavDatabaseInst(m_settings, parent));
}

std::shared_ptr<interfaces::IDriverState> Trial::makeStates(QObject* parent) {
    auto states =
        made("a driver state", m_plugin.factory().CreateDriverStateInst(m_settings, parent));
    states->SetPrefix(prefix());
    return states;
}

std::shared_ptr<interfaces::IDeviceClientsDatabase> Trial::makeClients(QObject* parent) {
    return made("a client database",
                m_plugin.factory().CreateClientDatabaseInst(m_settings, parent));
}

interfaces::IMessagesDatabase& Trial::messages() {
    if (!m_messages) {
        m_messages = makeMessages();
    }
    return *m_messages;
}

interfaces::IEAVDatabase& Trial::eavDatabase() {
    if (!m_eav) {
        m_eav = makeEav();
    }
    return *m_eav;
}

interfaces::IDriverState& Trial::states() {
    if (!m_states) {
        m_states = makeStates();
    }
    m_states->SetPrefix(prefix());
    return *m_states;
}

interfaces::IDeviceClientsDatabase& Trial::clientDatabase() {
    if (!m_clients) {
        m_clients = makeClients();
    }
    return *m_clients;
}

interfaces::IULAPPMessageRepository& Trial::uplinks() {
    return expectObject(QStringLiteral("the uplink repository"), messages().UlMessageRepository());
}

interfaces::IDLAPPMessageRepository& Trial::downlinks() {
    return expectObject(QStringLiteral("the downlink repository"),
                        messages().DlMessageRepository());
}

interfaces::IEAVRepository& Trial::eav() {
    return expectObject(QStringLiteral("the EAV repository"), eavDatabase().EAVRepository());
}

interfaces::IDriverDLqueue& Trial::queues() {
    return expectObject(QStringLiteral("the downlink queue"), states().DLqueue());
}

interfaces::IDeviceClientsRepository& Trial::clients() {
    return expectObject(QStringLiteral("the client repository"),
                        clientDatabase().DeviceClientsRepository());
}

std::set<int> Trial::devicesInUse(unsigned stores) {
    std::set<int> inUse;
    const auto look = [&]<class Kind>(Kind) {
        if ((stores & Kind::store) != 0) {
            if (const auto answer = Kind::find(*this, Kind::everything(*this))) {
                for (const auto& [device, records] : *answer) {
                    inUse.insert(device);
                }
            }
        }
    };
    forEachKind(look);
    for (int index = 0; index < devices; ++index) {
        if ((stores & stateStore) != 0) {
            states().Pull(device(index));
            if (!states().GetAll(device(index)).isEmpty()) {
                inUse.insert(device(index));
            }
        }
        if ((stores & queueStore) != 0 && !isEmpty(queues().Pull(device(index)))) {
            inUse.insert(device(index));
        }
    }
    // Opened here, so that a registry which is not there is found before its rules are tried.
    if ((stores & clientStore) != 0) {
        clients();
    }
    return inUse;
}

void Trial::clear(unsigned stores) {
    const auto remove = [&]<class Kind>(Kind) {
        if ((stores & Kind::store) != 0) {
            Kind::removeAll(*this);
        }
    };
    forEachKind(remove);
    for (int index = 0; index < devices; ++index) {
        if ((stores & stateStore) != 0) {
            for (const QString& each : {otherPrefix(), prefix()}) {
                states().SetPrefix(each);
                m_states->Delete(device(index));
            }
        }
        if ((stores & queueStore) != 0) {
            queues().Delete(device(index));
        }
    }
}

} // namespace contract
