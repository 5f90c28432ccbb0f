#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace host {

/// The commands right under one, in the order in which they were added.
inline std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_name().empty(); });
}

/// The options of a command, without its arguments.
inline std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

/// As they are typed: -d, --device.
inline std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const auto& name : option.get_snames()) {
        names.push_back('-' + name);
    }
    for (const auto& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

} // namespace host
