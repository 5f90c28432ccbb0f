#include "host/console.h"
#include "host/demo/demo.h"
#include "host/input/settings.h"
#include "host/mongo_log.h"
#include "host/plot/plot_command.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <mongocxx/v1/instance.hpp>

#include <exception>
#include <iostream>
#include <map>
#include <memory>
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
    host::DemoOptions demo;
    host::PlotOptions plot;
    QString settingsFile;
    bool verbose = false;
};

CLI::Option* addText(CLI::App& command, const char* name, QString& text, const char* description) {
    return command
        .add_option_function<std::string>(
            name, [&text](const std::string& given) { text = QString::fromStdString(given); },
            description)
        ->default_str(text.toStdString());
}

template <class Options>
void addCommonOptions(CLI::App& command, Options& options, CommandLine& given) {
    options.readingsFile = QStringLiteral(KELVRO_HOST_DATA_DIR "/meter_readings.ndjson");
    addText(command, "--plugin", options.pluginFile, "The plug-in's file")->required();
    addText(command, "--settings", given.settingsFile,
            "JSON file with the plug-in's settings; default: the servers of MONGODB_URL and "
            "REDIS_URL");
    addText(command, "--readings", options.readingsFile,
            "Readings of an electricity meter, one JSON object a line");
    command.add_flag("--verbose", given.verbose,
                     "Show the plug-in's and the MongoDB driver's own log lines");
}

CLI::App* addDemo(CLI::App& app, CommandLine& given) {
    auto* const demo =
        app.add_subcommand("demo", "Sends the telegrams and readings of real meters through the "
                                   "plug-in and compares what comes back");
    addCommonOptions(*demo, given.demo, given);
    given.demo.telegramsFile = QStringLiteral(KELVRO_HOST_DATA_DIR "/radio_telegrams.ndjson");
    addText(*demo, "--input", given.demo.telegramsFile, "Telegrams, one JSON object a line");
    demo->add_option("--decoder", given.demo.decoder, "Where the telegrams' readings come from")
        ->transform(CLI::CheckedTransformer(decoderNames))
        ->default_str("auto");
    demo->add_flag("--clear", given.demo.clear,
                   "Store nothing, but delete what an earlier demo stored of the same meters");
    return demo;
}

void addPlot(CLI::App& app, CommandLine& given) {
    auto* const plot = app.add_subcommand(
        "plot", "Draws the stored values of an OBIS code over time, as SVG and PNG");
    addCommonOptions(*plot, given.plot, given);
    plot->add_option("--device", given.plot.device,
                     "Device number; default: the one of the readings");
    addText(*plot, "--obis", given.plot.obisCode, "OBIS code");
    addText(*plot, "--output", given.plot.fileBase, "Files to write, without .svg and .png");
}

QJsonObject readSettings(const CommandLine& given) {
    return given.settingsFile.isEmpty() ? host::settingsFromEnvironment()
                                        : host::readSettings(given.settingsFile);
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
    const mongocxx::v1::instance mongoDriver{std::make_unique<host::MongoLog>()};
    auto console = host::Console::standardOutput();
    given.demo.settings = given.plot.settings = readSettings(given);
    if (demo->parsed()) {
        return host::runDemo(given.demo, console) ? succeeded : failed;
    }
    host::runPlot(given.plot, console);
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
