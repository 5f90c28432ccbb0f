#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace host {

class Console;

/// Shows how far an ingest is and at what rate: on a terminal a bar, or a line where the size of
/// the input is not known, elsewhere a line now and then. Borrows the console.
class IngestProgress {
public:
    explicit IngestProgress(Console& remarks);

    /// To be told after every line; shows it when it is time to.
    void show(qint64 lines, qint64 bytes, std::optional<qint64> size);

    /// The line that remains.
    void finish(qint64 lines);

private:
    void showBar(qint64 lines, qint64 bytes, std::optional<qint64> size);
    QString text(qint64 lines) const;

    Console& m_remarks;
    QElapsedTimer m_running;
    QElapsedTimer m_shown;
};

} // namespace host
