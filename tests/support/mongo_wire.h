#pragma once

#include "tests/support/mongo_commands.h"
#include "tests/support/wire_proxy.h"

#include <QByteArray>

#include <optional>
#include <string>

namespace test_support {

/// MongoDB's protocol as far as a proxy needs it: messages with their length before them. What the
/// driver asks on its own account (hello, ping, endSessions) is not read.
struct MongoWire {
    using Request = sent_command;
    static const WireFraming framing;
    static std::optional<Request> read(const QByteArray& request);
};

/// Before the server of MONGODB_URL.
class MongoProxy : public RecordingProxy<MongoWire> {
public:
    MongoProxy();

    /// The connection string of MONGODB_URL with the proxy for its server.
    std::string url() const;

    /// From now on every answer has `damage` where it had `text`; both are of one length.
    void damageAnswers(const QByteArray& text, const QByteArray& damage);
};

} // namespace test_support
