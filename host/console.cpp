#include "host/console.h"

#include "host/drawing.h"
#include "host/progress.h"

#include <ftxui/dom/table.hpp>
#include <ftxui/screen/terminal.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <utility>

namespace host {

namespace {

constexpr int complaintsShown = 20;

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

} // namespace host
