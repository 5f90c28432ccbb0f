#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace test_support {

/// A server that a test has started, which ends with this object and with the thread that started
/// it. What it says goes to a file, which a server that talks much cannot fill as it does a pipe.
class ServerProcess : public QProcess {
public:
    explicit ServerProcess(const QString& logFile);
    ~ServerProcess() override;

    /// Starts it and returns once its log says `ready`; false if it ends before, or says nothing
    /// for half a minute. The log begins anew.
    bool startAndAwait(const QString& program, const QStringList& arguments, const char* ready);
    void send(int signal);
    /// Ends it without a chance to do anything (SIGKILL). Throws std::runtime_error if it stays.
    void killAndWait();
    /// Asks it to end by this signal, and waits. Throws std::runtime_error if it stays.
    void endBy(int signal);

    QByteArray log() const;

protected:
    void setupChildProcess() override;

private:
    QString m_logFile;
};

/// Runs a program to its end and gives what it said; throws std::runtime_error, with what it said,
/// if it failed.
QByteArray runProgram(const QString& program, const QStringList& arguments);

/// The value of an environment variable that ./dev sets; throws std::runtime_error without one.
QString neededVariable(const char* name);

} // namespace test_support
