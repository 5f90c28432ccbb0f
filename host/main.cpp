#include "host/console.h"
#include "host/demo.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <mongocxx/v1/instance.hpp>

#include <exception>
#include <iostream>
#include <map>
#include <string>

namespace {

enum ExitStatus : int {
    succeeded = 0,
    failed = 1,
    wronglyCalled = 2,
};

const std::map<std::string, host::DecoderChoice> decoderNames = {
    {"auto", host::DecoderChoice::Auto},
    {"wmbusmeters", host::DecoderChoice::Wmbusmeters},
    {"shipped", host::DecoderChoice::Shipped},
};

struct CommandLine {
    std::string pluginFile;
    std::string settingsFile;
    std::string telegramsFile = KELVRO_HOST_DATA_DIR "/radio_telegrams.ndjson";
    host::DecoderChoice decoder = host::DecoderChoice::Auto;
    bool verbose = false;
};

void addDemoOptions(CLI::App& demo, CommandLine& given) {
    demo.add_option("--plugin", given.pluginFile, "The plug-in's file")->required();
    demo.add_option("--settings", given.settingsFile, "JSON file with the plug-in's settings")
        ->required();
    demo.add_option("--input", given.telegramsFile, "Telegrams, one JSON object a line")
        ->capture_default_str();
    demo.add_option("--decoder", given.decoder, "Where the readings come from")
        ->transform(CLI::CheckedTransformer(decoderNames))
        ->default_str("auto");
    demo.add_flag("--verbose", given.verbose, "Show the plug-in's own log lines");
}

host::DemoOptions demoOptions(const CommandLine& given) {
    host::DemoOptions options;
    options.pluginFile = QString::fromStdString(given.pluginFile);
    options.settingsFile = QString::fromStdString(given.settingsFile);
    options.telegramsFile = QString::fromStdString(given.telegramsFile);
    options.decoder = given.decoder;
    return options;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);

    CLI::App app("Loads the Kelvrostorage plug-in from a file and works through its interfaces.",
                 "kelvro-host");
    app.set_version_flag("--version", KELVRO_HOST_VERSION);
    app.require_subcommand(1);
    CommandLine given;
    auto* const demo = app.add_subcommand(
        "demo",
        "Sends the telegrams of real meters through the plug-in and compares what comes back");
    addDemoOptions(*demo, given);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? succeeded : wronglyCalled;
    }

    if (!given.verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    }
    try {
        // The MongoDB driver wants one instance per process, older and longer-lived than all use.
        const mongocxx::v1::instance mongoDriver;
        auto console = host::Console::standardOutput();
        return host::runDemo(demoOptions(given), console) ? succeeded : failed;
    } catch (const std::exception& error) {
        std::cerr << "kelvro-host: " << error.what() << '\n';
        return failed;
    }
}
