#include "contract/run.h"

#include "contract/catalogue.h"
#include "contract/child_processes.h"
#include "contract/child_task.h"
#include "contract/outcome.h"
#include "contract/report.h"
#include "contract/settings.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>

#include <map>
#include <set>
#include <stdexcept>

namespace contract {

namespace {

/// The selected rules of one group.
struct Selection {
    const RuleGroup* group = nullptr;
    std::vector<RuleEntry> rules;

    QString name() const { return QLatin1String(group->name); }
};

std::vector<Selection> selections(const QString& pattern) {
    std::vector<Selection> selected;
    for (const auto& entry : selectedRules(pattern)) {
        if (selected.empty() || selected.back().group != entry.group) {
            selected.push_back({entry.group, {}});
        }
        selected.back().rules.push_back(entry);
    }
    return selected;
}

/// Looks into the stores, by group. Throws std::runtime_error if they must not be touched.
std::map<QString, Outcome> look(const ChildProcesses& children, const CommandLine& given,
                                const std::vector<Selection>& selected) {
    QStringList groups;
    for (const auto& selection : selected) {
        if (selection.group->stores != noStore) {
            groups.append(selection.name());
        }
    }
    std::map<QString, Outcome> looks;
    std::set<int> inUse;
    children.run(lookTask(), groups, [&](const QString& group, const QJsonObject& report) {
        looks.emplace(group, outcomeOf(report));
        for (const auto& device : report.value(QLatin1String("inUse")).toArray()) {
            inUse.insert(device.toInt());
        }
    });
    if (!inUse.empty() && !given.deleteRecords) {
        throw std::runtime_error(
            QStringLiteral("there are records of device %1%2 in the stores; choose other numbers "
                           "(--devices), or have them deleted (--yes)")
                .arg(*inUse.begin())
                .arg(inUse.size() == 1
                         ? QString()
                         : QStringLiteral(" and %1 more devices").arg(inUse.size() - 1))
                .toStdString());
    }
    return looks;
}

void tryRules(const ChildProcesses& children, const Selection& selection, RuleReport& report) {
    std::map<QString, RuleEntry> byName;
    QStringList names;
    for (const auto& entry : selection.rules) {
        byName.emplace(entry.name(), entry);
        names.append(entry.name());
    }
    const TakeReport take = [&](const QString& name, const QJsonObject& outcome) {
        report.add(byName.at(name), outcomeOf(outcome));
    };
    if (!selection.group->fresh) {
        children.run(tryTask(), names, take);
        return;
    }
    for (const auto& name : names) {
        children.run(tryTask(), {name}, take);
    }
}

} // namespace

bool run(const CommandLine& given, std::ostream& output) {
    if (!QFileInfo(given.pluginFile).isFile()) {
        throw std::runtime_error("there is no plug-in file " + given.pluginFile.toStdString());
    }
    findSettings(given.settingsFile);
    const auto selected = selections(given.only);
    const ChildProcesses children(QCoreApplication::arguments().mid(1), given.timeLimitSecs);
    const auto looks = look(children, given, selected);
    RuleReport report(output, given.json);
    for (const auto& selection : selected) {
        const auto looked = looks.find(selection.name());
        if (looked == looks.end() || looked->second.result == Outcome::Result::Passed) {
            tryRules(children, selection, report);
            continue;
        }
        // Without having looked, nothing is stored.
        for (const auto& entry : selection.rules) {
            report.add(entry, looked->second);
        }
    }
    report.end();
    return report.allPassed();
}

} // namespace contract
