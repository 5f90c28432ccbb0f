#include "host/ingest/ingest_progress.h"

#include "host/console.h"
#include "host/drawing.h"

#include <algorithm>

namespace host {

namespace {

constexpr int barWidth = 20;
constexpr qint64 terminalMsecs = 250;
constexpr qint64 plainMsecs = 10'000;

} // namespace

IngestProgress::IngestProgress(Console& remarks) : m_remarks(remarks) {
    m_running.start();
    m_shown.start();
}

void IngestProgress::show(qint64 lines, qint64 bytes, std::optional<qint64> size) {
    if (!m_shown.hasExpired(m_remarks.isTerminal() ? terminalMsecs : plainMsecs)) {
        return;
    }
    m_shown.restart();
    if (m_remarks.isTerminal()) {
        showBar(lines, bytes, size);
    } else {
        m_remarks.line(text(lines));
    }
}

void IngestProgress::finish(qint64 lines) {
    m_remarks.line(text(lines));
}

void IngestProgress::showBar(qint64 lines, qint64 bytes, std::optional<qint64> size) {
    ftxui::Elements parts{ftxui::text(text(lines).toStdString())};
    if (size.value_or(0) > 0) {
        // Last, for it is what a narrow terminal may cut off.
        parts.push_back(ftxui::text(" "));
        parts.push_back(ftxui::gauge(static_cast<float>(bytes) / static_cast<float>(*size)) |
                        ftxui::size(ftxui::WIDTH, ftxui::EQUAL, barWidth));
    }
    m_remarks.passingLine(draw(ftxui::hbox(parts), m_remarks.width() - 1).ToString());
}

QString IngestProgress::text(qint64 lines) const {
    const auto msecs = std::max<qint64>(m_running.elapsed(), 1);
    return QStringLiteral("%1 lines in %2 s, %3 a second")
        .arg(lines)
        .arg(static_cast<double>(msecs) / 1000.0, 0, 'f', 1)
        .arg(lines * 1000 / msecs);
}

} // namespace host
