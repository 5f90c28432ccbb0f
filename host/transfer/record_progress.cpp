#include "host/transfer/record_progress.h"

#include "host/console.h"

#include <algorithm>

namespace host {

namespace {

constexpr qint64 step = 1000;
constexpr qint64 shortMsecs = 1000;

} // namespace

RecordProgress::RecordProgress(Console& console, const QString& title, qint64 expected)
    : m_console(console), m_title(title),
      m_steps(static_cast<int>(std::max<qint64>(expected / step, 1))),
      m_progress(console.progress(title + QStringLiteral(", thousands of records"), m_steps)) {
    m_timer.start();
}

RecordProgress::~RecordProgress() {
    const auto msecs = m_timer.elapsed();
    if (msecs >= shortMsecs) {
        m_console.line(QStringLiteral("%1: %2 records in %3 s, %4 a second")
                           .arg(m_title)
                           .arg(m_done)
                           .arg(static_cast<double>(msecs) / 1000, 0, 'f', 1)
                           .arg(m_done * 1000 / msecs));
    }
}

void RecordProgress::advance() {
    // What is stored meanwhile comes on top of what was expected.
    ++m_done;
    if (m_done % step == 0 && m_done / step <= m_steps) {
        m_progress.advance();
    }
}

} // namespace host
