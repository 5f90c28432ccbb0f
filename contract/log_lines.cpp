#include "contract/log_lines.h"

#include <QLoggingCategory>

#include <iostream>
#include <mutex>
#include <optional>
#include <utility>

namespace contract {

namespace {

/// What the message handler, a plain function, works with. The plug-in may log on any thread.
struct Log {
    std::mutex mutex;
    bool toStandardError = false;
    std::optional<QStringList> kept;
};

Log& theLog() {
    static Log log;
    return log;
}

void handle(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    auto& log = theLog();
    const std::lock_guard lock{log.mutex};
    if (log.kept && type == QtDebugMsg && qstrcmp(context.category, "default") == 0) {
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
    const std::lock_guard lock{theLog().mutex};
    theLog().kept.emplace();
}

LogLines::~LogLines() {
    const std::lock_guard lock{theLog().mutex};
    theLog().kept.reset();
}

QStringList LogLines::take() {
    const std::lock_guard lock{theLog().mutex};
    return std::exchange(*theLog().kept, {});
}

} // namespace contract
