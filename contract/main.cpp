#include "contract/catalogue.h"
#include "contract/child_task.h"
#include "contract/command_line.h"
#include "contract/report.h"
#include "contract/run.h"
#include "host/command_line/completion.h"

#include <QCoreApplication>

#include <exception>
#include <iostream>
#include <stdexcept>

namespace {

enum ExitStatus : int {
    allPassed = 0,
    failed = 1,
    wronglyCalled = 2,
};

ExitStatus runProgram(int argc, char** argv) {
    contract::CommandLine given;
    const auto app = contract::makeApp(given);
    try {
        app->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app->exit(error) == 0 ? allPassed : wronglyCalled;
    }
    if (given.manual) {
        std::cout << contract::manualPage(*app);
        return allPassed;
    }
    if (given.completion) {
        std::cout << host::bashCompletion(*app);
        return allPassed;
    }
    if (given.list) {
        contract::listRules(std::cout, given.json, contract::selectedRules(given.only));
        return allPassed;
    }
    if (!given.task.isEmpty()) {
        contract::doTask(given);
    }
    return contract::run(given, std::cout) ? allPassed : failed;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const QCoreApplication application(argc, argv);
        const auto status = runProgram(argc, argv);
        if (!std::cout.flush()) {
            throw std::runtime_error("cannot write the output");
        }
        return status;
    } catch (const std::exception& error) {
        std::cerr << "kelvro-contract: " << error.what() << '\n';
        return failed;
    }
}
