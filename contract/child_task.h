#pragma once

#include "contract/command_line.h"

namespace contract {

/// What a child process does: look whether the devices of a group's rules are free, or try rules.
/// The names are those of the option --task; its items are names of groups, or of rules.
inline QString lookTask() {
    return QStringLiteral("look");
}
inline QString tryTask() {
    return QStringLiteral("try");
}

/// Does the task and writes a JSON object a line to the standard output when an item is done:
/// {"item", and the members of an Outcome; of a look also "inUse", an array of device numbers}.
/// Whatever else is written to the standard output comes out at the standard error. Ends the
/// process without destroying what the plug-in has made.
[[noreturn]] void doTask(const CommandLine& given);

} // namespace contract
