#pragma once

#include "contract/catalogue.h"
#include "contract/rule.h"

#include <ostream>

namespace contract {

/// Prints what became of the rules, one line each, and counts.
class RuleReport {
public:
    RuleReport(std::ostream& stream, bool json) : m_stream(stream), m_json(json) {}

    void add(const RuleEntry& entry, const Outcome& outcome);

    /// The last line.
    void end();

    bool allPassed() const { return m_failed == 0; }

private:
    std::ostream& m_stream;
    bool m_json;
    int m_passed = 0;
    int m_failed = 0;
    int m_notApplicable = 0;
};

/// Prints names and sentences, one rule a line.
void listRules(std::ostream& stream, bool json, const std::vector<RuleEntry>& rules);

} // namespace contract
