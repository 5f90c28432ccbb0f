#include "host/session/session.h"

#include "host/input/settings.h"

#include <utility>

namespace host {

Session::Session(SessionOptions options, Console& results, Console& remarks)
    : m_options(std::move(options)), m_results(results), m_remarks(remarks) {}

const QJsonObject& Session::settings() {
    if (!m_settings) {
        m_settings = findSettings(m_options.settingsFile);
    }
    return *m_settings;
}

interfaces::IDatabaseFactory& Session::factory() {
    if (!m_plugin) {
        m_plugin.emplace(m_options.pluginFile);
    }
    return m_plugin->factory();
}

template <class Store>
Store& Session::opened(std::shared_ptr<Store>& store, Open<Store> open) {
    if (!store) {
        store = open(factory(), settings());
    }
    return *store;
}

interfaces::IMessagesDatabase& Session::messages() {
    return opened(m_messages, openMessages);
}

interfaces::IEAVDatabase& Session::values() {
    return opened(m_values, openValues);
}

interfaces::IDriverState& Session::states() {
    return opened(m_states, openStates);
}

interfaces::IDeviceClientsDatabase& Session::clients() {
    return opened(m_clients, openClients);
}

RecordOutput Session::output(std::vector<Field> fields) {
    return RecordOutput(m_results, m_options.form, std::move(fields));
}

QJsonValue Session::time(const QDateTime& time) const {
    return timeCell(time, m_options.localTimes);
}

} // namespace host
