#include "host/command_line/completion.h"

#include "host/command_line/app_walk.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace host {

namespace {

bool takesFile(const CLI::Option& option) {
    return option.get_type_name() == "FILE";
}

/// The words that an option takes, with blanks between; empty if it takes others too.
std::string choicesOf(const CLI::Option& option) {
    auto words = option.get_type_name();
    if (words.find('|') == std::string::npos) {
        return {};
    }
    std::ranges::replace(words, '|', ' ');
    return words;
}

std::string joined(const std::vector<std::string>& words) {
    return CLI::detail::join(words, " ");
}

/// The names of the options that `like` likes.
template <class Like>
std::string names(const CLI::App& command, Like like) {
    std::vector<std::string> found;
    for (const auto* option : optionsOf(command)) {
        if (like(*option)) {
            std::ranges::copy(namesOf(*option), std::back_inserter(found));
        }
    }
    return joined(found);
}

std::string alternatives(std::string words) {
    std::ranges::replace(words, ' ', '|');
    return words;
}

/// The words that lead to a command.
std::string pathOf(const CLI::App& command, const std::string& parent) {
    return parent.empty() ? command.get_name() : parent + ' ' + command.get_name();
}

/// The branch of a command: what may follow its name, and after which option a value of which kind.
void addBranch(std::ostream& script, const CLI::App& command, const std::string& path) {
    auto words = names(command, [](const auto&) { return true; });
    for (const auto* each : commandsOf(command)) {
        words += ' ' + each->get_name();
    }
    const bool fileArgument =
        std::ranges::any_of(command.get_options(), [](const CLI::Option* option) {
            return option->get_positional() && takesFile(*option);
        });
    script << "    '" << path << "')\n";
    const auto files = names(command, takesFile);
    const auto values = names(command, [](const CLI::Option& option) {
        return option.get_items_expected_max() > 0 && !takesFile(option) &&
               choicesOf(option).empty();
    });
    script << "        case $previous in\n";
    if (!files.empty()) {
        script << "        " << alternatives(files) << ") kind=file ;;\n";
    }
    if (!values.empty()) {
        script << "        " << alternatives(values) << ") kind=none ;;\n";
    }
    for (const auto* option : optionsOf(command)) {
        if (const auto choices = choicesOf(*option); !choices.empty()) {
            script << "        " << alternatives(joined(namesOf(*option))) << ") choices='"
                   << choices << "' ;;\n";
        }
    }
    script << "        esac\n        words=${choices:-'" << words << "'}\n";
    if (fileArgument) {
        script << "        [[ $current == -* ]] || kind=${kind:-file}\n";
    }
    script << "        ;;\n";
    for (const auto* each : commandsOf(command)) {
        addBranch(script, *each, pathOf(*each, path));
    }
}

/// From the words that are typed to a branch.
void addPaths(std::ostream& script, const CLI::App& command, const std::string& parent) {
    for (const auto* each : commandsOf(command)) {
        const auto path = pathOf(*each, parent);
        script << "        '" << path << "') path='" << path << "' ;;\n";
        addPaths(script, *each, path);
    }
}

} // namespace

std::string bashCompletion(const CLI::App& app) {
    const auto& program = app.get_name();
    auto function = '_' + program;
    std::ranges::replace(function, '-', '_');
    std::ostringstream script;
    script << "# bash completion for " << program << "\n"
           << function << "() {\n"
           << "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
           << "    local path='' kind='' words='' choices='' word\n"
           << "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           << "        case \"${path:+$path }$word\" in\n";
    addPaths(script, app, "");
    script << "        esac\n    done\n    case $path in\n";
    addBranch(script, app, "");
    script << "    esac\n"
           << "    case $kind in\n"
           << "    file) mapfile -t COMPREPLY < <(compgen -f -- \"$current\") ;;\n"
           << "    none) COMPREPLY=() ;;\n"
           << "    *) mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\") ;;\n"
           << "    esac\n"
           << "}\n"
           << "complete -o filenames -F " << function << ' ' << program << '\n';
    return script.str();
}

} // namespace host
