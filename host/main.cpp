#include "host/commands/commands.h"
#include "host/mongo_log.h"

#include <QCoreApplication>
#include <mongocxx/v1/instance.hpp>

#include <exception>
#include <iostream>
#include <memory>

namespace {

host::ExitStatus run(int argc, char** argv) {
    host::CommandLine line;
    host::addCommands(line);
    if (const auto ended = line.parse(argc, argv)) {
        return *ended;
    }
    // The MongoDB driver wants one instance per process, older and longer-lived than all use.
    const mongocxx::v1::instance mongoDriver{std::make_unique<host::MongoLog>()};
    return line.run();
}

} // namespace

int main(int argc, char** argv) {
    try {
        const QCoreApplication application(argc, argv);
        return static_cast<int>(run(argc, argv));
    } catch (const std::exception& error) {
        std::cerr << "kelvro-host: " << error.what() << '\n';
        return static_cast<int>(host::ExitStatus::Failed);
    }
}
