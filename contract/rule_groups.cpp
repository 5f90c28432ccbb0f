#include "contract/rules/rules.h"

#include <array>

namespace contract {

std::span<const RuleGroup> ruleGroups() {
    constexpr unsigned all = uplinkStore | downlinkStore | valueStore | eventStore | stateStore |
                             queueStore | clientStore;
    static const std::array groups{
        RuleGroup{"plugin", noStore, pluginRules(), true},
        RuleGroup{"meta-types", noStore, metaTypeRules(), true},
        RuleGroup{"objects", all, objectRules()},
        RuleGroup{"uplinks", uplinkStore, uplinkRules()},
        RuleGroup{"downlinks", downlinkStore, downlinkRules()},
        RuleGroup{"values", valueStore, valueRules()},
        RuleGroup{"events", eventStore, eventRules()},
        RuleGroup{"states", stateStore, driverStateRules()},
        RuleGroup{"queues", stateStore | queueStore, downlinkQueueRules()},
        RuleGroup{"clients", clientStore, clientRules()},
        RuleGroup{"threads", all, threadRules()},
    };
    return groups;
}

} // namespace contract
