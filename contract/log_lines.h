#pragma once

#include <QStringList>

namespace contract {

/// From here on what the process logs goes to the standard error, or nowhere.
void takeLog(bool toStandardError);

/// Holds on to the debug lines of the category "default" that are logged while it lives. One at a
/// time. Needs takeLog().
class LogLines {
public:
    LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;
    ~LogLines();

    /// The lines since the last call, without the quotes that QDebug puts around a text.
    QStringList take();

private:
    QStringList m_lines;
};

} // namespace contract
