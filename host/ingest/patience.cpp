#include "host/ingest/patience.h"

#include "host/console.h"
#include "host/failure.h"
#include "host/session/interrupt.h"

#include <QElapsedTimer>

#include <optional>
#include <poll.h>
#include <system_error>
#include <utility>

namespace host {

namespace {

constexpr int pauseMsecs = 1000;
/// What a MongoDB server says of a key that is taken.
constexpr int duplicateKey = 11000;

struct Fault {
    QString text;
    bool secondCopy = false;
};

/// What the call threw.
std::optional<Fault> faultOf(const std::function<void()>& call) {
    try {
        call();
        return {};
    } catch (const GivenUp&) {
        throw;
    } catch (const std::system_error& error) {
        return Fault{QString::fromUtf8(error.what()), error.code().value() == duplicateKey};
    } catch (const std::exception& error) {
        return Fault{QString::fromUtf8(error.what())};
    } catch (const QString& error) {
        return Fault{error};
    }
}

} // namespace

Patience::Patience(QString server, std::function<void()> ask, Console& remarks)
    : m_server(std::move(server)), m_ask(std::move(ask)), m_remarks(remarks) {}

Patience::Outcome Patience::attempt(const std::function<void()>& call) {
    for (bool refusedBefore = false;;) {
        const auto fault = faultOf(call);
        if (!fault) {
            return Outcome::Done;
        }
        if (fault->secondCopy) {
            return Outcome::SecondCopy;
        }
        m_reason = fault->text;
        if (!isThere()) {
            awaitServer();
        } else if (std::exchange(refusedBefore, true)) {
            return Outcome::Refused;
        }
    }
}

void Patience::require(const QString& what, const std::function<void()>& call) {
    if (attempt(call) != Outcome::Done) {
        throw Failure(QStringLiteral("%1 at %2 failed: %3").arg(what, m_server, m_reason));
    }
}

bool Patience::isThere() {
    return !faultOf(m_ask);
}

void Patience::awaitServer() {
    m_remarks.line(
        QStringLiteral("%1 does not answer, waiting for it: %2").arg(m_server, m_reason));
    QElapsedTimer away;
    away.start();
    do {
        // Returns early for a signal.
        poll(nullptr, 0, pauseMsecs);
        if (Interrupt::requested()) {
            throw GivenUp();
        }
    } while (!isThere());
    m_remarks.line(QStringLiteral("%1 answers again after %2 s")
                       .arg(m_server)
                       .arg((away.elapsed() + 500) / 1000));
}

} // namespace host
