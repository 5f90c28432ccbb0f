#include "host/console.h"
#include "host/demo/demo.h"
#include "host/input/settings.h"
#include "host/plot/plot_command.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <mongocxx/v1/instance.hpp>

#include <exception>
#include <iostream>
#include <map>
#include <optional>
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
    std::string readingsFile = KELVRO_HOST_DATA_DIR "/meter_readings.ndjson";
    host::DecoderChoice decoder = host::DecoderChoice::Auto;
    std::optional<int> device;
    std::string obisCode = "1-0:1.7.0";
    std::string plotFileBase = "power";
    bool clear = false;
    bool verbose = false;
};

void addCommonOptions(CLI::App& command, CommandLine& given) {
    command.add_option("--plugin", given.pluginFile, "The plug-in's file")->required();
    command.add_option("--settings", given.settingsFile,
                       "JSON file with the plug-in's settings; default: the servers of MONGODB_URL "
                       "and REDIS_URL");
    command
        .add_option("--readings", given.readingsFile,
                    "Readings of an electricity meter, one JSON object a line")
        ->capture_default_str();
    command.add_flag("--verbose", given.verbose, "Show the plug-in's own log lines");
}

CLI::App* addDemo(CLI::App& app, CommandLine& given) {
    auto* const demo =
        app.add_subcommand("demo", "Sends the telegrams and readings of real meters through the "
                                   "plug-in and compares what comes back");
    addCommonOptions(*demo, given);
    demo->add_option("--input", given.telegramsFile, "Telegrams, one JSON object a line")
        ->capture_default_str();
    demo->add_option("--decoder", given.decoder, "Where the telegrams' readings come from")
        ->transform(CLI::CheckedTransformer(decoderNames))
        ->default_str("auto");
    demo->add_flag("--clear", given.clear,
                   "Store nothing, but delete what an earlier demo stored of the same meters");
    return demo;
}

void addPlot(CLI::App& app, CommandLine& given) {
    auto* const plot = app.add_subcommand(
        "plot", "Draws the stored values of an OBIS code over time, as SVG and PNG");
    addCommonOptions(*plot, given);
    plot->add_option("--device", given.device, "Device number; default: the one of the readings");
    plot->add_option("--obis", given.obisCode, "OBIS code")->capture_default_str();
    plot->add_option("--output", given.plotFileBase, "Files to write, without .svg and .png")
        ->capture_default_str();
}

QJsonObject settings(const CommandLine& given) {
    return given.settingsFile.empty()
               ? host::settingsFromEnvironment()
               : host::readSettings(QString::fromStdString(given.settingsFile));
}

host::DemoOptions demoOptions(const CommandLine& given) {
    host::DemoOptions options;
    options.pluginFile = QString::fromStdString(given.pluginFile);
    options.settings = settings(given);
    options.telegramsFile = QString::fromStdString(given.telegramsFile);
    options.readingsFile = QString::fromStdString(given.readingsFile);
    options.decoder = given.decoder;
    options.clear = given.clear;
    return options;
}

host::PlotOptions plotOptions(const CommandLine& given) {
    host::PlotOptions options;
    options.pluginFile = QString::fromStdString(given.pluginFile);
    options.settings = settings(given);
    options.readingsFile = QString::fromStdString(given.readingsFile);
    options.device = given.device;
    options.obisCode = QString::fromStdString(given.obisCode);
    options.fileBase = QString::fromStdString(given.plotFileBase);
    return options;
}

ExitStatus run(int argc, char** argv) {
    CLI::App app("Loads the Kelvrostorage plug-in from a file and works through its interfaces.",
                 "kelvro-host");
    app.set_version_flag("--version", KELVRO_HOST_VERSION);
    app.require_subcommand(1);
    CommandLine given;
    const auto* const demo = addDemo(app, given);
    addPlot(app, given);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? succeeded : wronglyCalled;
    }

    if (!given.verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    }
    // The MongoDB driver wants one instance per process, older and longer-lived than all use.
    const mongocxx::v1::instance mongoDriver;
    auto console = host::Console::standardOutput();
    if (demo->parsed()) {
        return host::runDemo(demoOptions(given), console) ? succeeded : failed;
    }
    host::runPlot(plotOptions(given), console);
    return succeeded;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const QCoreApplication application(argc, argv);
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "kelvro-host: " << error.what() << '\n';
        return failed;
    }
}
