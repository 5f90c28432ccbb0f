#pragma once

#include <QString>

namespace host {

class Console;

/// A progress bar. Borrows the console.
class Progress {
public:
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(int steps = 1);

private:
    friend class Console;
    Progress(Console& console, QString title, int total);

    void drawBar();
    void printQuarter(int before);

    Console& m_console;
    QString m_title;
    int m_total = 0;
    int m_done = 0;
    bool m_lineOpen = false;
};

} // namespace host
