#pragma once

#include <QDateTime>
#include <QDebug>
#include <QString>

namespace mongo {

/// Measures one operation of a repository and writes its debug line, for hosts that watch the
/// stores' speed in their log (Qt's message logger, category "default").
class operation_log {
public:
    operation_log() : m_startMsecs(QDateTime::currentMSecsSinceEpoch()) {}

    /// Writes `text` with the milliseconds since construction in place of "%1". Call it only when
    /// the operation has succeeded.
    void write(const QString& text) const {
        qDebug() << text.arg(QDateTime::currentMSecsSinceEpoch() - m_startMsecs);
    }

private:
    qint64 m_startMsecs;
};

} // namespace mongo
