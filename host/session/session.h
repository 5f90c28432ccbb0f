#pragma once

#include "host/output/record_output.h"
#include "host/plugin_file.h"
#include "host/session/installation.h"
#include "host/session/stores.h"

#include <QJsonObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace host {

class Console;

/// What the user has said of plug-in, servers and output.
struct SessionOptions {
    QString pluginFile = installedPlugin();
    /// Empty if the environment says where the settings are (findSettings()).
    QString settingsFile;
    OutputForm form = OutputForm::Table;
    bool localTimes = false;
    bool verbose = false;
};

/// What a command works with. Settings are read, and the plug-in and its stores opened, when they
/// are first asked for, which blocks on the servers; whatever of that fails throws Failure, and is
/// tried again when it is next asked for. For one thread. Borrows the consoles; the stores are its
/// own and go with it.
class Session {
public:
    /// `results` is where records go, `remarks` where what is said about them.
    Session(SessionOptions options, Console& results, Console& remarks);

    const SessionOptions& options() const { return m_options; }
    Console& results() { return m_results; }
    Console& remarks() { return m_remarks; }

    const QJsonObject& settings();
    interfaces::IDatabaseFactory& factory();

    interfaces::IMessagesDatabase& messages();
    interfaces::IEAVDatabase& values();
    interfaces::IDriverState& states();
    interfaces::IDeviceClientsDatabase& clients();

    /// For the records of this command.
    RecordOutput output(std::vector<Field> fields);

    /// As timeCell(), in the zone that the user has chosen.
    QJsonValue time(const QDateTime& time) const;

private:
    template <class Store>
    using Open = std::shared_ptr<Store> (*)(interfaces::IDatabaseFactory&, const QJsonObject&);

    template <class Store>
    Store& opened(std::shared_ptr<Store>& store, Open<Store> open);

    SessionOptions m_options;
    Console& m_results;
    Console& m_remarks;
    std::optional<QJsonObject> m_settings;
    std::optional<PluginFile> m_plugin;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_values;
    std::shared_ptr<interfaces::IDriverState> m_states;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

} // namespace host
