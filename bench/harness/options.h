#pragma once

#include <QJsonObject>
#include <QString>

#include <functional>

namespace bench {

/// The options that every benchmark program has:
///     --quick           as little as shows that everything runs; the numbers mean nothing
///     --results FILE    where the numbers are written as JSON
struct Options {
    bool quick = false;
    QString resultsFile;

    /// To the file of --results, if there is one. Throws std::runtime_error, naming the file, if
    /// it cannot be written.
    void write(const QJsonObject& results) const;
};

/// Takes them out of the command line.
Options takeOptions(int& argc, char** argv);

/// What main() returns: the status that `program` gives, or 1 after its exception has been printed.
/// Debug lines, of which the plug-in writes one for every operation, are dropped as in a production
/// host.
int runProgram(const char* name, const std::function<int()>& program);

} // namespace bench
