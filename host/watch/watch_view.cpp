#include "host/watch/watch_view.h"

#include "host/records/record_text.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace host {

namespace {

/// From here on there is room for the date and for the words.
constexpr int wideColumns = 60;

constexpr std::array names{"Uplinks", "Values", "Events"};

ftxui::Element header(const WatchState& state, int width) {
    QStringList devices;
    for (const int device : state.devices) {
        devices.append(QString::number(device));
    }
    const auto list = devices.join(QLatin1String(", ")).toStdString();
    return ftxui::text(width < wideColumns ? list : "kelvro-host watch, UTC, devices " + list) |
           ftxui::bold;
}

ftxui::Element tabs(const WatchState& state, int width) {
    ftxui::Elements parts;
    for (std::size_t kind = 0; kind < names.size(); ++kind) {
        auto tab = std::to_string(kind + 1) + ' ' + names.at(kind);
        if (state.snapshot) {
            tab += ' ' + std::to_string(state.snapshot->lists.at(kind).perMinute);
            tab += width < wideColumns ? "" : " a minute";
        }
        auto element = ftxui::text(' ' + tab + ' ');
        parts.push_back(kind == static_cast<std::size_t>(state.shown) ? element | ftxui::inverted
                                                                      : element);
    }
    return ftxui::hbox(std::move(parts));
}

std::string status(const WatchState& state) {
    if (state.paused) {
        return "paused";
    }
    if (!state.fault.isEmpty()) {
        return "trying again: " + visibleText(state.fault).toStdString();
    }
    if (!state.snapshot) {
        return "asking …";
    }
    return "at " + state.snapshot->time.toString(QStringLiteral("HH:mm:ss")).toStdString() +
           ", every " + std::to_string(state.everySecs) + " s";
}

ftxui::Element statusLine(const WatchState& state) {
    return state.fault.isEmpty() || state.paused
               ? ftxui::text(status(state))
               : ftxui::paragraph(status(state)) | ftxui::color(ftxui::Color::Red);
}

ftxui::Element keyLine(const WatchState& state) {
    if (state.typing) {
        return ftxui::text("filter: " + state.filter + "_") | ftxui::bold;
    }
    const auto filter = state.filter.empty() ? std::string("/ filter") : "/ " + state.filter;
    return ftxui::text(filter + "  1-3 list  p pause  q quit") | ftxui::dim;
}

bool type(WatchState& state, const std::string& key) {
    if (key == "enter") {
        state.typing = false;
    } else if (key == "escape") {
        state.typing = false;
        state.filter.clear();
    } else if (key == "backspace") {
        auto text = QString::fromStdString(state.filter);
        text.chop(1);
        state.filter = text.toStdString();
    } else if (key != "tab") {
        state.filter += key;
    }
    return true;
}

} // namespace

bool press(WatchState& state, const std::string& key) {
    if (state.typing) {
        return type(state, key);
    }
    if (key == "/") {
        state.typing = true;
    } else if (key == "escape") {
        state.filter.clear();
    } else if (key == "p" || key == " ") {
        state.paused = !state.paused;
    } else if (key == "1" || key == "2" || key == "3") {
        state.shown = static_cast<Snapshot::Kind>(key.front() - '1');
    } else if (key == "tab") {
        state.shown = static_cast<Snapshot::Kind>((state.shown + 1) % 3);
    } else {
        return false;
    }
    return true;
}

std::vector<std::string> linesOf(const WatchState& state, int width) {
    std::vector<std::string> lines;
    if (!state.snapshot) {
        return lines;
    }
    const auto form =
        width < wideColumns ? QStringLiteral("HH:mm:ss") : QStringLiteral("yyyy-MM-dd HH:mm:ss");
    const auto filter = QString::fromStdString(state.filter);
    int digits = 0;
    for (const int device : state.devices) {
        digits = std::max(digits, QString::number(device).size());
    }
    for (const auto& record : state.snapshot->lists.at(state.shown).records) {
        const QString line = record.time.toUTC().toString(form) + QLatin1String("  ") +
                             QString::number(record.device).leftJustified(digits) +
                             QLatin1String("  ") + visibleText(record.text);
        if (line.contains(filter, Qt::CaseInsensitive)) {
            lines.push_back(line.toStdString());
        }
    }
    return lines;
}

ftxui::Element drawWatch(const WatchState& state, int width) {
    ftxui::Elements lines;
    for (const auto& line : linesOf(state, width)) {
        lines.push_back(ftxui::text(line));
    }
    if (lines.empty() && state.snapshot) {
        lines.push_back(ftxui::text(state.filter.empty() ? "none yet" : "none with this text") |
                        ftxui::dim);
    }
    return ftxui::vbox({
        header(state, width),
        tabs(state, width),
        ftxui::separator(),
        ftxui::vbox(std::move(lines)) | ftxui::yframe | ftxui::flex,
        ftxui::separator(),
        statusLine(state),
        keyLine(state),
    });
}

} // namespace host
