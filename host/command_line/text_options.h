#pragma once

#include <CLI/CLI.hpp>
#include <QString>

#include <string>

namespace host {

/// An option with a text.
CLI::Option* addText(CLI::App& command, const std::string& name, QString& text,
                     const std::string& description);

/// An option, or an argument, that is the name of a file; the shell completes it.
CLI::Option* addFile(CLI::App& command, const std::string& name, QString& fileName,
                     const std::string& description);

/// --plugin and --settings, which a program has that loads a plug-in. `settingsFile` stays empty
/// where the environment says where the settings are (findSettingsFile()).
void addPluginOptions(CLI::App& command, QString& pluginFile, QString& settingsFile);

} // namespace host
