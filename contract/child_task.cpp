#include "contract/child_task.h"

#include "contract/expectations.h"
#include "contract/log_lines.h"
#include "contract/outcome.h"
#include "contract/settings.h"
#include "contract/trial.h"
#include "host/mongo_instance.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdlib>
#include <unistd.h>

namespace contract {

namespace {

/// The standard output as it was when the process began.
class Report {
public:
    Report() {
        m_file.open(dup(STDOUT_FILENO), QIODevice::WriteOnly, QFileDevice::AutoCloseHandle);
        dup2(STDERR_FILENO, STDOUT_FILENO);
    }

    void write(const QString& item, QJsonObject members) {
        members.insert(QStringLiteral("item"), item);
        m_file.write(QJsonDocument(members).toJson(QJsonDocument::Compact) + '\n');
        m_file.flush();
    }

private:
    QFile m_file;
};

/// What becomes of `body`, which does something with the plug-in.
template <class Body>
Outcome outcomeOfRunning(const Body& body) {
    try {
        body();
    } catch (const RuleBroken& broken) {
        return failure(broken.expected, broken.seen);
    } catch (const NotApplicable& notApplicable) {
        return {.result = Outcome::Result::NotApplicable,
                .expected = {},
                .seen = {},
                .why = notApplicable.why};
    } catch (...) {
        return failure(QStringLiteral("no exception"), currentException());
    }
    return {};
}

/// The devices of the group's selected rules that have records.
QJsonObject look(Trial& trial, const CommandLine& given, const QString& group) {
    QJsonArray inUse;
    const auto outcome = outcomeOfRunning([&] {
        for (const auto& entry : selectedRules(given.only)) {
            if (QLatin1String(entry.group->name) == group) {
                trial.begin(entry.firstDevice(given.firstDevice));
                for (const int device : trial.devicesInUse(entry.group->stores)) {
                    inUse.append(device);
                }
            }
        }
    });
    auto members = toJson(outcome);
    members.insert(QStringLiteral("inUse"), inUse);
    return members;
}

/// Tries the rule, and leaves nothing in the stores.
Outcome tryRule(Trial& trial, const RuleEntry& entry, const CommandLine& given) {
    const auto stores = entry.group->stores;
    trial.begin(entry.firstDevice(given.firstDevice));
    if (given.deleteRecords) {
        const auto cleared = outcomeOfRunning([&] { trial.clear(stores); });
        if (cleared.result == Outcome::Result::Failed) {
            return cleared;
        }
    }
    const auto outcome = outcomeOfRunning([&] { entry.rule->check(trial); });
    const auto cleared = outcomeOfRunning([&] { trial.clear(stores); });
    return outcome.result == Outcome::Result::Passed ? cleared : outcome;
}

} // namespace

void doTask(const CommandLine& given) {
    Report report;
    takeLog(given.verbose);
    const host::MongoInstance mongoDriver;
    Trial trial(given.pluginFile, findSettings(given.settingsFile), given.registeredDevice);
    for (const auto& item : given.items) {
        if (given.task == lookTask()) {
            report.write(item, look(trial, given, item));
            continue;
        }
        for (const auto& entry : selectedRules({})) {
            if (entry.name() == item) {
                report.write(item, toJson(tryRule(trial, entry, given)));
            }
        }
    }
    std::_Exit(EXIT_SUCCESS);
}

} // namespace contract
