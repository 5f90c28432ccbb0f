#include "redisclient/redisclient.h"
#include "tests/support/redis_server.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

// What a core dump would show: the password as it was sent stands nowhere in the heap once it is
// sent, neither in the buffer that is kept for the next command nor in memory given back. (The
// settings hold it all the while.)

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using test_support::RedisServer;

constexpr char shown(char character) {
    return static_cast<char>(character ^ 0x15);
}

/// The end of a login as it goes over the wire. This program has it in another form, for its own
/// memory is looked through.
constexpr auto hiddenLogin = [] {
    std::array login{'\r', '\n', 'k', 'e', 'p', 't', '-', 'n', 'o', 't', '!'};
    std::ranges::transform(login, login.begin(), shown);
    return login;
}();
constexpr std::size_t startOfPassword = 2;

QString password() {
    QString text;
    for (std::size_t i = startOfPassword; i < hiddenLogin.size(); ++i) {
        text += QChar::fromLatin1(shown(hiddenLogin[i]));
    }
    return text;
}

const char* addressOf(const QByteArray& hexadecimal) {
    return reinterpret_cast<const char*>(
        static_cast<std::uintptr_t>(hexadecimal.toULongLong(nullptr, 16)));
}

std::pair<const char*, const char*> heap() {
    QFile map(QStringLiteral("/proc/self/maps"));
    if (!map.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot tell where the heap is");
    }
    const QList<QByteArray> lines = map.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> range = line.left(line.indexOf(' ')).split('-');
        if (line.endsWith("[heap]")) {
            return {addressOf(range[0]), addressOf(range[1])};
        }
    }
    return {}; // the sanitizers have one of their own
}

bool loginIsInTheHeap() {
    const auto [begin, end] = heap();
    const auto isSame = [](char byte, char hidden) { return byte == shown(hidden); };
    return std::search(begin, end, hiddenLogin.begin(), hiddenLogin.end(), isSame) != end;
}

class PasswordInMemory : public testing::Test {
protected:
    ConnectionConfig config(int port) const {
        return ConnectionConfig(QStringLiteral("127.0.0.1"), password(), port);
    }

    static QStringList requiring(const QString& word) {
        return {QStringLiteral("--requirepass"), word};
    }
};

TEST_F(PasswordInMemory, IsNotInTheBufferThatIsKept) {
    const RedisServer server(requiring(password()));
    Connection connection(config(server.port()));

    ASSERT_TRUE(connection.connect());

    EXPECT_FALSE(loginIsInTheHeap());
}

TEST_F(PasswordInMemory, IsNotInMemoryGivenBackAfterItWasRefused) {
    const RedisServer server(requiring(QStringLiteral("another")));
    Connection connection(config(server.port()));

    ASSERT_FALSE(connection.connect());

    EXPECT_FALSE(loginIsInTheHeap());
}

TEST_F(PasswordInMemory, IsNotInMemoryGivenBackAfterItWasNotAnswered) {
    RedisServer server(requiring(password()));
    auto configuration = config(server.port());
    configuration.setTimeouts(200, 200);
    Connection connection(configuration);
    server.freeze();

    ASSERT_FALSE(connection.connect());

    EXPECT_FALSE(loginIsInTheHeap());
}

} // namespace
