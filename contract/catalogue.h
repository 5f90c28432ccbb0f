#pragma once

#include "contract/rule.h"

#include <vector>

namespace contract {

/// Devices that each rule has for itself.
constexpr int devicesOfARule = 4;

/// A rule with its place among all rules, from which its device numbers follow.
struct RuleEntry {
    const RuleGroup* group = nullptr;
    const Rule* rule = nullptr;
    int place = 0;

    QString name() const { return QLatin1String(rule->name); }
    int firstDevice(int ofAll) const { return ofAll + place * devicesOfARule; }
};

/// The rules whose names match the regular expression, in their order; all if it is empty.
std::vector<RuleEntry> selectedRules(const QString& pattern);

} // namespace contract
