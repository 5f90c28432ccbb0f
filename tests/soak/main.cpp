#include "host/plugin_file.h"
#include "tests/soak/report.h"
#include "tests/soak/soak.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <mongocxx/v1/instance.hpp>
#include <mongocxx/v1/logger.hpp>

#include <signal.h>

#include <atomic>
#include <exception>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

namespace {

enum ExitStatus : int {
    kept = 0,
    broken = 1,
    wronglyCalled = 2,
};

std::atomic<bool> isToEnd = false;

/// The first signal ends the run with its result, the second one ends the program.
void endBySignals() {
    struct sigaction action{};
    action.sa_handler = [](int) { isToEnd = true; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM}) {
        ::sigaction(signal, &action, nullptr);
    }
}

struct CommandLine {
    std::string plugin;
    std::string jsonFile;
    int minutes = 0;
    soak::SoakOptions soak;
};

void addOptions(CLI::App& app, CommandLine& given) {
    app.add_option("--plugin", given.plugin, "The plug-in's file")->required();
    app.add_option("--kills", given.soak.kills, "How often each server is killed")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--minutes", given.minutes, "Ends the run after that many")
        ->check(CLI::PositiveNumber);
    app.add_option("--seed", given.soak.seed,
                   "Of the order of the kills; by default another one "
                   "each time")
        ->check(CLI::PositiveNumber);
    app.add_option("--json", given.jsonFile, "File to write the result to");
    app.add_option(
        "--url-options", given.soak.servers.urlOptions,
        "Options of the MongoDB connection string; time-outs that it does not name are the "
        "host's");
    app.add_option("--other-keys", given.soak.servers.otherKeys,
                   "Keys that Redis has to read back at every start")
        ->capture_default_str();
    app.add_flag("!--redis-forgets", given.soak.servers.redisKeepsData,
                 "Redis keeps nothing on disk: shows that the soak notices a loss");
}

void write(const soak::SoakResult& result, const std::string& fileName) {
    QFile file(QString::fromStdString(fileName));
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(soak::toJson(result)).toJson()) < 0) {
        throw std::runtime_error("cannot write " + fileName + ": " +
                                 file.errorString().toStdString());
    }
}

ExitStatus run(int argc, char** argv) {
    CLI::App app("Stores records through the plug-in while it kills the servers, and reads "
                 "everything back.",
                 "kelvro-soak");
    CommandLine given;
    addOptions(app, given);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kept : wronglyCalled;
    }
    if (given.minutes > 0) {
        given.soak.atMost = std::chrono::minutes(given.minutes);
    }
    if (given.soak.seed == 0) {
        given.soak.seed = std::random_device()();
    }

    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    endBySignals();
    // Without a log: the driver reports every lost connection.
    const mongocxx::v1::instance mongoDriver{std::unique_ptr<mongocxx::v1::logger>()};
    host::PluginFile plugin(QString::fromStdString(given.plugin));
    const auto result = soak::runSoak(
        plugin.factory(), given.soak, [] { return isToEnd.load(); },
        [](const std::string& line) { std::cerr << "kelvro-soak: " << line << std::endl; });
    print(result, std::cout);
    if (!given.jsonFile.empty()) {
        write(result, given.jsonFile);
    }
    return result.keepsItsPromises() ? kept : broken;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const QCoreApplication application(argc, argv);
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "kelvro-soak: " << error.what() << '\n';
        return broken;
    }
}
