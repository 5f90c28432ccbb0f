#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace contract {

/// Takes what a child process says of an item.
using TakeReport = std::function<void(const QString& item, const QJsonObject& report)>;

/// Has child processes of this program do a task (child_task.h), item by item, so that a plug-in
/// which ends its process or hangs takes nothing along but the item: the report then says "failed",
/// and another process does the rest.
class ChildProcesses {
public:
    /// `arguments` are the program's own.
    ChildProcesses(QStringList arguments, int timeLimitSecs)
        : m_arguments(std::move(arguments)), m_timeLimitSecs(timeLimitSecs) {}

    void run(const QString& task, QStringList items, const TakeReport& take) const;

private:
    /// Runs one process until it has done all items, in which case `items` is empty afterwards, or
    /// ends before or hangs: then the first of the items that are left is the one to blame, and the
    /// result says what happened.
    QString runOne(const QString& task, QStringList& items, const TakeReport& take) const;

    QStringList m_arguments;
    int m_timeLimitSecs;
};

} // namespace contract
