#include "host/watch/watch.h"

#include "host/console.h"
#include "host/session/interrupt.h"
#include "host/watch/watch_view.h"
#include "host/watch/watcher.h"

#include <QtGlobal>

#include <ftxui/component/component.hpp>
#include <ftxui/component/event.hpp>
#include <ftxui/component/loop.hpp>
#include <ftxui/component/screen_interactive.hpp>

#include <cstdlib>
#include <thread>
#include <unistd.h>
#include <utility>

namespace host {

namespace {

/// The name that press() knows the key by.
std::string keyOf(const ftxui::Event& event) {
    static const std::vector<std::pair<ftxui::Event, std::string>> names{
        {ftxui::Event::Return, "enter"},
        {ftxui::Event::Escape, "escape"},
        {ftxui::Event::Backspace, "backspace"},
        {ftxui::Event::Tab, "tab"},
    };
    for (const auto& [key, name] : names) {
        if (event == key) {
            return name;
        }
    }
    return event.is_character() ? event.character() : std::string();
}

/// While one lives, log lines are dropped: they would be written across the screen.
class Silence {
public:
    Silence() : m_before(qInstallMessageHandler([](auto, const auto&, const auto&) {})) {}
    ~Silence() { qInstallMessageHandler(m_before); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    QtMessageHandler m_before;
};

/// Until a key or a signal ends it. The terminal is as before when this returns or throws.
void showScreen(WatchState& state, Watcher& watcher) {
    // A look at what has happened, as often as a person notices.
    constexpr std::chrono::milliseconds pace{40};
    auto screen = ftxui::ScreenInteractive::Fullscreen();
    screen.TrackMouse(false);
    const auto view = ftxui::Renderer([&] { return drawWatch(state, screen.dimx()); });
    const auto component = ftxui::CatchEvent(view, [&](const ftxui::Event& event) {
        const auto key = keyOf(event);
        if (!state.typing && key == "q") {
            screen.Exit();
            return true;
        }
        const bool known = !key.empty() && press(state, key);
        watcher.setPaused(state.paused);
        return known;
    });

    ftxui::Loop loop(&screen, component);
    while (!loop.HasQuitted() && !Interrupt::requested()) {
        if (auto news = watcher.takeNews()) {
            state.fault = news->fault;
            if (news->snapshot) {
                state.snapshot = std::move(news->snapshot);
            }
            screen.PostEvent(ftxui::Event::Custom);
        }
        loop.RunOnce();
        std::this_thread::sleep_for(pace);
    }
}

} // namespace

ExitStatus runWatch(const WatchOptions& options, Session& session) {
    if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1) {
        session.remarks().line(
            QStringLiteral("kelvro-host: watch fills a terminal, and its input or output is none"));
        return ExitStatus::WronglyCalled;
    }
    const Interrupt interrupt;
    const Silence silence;
    Watcher watcher(session.factory(), session.settings(), options.devices,
                    std::chrono::seconds(options.everySecs));
    WatchState state;
    state.devices = options.devices;
    state.everySecs = static_cast<int>(options.everySecs);
    showScreen(state, watcher);
    // A server that does not answer would hold the user up for as long as its time-out. Nothing is
    // lost with a question.
    if (!watcher.end(std::chrono::seconds(1))) {
        std::_Exit(static_cast<int>(ExitStatus::Done));
    }
    return ExitStatus::Done;
}

} // namespace host
