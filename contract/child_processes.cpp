#include "contract/child_processes.h"

#include "contract/outcome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QProcess>

#include <cstring>

namespace contract {

namespace {

constexpr qint64 msecsPerSec = 1000;

QString endOf(const QProcess& process) {
    if (process.error() == QProcess::FailedToStart) {
        return QStringLiteral("the process could not be started: ") + process.errorString();
    }
    if (process.exitStatus() == QProcess::CrashExit) {
        return QStringLiteral("it ended the process by signal %1 (%2)")
            .arg(process.exitCode())
            .arg(QString::fromLocal8Bit(strsignal(process.exitCode())));
    }
    return QStringLiteral("it ended the process with exit status %1").arg(process.exitCode());
}

} // namespace

void ChildProcesses::run(const QString& task, QStringList items, const TakeReport& take) const {
    while (!items.isEmpty()) {
        const auto end = runOne(task, items, take);
        if (!items.isEmpty()) {
            take(
                items.takeFirst(),
                toJson(failure(QStringLiteral("an answer within %1 s").arg(m_timeLimitSecs), end)));
        }
    }
}

QString ChildProcesses::runOne(const QString& task, QStringList& items,
                               const TakeReport& take) const {
    auto arguments = m_arguments;
    arguments << QStringLiteral("--task") << task;
    for (const auto& item : items) {
        arguments << QStringLiteral("--item") << item;
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), arguments, QIODevice::ReadOnly);

    QElapsedTimer sinceLast;
    sinceLast.start();
    while (!items.isEmpty()) {
        if (process.canReadLine()) {
            const auto report = QJsonDocument::fromJson(process.readLine()).object();
            take(items.takeFirst(), report);
            sinceLast.restart();
            continue;
        }
        const auto left = m_timeLimitSecs * msecsPerSec - sinceLast.elapsed();
        if (process.state() == QProcess::NotRunning) {
            return endOf(process);
        }
        if (left <= 0) {
            process.kill();
            process.waitForFinished();
            return QStringLiteral("none: it hangs");
        }
        process.waitForReadyRead(static_cast<int>(left));
    }
    process.waitForFinished();
    return {};
}

} // namespace contract
