#pragma once

#include <QString>

#include <span>

namespace contract {

class Trial;

/// Where the rules of a group leave records; flags.
enum Stores : unsigned {
    noStore = 0,
    uplinkStore = 1,
    downlinkStore = 2,
    valueStore = 4,
    eventStore = 8,
    stateStore = 16,
    queueStore = 32,
    clientStore = 64,
};

/// One thing that a host relies on.
struct Rule {
    /// GROUP.WHAT, for the command line and for documents.
    const char* name;
    /// One sentence without a full stop.
    const char* sentence;
    /// Returns if the plug-in keeps the rule; throws RuleBroken or NotApplicable, or lets through
    /// what the plug-in throws.
    void (*check)(Trial& trial);
};

/// The rules of one interface.
struct RuleGroup {
    const char* name;
    unsigned stores;
    std::span<const Rule> rules;
    /// Each rule begins with a process that has not loaded the plug-in yet.
    bool fresh = false;
};

/// All groups, in the order in which they are tried.
std::span<const RuleGroup> ruleGroups();

/// Whatever became of a rule.
struct Outcome {
    enum class Result { Passed, Failed, NotApplicable };

    Result result = Result::Passed;
    /// Failed: what a host expects, and what the plug-in did.
    QString expected;
    QString seen;
    /// NotApplicable.
    QString why;
};

/// Thrown by a rule that the plug-in breaks.
struct RuleBroken {
    QString expected;
    QString seen;
};

/// Thrown by a rule that cannot be tried with this plug-in or these settings.
struct NotApplicable {
    QString why;
};

} // namespace contract
