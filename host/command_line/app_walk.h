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

/// What a program uses for itself is in no group, and told to nobody.
inline bool isShown(const CLI::Option* option) {
    return !option->get_group().empty();
}

/// The options of a command that are told of, without its arguments.
inline std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
    return command.get_options(
        [](const CLI::Option* option) { return option->nonpositional() && isShown(option); });
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
