#pragma once

#include "host/progress.h"

#include <QElapsedTimer>
#include <QString>

namespace host {

class Console;

/// The progress of many records, of which about `expected` are expected; at the end, if it took a
/// second, how many there were and the rate. Borrows the console.
class RecordProgress {
public:
    RecordProgress(Console& console, const QString& title, qint64 expected);
    ~RecordProgress();
    RecordProgress(const RecordProgress&) = delete;
    RecordProgress& operator=(const RecordProgress&) = delete;

    void advance();

private:
    Console& m_console;
    QString m_title;
    /// In thousands of records.
    int m_steps;
    Progress m_progress;
    QElapsedTimer m_timer;
    qint64 m_done = 0;
};

} // namespace host
