#include "host/command_line/text_options.h"

namespace host {

CLI::Option* addText(CLI::App& command, const std::string& name, QString& text,
                     const std::string& description) {
    return command
        .add_option_function<std::string>(
            name, [&text](const std::string& given) { text = QString::fromStdString(given); },
            description)
        ->default_str(text.toStdString());
}

CLI::Option* addFile(CLI::App& command, const std::string& name, QString& fileName,
                     const std::string& description) {
    return addText(command, name, fileName, description)->type_name("FILE");
}

void addPluginOptions(CLI::App& command, QString& pluginFile, QString& settingsFile) {
    // The manual page is not to name the folder of the build.
    addFile(command, "--plugin", pluginFile,
            "The plug-in's file; default: the one that is installed with this program")
        ->default_str("");
    addFile(command, "--settings", settingsFile,
            "JSON file with the plug-in's settings; default: KELVRO_SETTINGS, else the servers of "
            "MONGODB_URL and REDIS_URL, else ~/.config/kelvrostorage/settings.json");
}

} // namespace host
