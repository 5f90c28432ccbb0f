#pragma once

#include "tests/support/wire_proxy.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace test_support {

/// Redis's protocol as far as a proxy needs it: commands as arrays of texts, and answers in the
/// second version.
struct RedisWire {
    /// The parts of a command.
    using Request = QList<QByteArray>;
    static const WireFraming framing;
    static std::optional<Request> read(const QByteArray& request);
};

/// Before a server on the loopback address.
class RedisProxy : public RecordingProxy<RedisWire> {
public:
    explicit RedisProxy(int serverPort) : RecordingProxy("127.0.0.1", serverPort) {}
};

} // namespace test_support
