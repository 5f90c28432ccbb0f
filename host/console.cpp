#include "host/console.h"

#include "host/drawing.h"
#include "host/failure.h"
#include "host/fitted_rows.h"
#include "host/progress.h"
#include "host/records/record_text.h"

#include <ftxui/dom/table.hpp>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <iterator>
#include <limits>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace host {

namespace {

constexpr int complaintsShown = 20;
constexpr const char* clearedLine = "\r\x1b[K";

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

std::vector<QStringList> visible(std::vector<QStringList> rows) {
    for (auto& row : rows) {
        std::ranges::transform(row, row.begin(), visibleText);
    }
    return rows;
}

int widthOf(int terminal) {
    winsize size{};
    return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

Console consoleOf(std::ostream& stream, int descriptor) {
    return isatty(descriptor) == 1 ? Console(stream, Console::Kind::Terminal, widthOf(descriptor))
                                   : Console(stream, Console::Kind::Plain);
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
    return consoleOf(std::cout, STDOUT_FILENO);
}

Console Console::standardError() {
    return consoleOf(std::cerr, STDERR_FILENO);
}

void Console::requireWritten() {
    m_stream.flush();
    noteFault();
    if (m_fault == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL); // NOLINT(cert-err33-c)
        std::raise(SIGPIPE);
    }
    if (m_fault != 0) {
        throw Failure(QStringLiteral("cannot write the output: %1").arg(qt_error_string(m_fault)));
    }
}

void Console::noteFault() {
    if (!m_stream && m_fault == 0) {
        m_fault = errno != 0 ? errno : EIO;
    }
}

void Console::line(const QString& text) {
    if (std::exchange(m_passing, false)) {
        m_stream << clearedLine;
    }
    m_stream << text.toStdString() << '\n' << std::flush;
    noteFault();
}

void Console::passingLine(const std::string& text) {
    if (isTerminal()) {
        m_stream << clearedLine << text << std::flush;
        noteFault();
        m_passing = true;
    }
}

void Console::bytes(const QByteArray& bytes) {
    m_stream.write(bytes.constData(), bytes.size());
    noteFault();
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
    const bool plain = m_kind == Kind::Plain;
    const auto whole = fittedRows(columns, visible(rows), std::numeric_limits<int>::max());
    const auto fitted = plain ? whole : fittedRows(columns, whole, m_width);
    const auto screen = draw(tableElement(columns, fitted));
    if (plain) {
        m_stream << plainText(screen) << std::flush;
    } else if (screen.dimx() <= m_width) {
        m_stream << screen.ToString() << '\n' << std::flush;
    } else {
        blocks(columns, whole);
    }
    noteFault();
}

void Console::blocks(const std::vector<Column>& columns, const std::vector<QStringList>& rows) {
    const auto widest = std::ranges::max(columns, {}, [](const Column& column) {
                            return column.title.size();
                        }).title.size();
    for (const auto& row : rows) {
        for (int i = 0; i < row.size(); ++i) {
            const auto& title = columns.at(static_cast<std::size_t>(i)).title;
            line(title.leftJustified(widest) + QStringLiteral("  ") + row.at(i));
        }
        line();
    }
}

Progress Console::progress(const QString& title, int total) {
    return Progress(*this, title, total);
}

} // namespace host
