#include "host/command_line/record_options.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace host {

namespace {

constexpr int mostRecords = 1'000'000'000;

/// Servers have codes of their own too, so little can be said against one.
std::string codeFault(const std::string& code) {
    const bool blank = std::ranges::any_of(
        code, [](unsigned char character) { return std::isspace(character) != 0; });
    return code.empty() || blank ? '"' + code + "\" is no OBIS code, as 1-0:1.8.0" : "";
}

} // namespace

CLI::Option* addLimit(CLI::App& command, const std::string& name, int& limit,
                      const std::string& description) {
    return command.add_option(name, limit, description + "; 0 for all")
        ->check(CLI::Range(0, mostRecords).description(""))
        ->capture_default_str()
        ->type_name("NUMBER");
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::list<QString>& texts,
                      const std::string& description) {
    return command
        .add_option_function<std::vector<std::string>>(
            name,
            [&texts](const std::vector<std::string>& given) {
                for (const auto& text : given) {
                    texts.push_back(QString::fromStdString(text));
                }
            },
            description)
        ->allow_extra_args(false)
        ->type_name("TEXT");
}

CLI::Option* addObisCodes(CLI::App& command, std::list<QString>& codes,
                          const std::string& description) {
    return addTexts(command, "--obis", codes, description + "; more than one as A,B")
        ->delimiter(',')
        ->check(CLI::Validator(codeFault, "", ""))
        ->type_name("CODE");
}

} // namespace host
