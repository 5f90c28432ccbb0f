#include "host/commands/commands.h"
#include "host/mongo_instance.h"

#include <QCoreApplication>

#include <exception>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace {

/// Where the shell has closed one of the three, a connection to a server would get its number, and
/// the output.
void fillStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            // Takes the lowest number that is free.
            (void)open("/dev/null", O_RDWR);
        }
    }
}

host::ExitStatus run(int argc, char** argv) {
    host::CommandLine line;
    host::addCommands(line);
    if (const auto ended = line.parse(argc, argv)) {
        return *ended;
    }
    const host::MongoInstance mongoDriver;
    return line.run();
}

} // namespace

int main(int argc, char** argv) {
    fillStandardDescriptors();
    try {
        const QCoreApplication application(argc, argv);
        return static_cast<int>(run(argc, argv));
    } catch (const std::exception& error) {
        std::cerr << "kelvro-host: " << error.what() << '\n';
        return static_cast<int>(host::ExitStatus::Failed);
    }
}
