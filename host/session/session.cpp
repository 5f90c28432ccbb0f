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

interfaces::IMessagesDatabase& Session::messages() {
    if (!m_messages) {
        m_messages = openMessages(factory(), settings());
    }
    return *m_messages;
}

interfaces::IEAVDatabase& Session::values() {
    if (!m_values) {
        m_values = openValues(factory(), settings());
    }
    return *m_values;
}

interfaces::IDriverState& Session::states() {
    if (!m_states) {
        m_states = openStates(factory(), settings());
    }
    return *m_states;
}

interfaces::IDeviceClientsDatabase& Session::clients() {
    if (!m_clients) {
        m_clients = openClients(factory(), settings());
    }
    return *m_clients;
}

RecordOutput Session::output(std::vector<Field> fields) {
    return RecordOutput(m_results, m_options.form, std::move(fields));
}

QJsonValue Session::time(const QDateTime& time) const {
    return timeCell(time, m_options.localTimes);
}

} // namespace host
