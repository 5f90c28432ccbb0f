#include "tests/soak/report.h"

#include "tests/soak/call_bound.h"
#include "tests/support/qt_literals.h"

#include <QJsonArray>

#include <array>
#include <iomanip>

namespace soak {

using namespace test_support::literals;

namespace {

constexpr std::array headings{
    "kills", "calls",     "acknowledged", "thrown",     "stored though thrown",
    "lost",  "different", "twice",        "longest ms", "working by call"};

/// The calls after the servers were back that were the first to work: "1" or "1, 2 (5 times)".
std::string workingByCall(const CallFigures& calls) {
    std::string text;
    for (const auto& [call, times] : calls.callsUntilWorking) {
        text += (text.empty() ? "" : ", ") + std::to_string(call);
        if (call > 1) {
            text += " (" + std::to_string(times) + " times)";
        }
    }
    if (calls.stayedBroken > 0) {
        text += " never (" + std::to_string(calls.stayedBroken) + " times)";
    }
    return text.empty() ? "-" : text;
}

std::array<std::string, headings.size()> cells(const KindResult& kind) {
    return {std::to_string(kind.calls.kills),
            std::to_string(kind.calls.calls),
            std::to_string(kind.calls.acknowledged),
            std::to_string(kind.calls.thrown),
            std::to_string(kind.findings.storedThoughThrown),
            std::to_string(kind.findings.lost),
            std::to_string(kind.findings.different),
            std::to_string(kind.findings.twice),
            std::to_string(kind.calls.longest.count()),
            workingByCall(kind.calls)};
}

void printRow(std::ostream& out, const std::string& name, const auto& cells) {
    constexpr int nameWidth = 18;
    out << std::left << std::setw(nameWidth) << name << std::right;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        const int width = static_cast<int>(std::string_view(headings[i]).size()) + 2;
        out << std::setw(width) << cells[i];
    }
    out << '\n';
}

QJsonObject toJson(const KindResult& kind) {
    QJsonObject until;
    for (const auto& [call, times] : kind.calls.callsUntilWorking) {
        until.insert(QString::number(call), times);
    }
    QJsonObject failures;
    for (const auto& [text, times] : kind.calls.failures) {
        failures.insert(QString::fromStdString(text), static_cast<double>(times));
    }
    const auto number = [](auto value) { return static_cast<double>(value); };
    return {
        {"kind"_q, kind.name},
        {"kills"_q, kind.calls.kills},
        {"calls"_q, number(kind.calls.calls)},
        {"acknowledged"_q, number(kind.calls.acknowledged)},
        {"thrown"_q, number(kind.calls.thrown)},
        {"storedThoughThrown"_q, number(kind.findings.storedThoughThrown)},
        {"read"_q, number(kind.findings.read)},
        {"unreadable"_q, number(kind.findings.unreadable)},
        {"lost"_q, number(kind.findings.lost)},
        {"different"_q, number(kind.findings.different)},
        {"twice"_q, number(kind.findings.twice)},
        {"longestMsecs"_q, number(kind.calls.longest.count())},
        {"boundMsecs"_q, number(kind.bound.count())},
        {"firstCallToWork"_q, until},
        {"stayedBroken"_q, kind.calls.stayedBroken},
        {"failures"_q, failures},
        {"examples"_q, QJsonArray::fromStringList(kind.findings.examples)},
    };
}

} // namespace

void print(const SoakResult& result, std::ostream& out) {
    out << "seed " << result.seed << ", " << result.took.count() << " s, kills:";
    for (const auto& [side, kills] : result.kills) {
        out << ' ' << nameOf(side) << ' ' << kills;
    }
    out << "\n\n";
    printRow(out, "", headings);
    for (const KindResult& kind : result.kinds) {
        printRow(out, kind.name.toStdString(), cells(kind));
    }
    out << '\n';
    for (const KindResult& kind : result.kinds) {
        for (const QString& example : kind.findings.examples) {
            out << example.toStdString() << '\n';
        }
        if (kind.calls.longest > kind.bound + boundSlack) {
            out << kind.name.toStdString() << ": a call took longer than the time-outs allow ("
                << kind.bound.count() << " ms)\n";
        }
    }
    out << (result.keepsItsPromises() ? "nothing acknowledged was lost\n"
                                      : "PROMISES ARE BROKEN\n");
}

QJsonObject toJson(const SoakResult& result) {
    QJsonObject kills;
    for (const auto& [side, times] : result.kills) {
        kills.insert(QString::fromLatin1(nameOf(side)), times);
    }
    QJsonArray kinds;
    for (const KindResult& kind : result.kinds) {
        kinds.append(toJson(kind));
    }
    return {
        {"seed"_q, static_cast<double>(result.seed)},
        {"seconds"_q, static_cast<double>(result.took.count())},
        {"urlOptions"_q, QString::fromStdString(result.url).section(QLatin1Char('?'), 1)},
        {"kills"_q, kills},
        {"kinds"_q, kinds},
        {"promisesKept"_q, result.keepsItsPromises()},
    };
}

} // namespace soak
