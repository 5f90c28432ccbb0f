#include "host/bench/bench.h"
#include "host/commands/commands.h"

#include <memory>

namespace host {

void addBenchCommand(CommandLine& line) {
    const auto options = std::make_shared<BenchOptions>();
    auto& command = line.add(
        {.name = "bench",
         .description =
             "Measures the operations of each store against your servers: rate, median and "
             "99th percentile. It works in the database of your data, on devices of its own, "
             "and removes what it stored",
         .examples = "kelvro-host bench --yes\nkelvro-host bench --yes --secs 300 --csv"},
        [options](Session& session) { return runBench(*options, session); });
    line.addOutputOptions(command);
    command.add_option("--secs", options->secs, "How long to measure in all, in seconds")
        ->check(CLI::Range(1, 86'400).description(""))
        ->capture_default_str()
        ->type_name("SECONDS");
    command.add_flag("--yes", options->agreed, "It may work in the database of your data");
}

} // namespace host
