#include "contract/report.h"

#include "contract/outcome.h"

#include <QJsonDocument>

namespace contract {

namespace {

/// The width of the longest result and of the longest name.
constexpr int resultWidth = 14;
constexpr int nameWidth = 26;

/// Lines of a text as one.
QString onOneLine(QString text) {
    return text.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

void writeLine(std::ostream& stream, const QString& text) {
    stream << text.toStdString() << '\n' << std::flush;
}

void writeLine(std::ostream& stream, const QJsonObject& object) {
    writeLine(stream, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

QJsonObject naming(const RuleEntry& entry) {
    return {{QStringLiteral("rule"), entry.name()},
            {QStringLiteral("sentence"), QLatin1String(entry.rule->sentence)}};
}

QString nameAndSentence(const RuleEntry& entry) {
    return entry.name().leftJustified(nameWidth) + QLatin1String(entry.rule->sentence);
}

} // namespace

void RuleReport::add(const RuleEntry& entry, const Outcome& outcome) {
    QString more;
    switch (outcome.result) {
    case Outcome::Result::Passed:
        ++m_passed;
        break;
    case Outcome::Result::Failed:
        ++m_failed;
        more = QStringLiteral(" | expected: %1 | seen: %2").arg(outcome.expected, outcome.seen);
        break;
    case Outcome::Result::NotApplicable:
        ++m_notApplicable;
        more = QStringLiteral(" | ") + outcome.why;
        break;
    }
    if (m_json) {
        auto object = naming(entry);
        const auto members = toJson(outcome);
        for (auto member = members.begin(); member != members.end(); ++member) {
            object.insert(member.key(), member.value());
        }
        writeLine(m_stream, object);
    } else {
        writeLine(m_stream, resultText(outcome.result).leftJustified(resultWidth + 2) +
                                nameAndSentence(entry) + onOneLine(more));
    }
}

void RuleReport::end() {
    if (m_json) {
        writeLine(m_stream, QJsonObject{{QStringLiteral("passed"), m_passed},
                                        {QStringLiteral("failed"), m_failed},
                                        {QStringLiteral("not applicable"), m_notApplicable}});
    } else {
        writeLine(m_stream, QStringLiteral("%1 passed, %2 failed, %3 not applicable")
                                .arg(m_passed)
                                .arg(m_failed)
                                .arg(m_notApplicable));
    }
}

void listRules(std::ostream& stream, bool json, const std::vector<RuleEntry>& rules) {
    for (const auto& entry : rules) {
        if (json) {
            writeLine(stream, naming(entry));
        } else {
            writeLine(stream, nameAndSentence(entry));
        }
    }
}

} // namespace contract
