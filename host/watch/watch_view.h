#pragma once

#include "host/watch/snapshot.h"

#include <QString>

#include <ftxui/dom/elements.hpp>

#include <list>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// What the screen of `watch` is made of, and what its keys change.
struct WatchState {
    std::list<int> devices;
    int everySecs = 2;
    std::optional<Snapshot> snapshot;
    /// Of the last question; empty if it was answered.
    QString fault;
    Snapshot::Kind shown = Snapshot::Uplinks;
    /// Only records whose line has this text are shown.
    std::string filter;
    /// Its text is being typed.
    bool typing = false;
    bool paused = false;
};

/// A key's own text, as "q"; "enter", "escape", "backspace" and "tab" for those. False if the key
/// means nothing.
bool press(WatchState& state, const std::string& key);

/// The lines of the list that is shown, for a terminal of so many columns: time, device and what it
/// is. Times are in UTC.
std::vector<std::string> linesOf(const WatchState& state, int width);

/// The whole screen.
ftxui::Element drawWatch(const WatchState& state, int width);

} // namespace host
