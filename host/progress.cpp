#include "host/progress.h"

#include "host/console.h"
#include "host/drawing.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr int widestBar = 40;

} // namespace

Progress::Progress(Console& console, QString title, int total)
    : m_console(console), m_title(std::move(title)), m_total(total) {}

Progress::~Progress() {
    if (m_lineOpen) {
        m_console.line();
    }
}

void Progress::advance(int steps) {
    const int before = m_done;
    m_done += steps;
    if (m_console.m_kind == Console::Kind::Terminal) {
        drawBar();
    } else {
        printQuarter(before);
    }
}

void Progress::drawBar() {
    const auto part = static_cast<float>(m_done) / static_cast<float>(m_total);
    const auto count = QStringLiteral(" %1 of %2").arg(m_done).arg(m_total);
    // A line that the terminal breaks would not be redrawn, but followed by another.
    const int width = m_console.width() - 1;
    const int barWidth = std::clamp(width - m_title.size() - 1 - count.size(), 0, widestBar);
    const auto bar = ftxui::hbox({
        ftxui::text(m_title.toStdString() + ' '),
        ftxui::gauge(part) | ftxui::size(ftxui::WIDTH, ftxui::EQUAL, barWidth),
        ftxui::text(count.toStdString()),
    });
    m_console.m_stream << '\r' << draw(bar, width).ToString() << std::flush;
    m_lineOpen = true;
}

void Progress::printQuarter(int before) {
    constexpr qint64 parts = 4;
    if (before * parts / m_total != m_done * parts / m_total) {
        m_console.line(QStringLiteral("%1: %2 of %3").arg(m_title).arg(m_done).arg(m_total));
    }
}

} // namespace host
