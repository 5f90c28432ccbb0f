#include "tests/support/mongo_wire.h"

#include "tests/support/mongo_database.h"

#include <bson/bson.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace test_support {

namespace {

constexpr int headerSize = 16;
constexpr std::int32_t opMsg = 2013;
/// Of the first element's name: after header, flags, the section's kind, the document's length and
/// the element's type.
constexpr int nameOffset = headerSize + 4 + 1 + 4 + 1;

std::int32_t int32At(const QByteArray& bytes, int offset) {
    std::int32_t value = 0;
    if (offset + static_cast<int>(sizeof value) > bytes.size()) {
        throw std::runtime_error("a message of MongoDB's protocol is cut off");
    }
    std::memcpy(&value, bytes.constData() + offset, sizeof value);
    return static_cast<std::int32_t>(BSON_UINT32_FROM_LE(static_cast<std::uint32_t>(value)));
}

int messageSize(const QByteArray& bytes) {
    if (bytes.size() < headerSize) {
        return 0;
    }
    const int size = int32At(bytes, 0);
    return bytes.size() >= size ? size : 0;
}

/// Of the driver's first greeting, which is in an older form, "hello" too.
QByteArray nameOf(const QByteArray& message) {
    return int32At(message, 12) == opMsg ? QByteArray(message.constData() + nameOffset)
                                         : QByteArray("hello");
}

/// Beginning and end of the host and its port in a connection string.
std::pair<std::size_t, std::size_t> hostIn(const std::string& url) {
    std::size_t begin = url.find("://") + 3;
    const std::size_t end = std::min(url.find_first_of("/?", begin), url.size());
    if (const auto at = url.rfind('@', end); at != std::string::npos && at >= begin) {
        begin = at + 1;
    }
    return {begin, end};
}

std::pair<std::string, int> server() {
    const std::string url = mongoUrl();
    const auto [begin, end] = hostIn(url);
    const std::string address = url.substr(begin, end - begin);
    const std::size_t colon = address.rfind(':');
    return {address.substr(0, colon),
            colon == std::string::npos ? 27017 : std::stoi(address.substr(colon + 1))};
}

/// The command of a message as one document: the lists of documents that the protocol sends beside
/// it stand in it as arrays, as its commands are written.
bsoncxx::v1::document::value commandIn(const QByteArray& message) {
    int offset = headerSize + 4; // flags
    bson_t command = BSON_INITIALIZER;
    const auto documentAt = [&](int at) {
        bson_t document;
        if (!bson_init_static(&document,
                              reinterpret_cast<const std::uint8_t*>(message.constData()) + at,
                              static_cast<std::size_t>(int32At(message, at)))) {
            throw std::runtime_error("a request holds no BSON");
        }
        return document;
    };
    while (offset < message.size()) {
        const char kind = message[offset++];
        const int size = int32At(message, offset);
        if (kind == 0) {
            const bson_t body = documentAt(offset);
            bson_concat(&command, &body);
        } else {
            const std::string name = message.constData() + offset + 4;
            bson_array_builder_t* array = nullptr;
            bson_append_array_builder_begin(&command, name.c_str(), -1, &array);
            for (int at = offset + 4 + static_cast<int>(name.size()) + 1; at < offset + size;) {
                const bson_t document = documentAt(at);
                bson_array_builder_append_document(array, &document);
                at += static_cast<int>(document.len);
            }
            bson_append_array_builder_end(&command, array);
        }
        offset += size;
    }
    bsoncxx::v1::document::value whole{
        bsoncxx::v1::document::view{bson_get_data(&command), command.len}};
    bson_destroy(&command);
    return whole;
}

} // namespace

const WireFraming MongoWire::framing{
    .requestSize = messageSize, .answerSize = messageSize, .nameOf = nameOf};

std::optional<sent_command> MongoWire::read(const QByteArray& request) {
    const QByteArray name = nameOf(request);
    if (name == "hello" || name == "isMaster" || name == "ismaster" || name == "ping" ||
        name == "endSessions") {
        return std::nullopt;
    }
    return sent_command{name.toStdString(), commandIn(request)};
}

MongoProxy::MongoProxy() : RecordingProxy(server().first, server().second) {}

std::string MongoProxy::url() const {
    std::string url = mongoUrlWith("directConnection=true");
    const auto [begin, end] = hostIn(url);
    return url.replace(begin, end - begin, "127.0.0.1:" + std::to_string(port()));
}

void MongoProxy::damageAnswers(const QByteArray& text, const QByteArray& damage) {
    breakAt(
        {}, [=](Exchange& exchange) { exchange.reply(exchange.answer().replace(text, damage)); },
        always);
}

} // namespace test_support
