#pragma once

#include <QDateTime>
#include <QLoggingCategory>
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
        if (QLoggingCategory::defaultCategory()->isDebugEnabled()) {
            const qint64 msecs = QDateTime::currentMSecsSinceEpoch() - m_startMsecs;
            // In quotes, as hosts know the lines from QDebug's stream, which takes three times as
            // long.
            qDebug("\"%s\"", qUtf8Printable(text.arg(msecs)));
        }
    }

private:
    qint64 m_startMsecs;
};

} // namespace mongo
