#include "contract/outcome.h"

#include <array>

namespace contract {

namespace {

using Result = Outcome::Result;

constexpr std::array results{Result::Passed, Result::Failed, Result::NotApplicable};

} // namespace

QString resultText(Result result) {
    switch (result) {
    case Result::Passed:
        return QStringLiteral("passed");
    case Result::Failed:
        return QStringLiteral("failed");
    case Result::NotApplicable:
        break;
    }
    return QStringLiteral("not applicable");
}

QJsonObject toJson(const Outcome& outcome) {
    QJsonObject object{{QStringLiteral("result"), resultText(outcome.result)}};
    if (outcome.result == Result::Failed) {
        object.insert(QStringLiteral("expected"), outcome.expected);
        object.insert(QStringLiteral("seen"), outcome.seen);
    }
    if (outcome.result == Result::NotApplicable) {
        object.insert(QStringLiteral("why"), outcome.why);
    }
    return object;
}

Outcome outcomeOf(const QJsonObject& object) {
    Outcome outcome;
    const auto result = object.value(QLatin1String("result")).toString();
    for (const Result each : results) {
        if (resultText(each) == result) {
            outcome.result = each;
        }
    }
    outcome.expected = object.value(QLatin1String("expected")).toString();
    outcome.seen = object.value(QLatin1String("seen")).toString();
    outcome.why = object.value(QLatin1String("why")).toString();
    return outcome;
}

Outcome failure(const QString& expected, const QString& seen) {
    return {.result = Result::Failed, .expected = expected, .seen = seen, .why = {}};
}

} // namespace contract
