#include "host/console.h"

#include <ftxui/dom/elements.hpp>
#include <ftxui/dom/table.hpp>
#include <ftxui/screen/screen.hpp>
#include <ftxui/screen/terminal.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <limits>
#include <string>
#include <unistd.h>
#include <utility>

namespace host {

namespace {

constexpr int barWidth = 40;
constexpr int complaintsShown = 20;

/// Draws the element at its natural size, or cut at `maxWidth` columns.
ftxui::Screen draw(const ftxui::Element& element, int maxWidth = std::numeric_limits<int>::max()) {
    element->ComputeRequirement();
    const auto size = element->requirement();
    auto screen = ftxui::Screen::Create(ftxui::Dimension::Fixed(std::min(size.min_x, maxWidth)),
                                        ftxui::Dimension::Fixed(size.min_y));
    ftxui::Render(screen, element);
    return screen;
}

/// The screen's characters without colours and without blanks at the end of a line.
std::string plainText(const ftxui::Screen& screen) {
    std::string text;
    for (int y = 0; y < screen.dimy(); ++y) {
        std::string line;
        for (int x = 0; x < screen.dimx(); ++x) {
            const auto& character = screen.at(x, y);
            line += character.empty() ? " " : character;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

ftxui::Element tableElement(const std::vector<Console::Column>& columns,
                            const std::vector<QStringList>& rows) {
    const auto padded = [](const QString& text) { return ' ' + text.toStdString() + ' '; };
    std::vector<std::vector<std::string>> cells(1);
    for (const auto& column : columns) {
        cells.back().push_back(padded(column.title));
    }
    for (const auto& row : rows) {
        cells.emplace_back();
        std::ranges::transform(row, std::back_inserter(cells.back()), padded);
    }

    ftxui::Table table(std::move(cells));
    table.SelectAll().SeparatorVertical(ftxui::LIGHT);
    table.SelectRow(0).Decorate(ftxui::bold);
    table.SelectRow(0).BorderBottom(ftxui::LIGHT);
    int index = 0;
    for (const auto& column : columns) {
        if (column.number) {
            table.SelectColumn(index).DecorateCells(ftxui::align_right);
        }
        ++index;
    }
    return table.Render();
}

} // namespace

Console Console::standardOutput() {
    return Console(std::cout, isatty(STDOUT_FILENO) == 1 ? Kind::Terminal : Kind::Plain);
}

void Console::line(const QString& text) {
    m_stream << text.toStdString() << '\n' << std::flush;
}

void Console::heading(const QString& title) {
    line();
    if (m_kind == Kind::Terminal) {
        m_stream << draw(ftxui::text(title.toStdString()) | ftxui::bold).ToString() << '\n';
    } else {
        line(title);
    }
}

void Console::complaints(const QStringList& texts) {
    for (const auto& text : texts.mid(0, complaintsShown)) {
        line(text);
    }
    if (texts.size() > complaintsShown) {
        line(QStringLiteral("… and %1 more").arg(texts.size() - complaintsShown));
    }
}

void Console::table(const std::vector<Column>& columns, const std::vector<QStringList>& rows) {
    const auto table = tableElement(columns, rows);
    if (m_kind == Kind::Terminal) {
        m_stream << draw(table, ftxui::Terminal::Size().dimx).ToString() << '\n' << std::flush;
    } else {
        m_stream << plainText(draw(table)) << std::flush;
    }
}

Progress Console::progress(const QString& title, int total) {
    return Progress(*this, title, total);
}

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
    const auto bar = ftxui::hbox({
        ftxui::text(m_title.toStdString() + ' '),
        ftxui::gauge(part) | ftxui::size(ftxui::WIDTH, ftxui::EQUAL, barWidth),
        ftxui::text(' ' + std::to_string(m_done) + " of " + std::to_string(m_total)),
    });
    m_console.m_stream << '\r' << draw(bar).ToString() << std::flush;
    m_lineOpen = true;
}

void Progress::printQuarter(int before) {
    constexpr qint64 parts = 4;
    if (before * parts / m_total != m_done * parts / m_total) {
        m_console.line(QStringLiteral("%1: %2 of %3").arg(m_title).arg(m_done).arg(m_total));
    }
}

} // namespace host
