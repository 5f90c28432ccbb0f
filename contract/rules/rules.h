#pragma once

#include "contract/rule.h"

#include <span>

/// The rules, a file for each interface.
namespace contract {

std::span<const Rule> pluginRules();
std::span<const Rule> metaTypeRules();
std::span<const Rule> objectRules();
std::span<const Rule> uplinkRules();
std::span<const Rule> downlinkRules();
std::span<const Rule> valueRules();
std::span<const Rule> eventRules();
std::span<const Rule> driverStateRules();
std::span<const Rule> downlinkQueueRules();
std::span<const Rule> clientRules();
std::span<const Rule> threadRules();

/// The rule of two groups that no plug-in can be tried with.
[[noreturn]] void durableCopyShowsNowhere(Trial& trial);

} // namespace contract
