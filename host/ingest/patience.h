#pragma once

#include <QString>

#include <exception>
#include <functional>

namespace host {

class Console;

/// Thrown where the user wants the work to end while a server is away.
struct GivenUp {};

/// Makes calls to a store whose server comes and goes: while it is away, waits for it.
///
/// Whether a call failed because of the server or because of its record is found out by a question
/// to the server: where that is answered, the call is made once more and then counts as refused.
class Patience {
public:
    enum class Outcome {
        Done,
        /// The store has a record with the same key.
        SecondCopy,
        /// The server is there and does not take it: reason().
        Refused,
    };

    /// `server` is its name in remarks; `ask` asks it for something small and throws if it does not
    /// answer. Borrows the console.
    Patience(QString server, std::function<void()> ask, Console& remarks);

    /// Makes the call, which may be made again after it threw, done or not. Throws GivenUp.
    Outcome attempt(const std::function<void()>& call);

    /// Makes a call that has no record to be refused for. Throws GivenUp, or Failure if the server
    /// is there and refuses it.
    void require(const QString& what, const std::function<void()>& call);

    /// Why the last call was refused.
    const QString& reason() const { return m_reason; }

private:
    bool isThere();
    void awaitServer();

    QString m_server;
    std::function<void()> m_ask;
    Console& m_remarks;
    QString m_reason;
};

} // namespace host
