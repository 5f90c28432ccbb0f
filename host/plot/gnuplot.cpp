#include "host/plot/gnuplot.h"

#include "host/failure.h"

#include <QProcess>
#include <QStandardPaths>

namespace host {

namespace {

constexpr int timeLimitMsecs = 60'000;

} // namespace

QByteArray runGnuplot(const QString& script) {
    const auto program = QStandardPaths::findExecutable(QStringLiteral("gnuplot"));
    if (program.isEmpty()) {
        throw Failure(QStringLiteral("drawing needs the program gnuplot, which is not installed"));
    }
    QProcess gnuplot;
    gnuplot.start(program, {QStringLiteral("-")});
    gnuplot.write(script.toUtf8());
    gnuplot.closeWriteChannel();
    if (!gnuplot.waitForFinished(timeLimitMsecs)) {
        gnuplot.kill();
        gnuplot.waitForFinished();
        throw Failure(QStringLiteral("gnuplot did not end: ") + gnuplot.errorString());
    }
    if (gnuplot.exitStatus() != QProcess::NormalExit || gnuplot.exitCode() != 0) {
        throw Failure(QStringLiteral("gnuplot failed: ") +
                      QString::fromUtf8(gnuplot.readAllStandardError()).trimmed());
    }
    return gnuplot.readAllStandardOutput();
}

} // namespace host
