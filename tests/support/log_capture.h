#pragma once

#include "tests/support/qt_printers.h"

#include <QMessageLogContext>
#include <QString>
#include <QtGlobal>

#include <mutex>
#include <ostream>
#include <utility>
#include <vector>

namespace test_support {

/// One line that went through Qt's message logger.
struct log_line {
    QtMsgType type = QtDebugMsg;
    QString category;
    QString text;

    friend bool operator==(const log_line&, const log_line&) = default;

    friend void PrintTo(const log_line& line, std::ostream* out) {
        static constexpr const char* types[] = {"debug", "warning", "critical", "fatal", "info"};
        *out << types[line.type] << " [" << line.category.toStdString() << "] ";
        ::PrintTo(line.text, out);
    }
};

/// A debug line of the category "default", as every line of the plug-in is.
inline log_line debugLine(QString text) {
    return {QtDebugMsg, QStringLiteral("default"), std::move(text)};
}

/// Records what is logged while it lives, in place of printing it.
///
/// Installs a process-wide message handler and puts the previous one back, so captures may be
/// nested and must end in the reverse order. Lines of any thread are recorded.
class log_capture {
public:
    log_capture() : m_outer(std::exchange(current(), this)) {
        m_previous = qInstallMessageHandler(&log_capture::record);
    }

    ~log_capture() {
        qInstallMessageHandler(m_previous);
        const std::lock_guard lock{mutex()};
        current() = m_outer;
    }

    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    /// What was logged so far, oldest first.
    std::vector<log_line> lines() const {
        const std::lock_guard lock{mutex()};
        return m_lines;
    }

    /// Forgets what was logged so far.
    void clear() {
        const std::lock_guard lock{mutex()};
        m_lines.clear();
    }

private:
    static void record(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        const std::lock_guard lock{mutex()};
        if (current() != nullptr) {
            current()->m_lines.push_back({type, QString::fromUtf8(context.category), text});
        }
    }

    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }

    static log_capture*& current() {
        static log_capture* instance = nullptr;
        return instance;
    }

    log_capture* m_outer;
    QtMessageHandler m_previous = nullptr;
    std::vector<log_line> m_lines;
};

} // namespace test_support
