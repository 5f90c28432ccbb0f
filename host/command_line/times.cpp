#include "host/command_line/times.h"

#include "host/records/filters.h"

#include <map>

namespace host {

namespace {

constexpr int dateLength = 10; // 2026-11-22

CLI::Validator lengthOfTime() {
    static const CLI::AsNumberWithUnit number(
        std::map<std::string, qint64>{
            {"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86'400}, {"w", 604'800}},
        CLI::AsNumberWithUnit::UNIT_REQUIRED);
    const auto convert = [](std::string& text) {
        const auto given = text;
        try {
            return number(text);
        } catch (const CLI::ValidationError&) {
            return '"' + given + "\" is no length of time, as 90s, 30m, 2h, 7d or 4w";
        }
    };
    // What it would say of itself in the help is longer than what a user has to know.
    return {convert, ""};
}

} // namespace

std::optional<QDateTime> parseTime(const QString& text, bool endOfDay) {
    if (text.size() == dateLength) {
        const auto date = QDate::fromString(text, Qt::ISODate);
        if (!date.isValid()) {
            return {};
        }
        return endOfDay ? date.endOfDay() : date.startOfDay();
    }
    const auto time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

Period::Period() : begin(beginOfTime()), end(endOfTime()) {}

CLI::Option* addTime(CLI::App& command, const std::string& name, QDateTime& time,
                     const std::string& description, bool endOfDay) {
    return command
        .add_option_function<std::string>(
            name,
            [&time, endOfDay](const std::string& given) {
                const auto parsed = parseTime(QString::fromStdString(given), endOfDay);
                if (!parsed) {
                    throw CLI::ValidationError('"' + given +
                                               "\" is no time in ISO 8601, as "
                                               "2026-11-22T10:00:00Z or 2026-11-22");
                }
                time = *parsed;
            },
            description)
        ->type_name("TIME");
}

CLI::Option* addDuration(CLI::App& command, const std::string& name, qint64& secs,
                         const std::string& description) {
    return command.add_option(name, secs, description)
        ->transform(lengthOfTime())
        ->type_name("LENGTH");
}

void addPeriodOptions(CLI::App& command, Period& period) {
    auto* const from = addTime(command, "--from", period.begin, "Nothing older than this time");
    addTime(command, "--to", period.end,
            "Nothing newer than this time; a date alone means its whole day", true);
    command
        .add_option_function<qint64>(
            "--since",
            [&period](qint64 secs) {
                period.begin = QDateTime::currentDateTimeUtc().addSecs(-secs);
            },
            "Nothing older than so long ago, as 90s, 30m, 2h, 7d or 4w")
        ->transform(lengthOfTime())
        ->type_name("LENGTH")
        ->excludes(from);
}

} // namespace host
