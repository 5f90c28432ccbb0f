#include "tests/support/server_process.h"

#include <QElapsedTimer>
#include <QFile>

#include <signal.h>
#include <sys/prctl.h>

#include <stdexcept>
#include <string>

namespace test_support {

namespace {

constexpr int patienceMsecs = 30'000;
constexpr int pollMsecs = 10;

} // namespace

ServerProcess::ServerProcess(const QString& logFile) : m_logFile(logFile) {
    setProcessChannelMode(MergedChannels);
    setStandardOutputFile(m_logFile);
    setStandardInputFile(nullDevice());
}

ServerProcess::~ServerProcess() {
    if (state() != NotRunning) {
        kill();
        waitForFinished(patienceMsecs);
    }
}

void ServerProcess::setupChildProcess() {
    // The terminal's Ctrl-C is for the test, which ends its servers in the right order.
    ::setsid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

bool ServerProcess::startAndAwait(const QString& program, const QStringList& arguments,
                                  const char* ready) {
    QElapsedTimer waited;
    waited.start();
    start(program, arguments);
    if (!waitForStarted(patienceMsecs)) {
        throw std::runtime_error(program.toStdString() + ": " + errorString().toStdString());
    }
    while (!log().contains(ready)) {
        if (waitForFinished(pollMsecs) || waited.hasExpired(patienceMsecs)) {
            return false;
        }
    }
    return true;
}

void ServerProcess::send(int signal) {
    ::kill(static_cast<pid_t>(processId()), signal);
}

void ServerProcess::killAndWait() {
    endBy(SIGKILL);
}

void ServerProcess::endBy(int signal) {
    send(signal);
    if (!waitForFinished(patienceMsecs)) {
        throw std::runtime_error(program().toStdString() + " does not end");
    }
}

QByteArray ServerProcess::log() const {
    QFile file(m_logFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray runProgram(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(patienceMsecs);
    const QByteArray output = process.readAll();
    if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        throw std::runtime_error(program.toStdString() + ": " +
                                 process.errorString().toStdString() + ": " + output.toStdString());
    }
    return output;
}

QString neededVariable(const char* name) {
    const QString value = qEnvironmentVariable(name);
    if (value.isEmpty()) {
        throw std::runtime_error(std::string(name) +
                                 " is not set: run this through ./dev test or ./dev with-servers");
    }
    return value;
}

} // namespace test_support
