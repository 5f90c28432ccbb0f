#include "tests/support/redis_wire.h"

namespace test_support {

namespace {

constexpr int missing = -1;

/// Where the answer that begins at `start` ends.
int answerEnd(const QByteArray& bytes, int start) {
    const int lineEnd = bytes.indexOf("\r\n", start);
    if (lineEnd < 0) {
        return missing;
    }
    int position = lineEnd + 2;
    const int count = bytes.mid(start + 1, lineEnd - start - 1).toInt();
    if (bytes[start] == '$' && count >= 0) {
        position += count + 2;
    } else if (bytes[start] == '*') {
        for (int element = 0; element < count && position != missing; ++element) {
            position = answerEnd(bytes, position);
        }
    }
    return position <= bytes.size() ? position : missing;
}

} // namespace

const WireFraming RedisWire::framing{
    .requestSize =
        [](const QByteArray& bytes) {
            QByteArray rest = bytes;
            return takeCommand(rest) ? bytes.size() - rest.size() : 0;
        },
    .answerSize = [](const QByteArray& bytes) { return std::max(answerEnd(bytes, 0), 0); },
    .nameOf =
        [](const QByteArray& request) {
            QByteArray bytes = request;
            return takeCommand(bytes)->value(0);
        },
};

std::optional<RedisWire::Request> RedisWire::read(const QByteArray& request) {
    QByteArray bytes = request;
    return takeCommand(bytes);
}

} // namespace test_support
