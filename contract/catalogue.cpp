#include "contract/catalogue.h"

#include <QRegularExpression>

namespace contract {

std::vector<RuleEntry> selectedRules(const QString& pattern) {
    const QRegularExpression expression(pattern);
    std::vector<RuleEntry> selected;
    int place = 0;
    for (const auto& group : ruleGroups()) {
        for (const auto& rule : group.rules) {
            const RuleEntry entry{&group, &rule, place++};
            // One that is malformed matches nothing.
            if (expression.isValid() && expression.match(entry.name()).hasMatch()) {
                selected.push_back(entry);
            }
        }
    }
    return selected;
}

} // namespace contract
