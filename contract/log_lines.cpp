#include "contract/log_lines.h"

#include <QLoggingCategory>

#include <iostream>
#include <mutex>
#include <utility>

namespace contract {

namespace {

/// What the message handler, a plain function, works with. The plug-in may log on any thread.
struct Log {
    std::mutex mutex;
    bool toStandardError = false;
    QStringList* kept = nullptr;
};

Log& theLog() {
    static Log log;
    return log;
}

void handle(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    auto& log = theLog();
    const std::scoped_lock lock{log.mutex};
    if (log.kept != nullptr && type == QtDebugMsg && qstrcmp(context.category, "default") == 0) {
        const bool quoted =
            text.size() > 1 && text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"'));
        log.kept->append(quoted ? text.mid(1, text.size() - 2) : text);
    }
    if (log.toStandardError) {
        std::cerr << context.category << ": " << text.toStdString() << '\n';
    }
}

} // namespace

void takeLog(bool toStandardError) {
    theLog().toStandardError = toStandardError;
    qInstallMessageHandler(&handle);
}

LogLines::LogLines() {
    const std::scoped_lock lock{theLog().mutex};
    theLog().kept = &m_lines;
}

LogLines::~LogLines() {
    const std::scoped_lock lock{theLog().mutex};
    theLog().kept = nullptr;
}

QStringList LogLines::take() {
    const std::scoped_lock lock{theLog().mutex};
    return std::exchange(m_lines, {});
}

} // namespace contract
