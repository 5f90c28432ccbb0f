#include "host/doctor/doctor.h"

#include "host/console.h"
#include "host/doctor/finding.h"
#include "host/doctor/mongo_check.h"
#include "host/doctor/plugin_check.h"
#include "host/doctor/redis_check.h"
#include "host/doctor/settings_check.h"
#include "host/failure.h"
#include "host/input/mongo_url.h"
#include "host/input/settings.h"
#include "host/records/record_text.h"
#include "host/session/interrupt.h"
#include "host/session/session.h"

#include <array>
#include <optional>

namespace host {

namespace {

/// Shows findings as they come, and keeps count.
class Report {
public:
    explicit Report(Session& session)
        : m_console(session.results()), m_form(session.options().form),
          m_output(session.output(fields())) {}

    void add(const QString& area, const Findings& findings) {
        if (m_form == OutputForm::Table) {
            m_console.heading(area);
        }
        for (const auto& finding : findings) {
            ++m_counts.at(static_cast<std::size_t>(finding.severity));
            m_form == OutputForm::Table ? addLines(finding) : addRecord(area, finding);
        }
    }

    /// Whether nothing was worse than a note.
    bool finish() {
        if (m_form == OutputForm::Table) {
            m_console.line();
            m_console.line(QStringLiteral("errors: %1, warnings: %2, notes: %3, ok: %4")
                               .arg(count(Severity::Error))
                               .arg(count(Severity::Warning))
                               .arg(count(Severity::Note))
                               .arg(count(Severity::Ok)));
        }
        m_output.finish();
        return count(Severity::Error) == 0 && count(Severity::Warning) == 0;
    }

private:
    static std::vector<Field> fields() {
        std::vector<Field> fields;
        for (const auto* name : {"severity", "area", "subject", "found", "advice", "details"}) {
            fields.push_back({.name = QString::fromLatin1(name), .title = {}});
        }
        return fields;
    }

    int count(Severity severity) const { return m_counts.at(static_cast<std::size_t>(severity)); }

    void addLines(const Finding& finding) {
        constexpr int severityWidth = 9;
        m_console.line(severityName(finding.severity).leftJustified(severityWidth) +
                       visibleText(finding.subject + QStringLiteral(": ") + finding.found));
        if (!finding.advice.isEmpty()) {
            m_console.line(QString(severityWidth, QLatin1Char(' ')) + QStringLiteral("-> ") +
                           visibleText(finding.advice));
        }
    }

    void addRecord(const QString& area, const Finding& finding) {
        m_output.add({severityName(finding.severity), area.toLower(), finding.subject,
                      finding.found, finding.advice, finding.details});
    }

    Console& m_console;
    OutputForm m_form;
    RecordOutput m_output;
    std::array<int, 4> m_counts{};
};

Findings environmentFindings() {
    Findings findings;
    findings.push_back({.subject = QStringLiteral("settings"),
                        .found = QStringLiteral("MONGODB_URL and REDIS_URL name the servers")});
    return findings;
}

/// The settings as far as they can be read; what is wrong with them is added to the report.
std::optional<QJsonObject> examineSettings(const QString& named, Report& report) {
    const auto area = QStringLiteral("Settings");
    try {
        const auto file = findSettingsFile(named);
        auto settings = file.isEmpty() ? settingsFromEnvironment() : readSettingsObject(file);
        auto findings =
            file.isEmpty() ? environmentFindings() : settingsFileFindings(file, settings);
        const auto more = settingsFindings(settings);
        findings.insert(findings.end(), more.begin(), more.end());
        report.add(area, findings);
        return settings;
    } catch (const Failure& failure) {
        report.add(area, {{.severity = Severity::Error,
                           .subject = QStringLiteral("settings"),
                           .found = QString::fromUtf8(failure.what()),
                           .advice = QStringLiteral("name a settings file with --settings")}});
        return {};
    }
}

bool canBeHandedOn(const QString& mongoUrl) {
    return mongoUrl.startsWith(QLatin1String("mongodb")) && mongoUrlFault(mongoUrl).isEmpty();
}

} // namespace

bool runDoctor(Session& session) {
    const Interrupt interrupt;
    Report report(session);
    const auto settings = examineSettings(session.options().settingsFile, report);
    report.add(QStringLiteral("Plug-in"), pluginFindings(session.options().pluginFile));
    if (settings) {
        if (canBeHandedOn(settings->value(QLatin1String("url")).toString())) {
            report.add(QStringLiteral("MongoDB"),
                       mongoFindings(*settings, session.options().localTimes));
        }
        if (!Interrupt::requested()) {
            report.add(QStringLiteral("Redis"), redisFindings(*settings));
        }
    }
    const bool sound = report.finish();
    if (Interrupt::requested()) {
        throw Failure(QStringLiteral("ended before all was looked at"));
    }
    return sound;
}

} // namespace host
