#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_state.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/secured/failed_attempt.h"
#include "tests/secured/redis_settings.h"
#include "tests/support/fake_peer.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/redis_server.h"
#include "tests/support/test_socket.h"

#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::EndsWith;
using testing::HasSubstr;

/// That of the connecting.
constexpr std::chrono::seconds connectTimeout{5};

auto failsAtOnce(const std::string& words) {
    return test_support::failsBefore(connectTimeout, test_support::redisException, EndsWith(words));
}

FailedAttempt openRegistry(LoadedPlugin& plugin, const QJsonObject& settings) {
    return attempt([&] { plugin.factory()->CreateClientDatabaseInst(settings, nullptr); });
}

class PluginRedisLogin : public testing::Test {
protected:
    FailedAttempt open(const QString& password) {
        return openRegistry(plugin, redisSettings(server.port(), password));
    }

    RedisServer server;
    LoadedPlugin plugin;
};

TEST_F(PluginRedisLogin, ServesThePassword) {
    server.setPassword("p@ss:w/rd");

    EXPECT_EQ(open("p@ss:w/rd"_q).type, "");
}

TEST_F(PluginRedisLogin, TellsAWrongPassword) {
    server.setPassword("secret");

    EXPECT_THAT(open("guess"_q),
                failsAtOnce(": DBSIZE: not connected: AUTH: WRONGPASS invalid username-password "
                            "pair or user is disabled."));
}

TEST_F(PluginRedisLogin, TellsAMissingPassword) {
    server.setPassword("secret");

    EXPECT_THAT(open(QString()),
                failsAtOnce(": DBSIZE: not connected: PING: NOAUTH Authentication required."));
}

TEST_F(PluginRedisLogin, TellsAPasswordThatNobodyAskedFor) {
    EXPECT_THAT(open("secret"_q),
                failsAtOnce(": DBSIZE: not connected: AUTH: ERR AUTH <password> called without any "
                            "password configured for the default user. Are you sure your "
                            "configuration is correct?"));
}

TEST_F(PluginRedisLogin, TellsADefaultUserWhoIsSwitchedOff) {
    server.run({"ACL", "SETUSER", "default", "off", ">secret"});

    EXPECT_THAT(open("secret"_q),
                failsAtOnce("AUTH: WRONGPASS invalid username-password pair or user is disabled."));
}

TEST_F(PluginRedisLogin, TellsAnUnreachableServerInOtherWords) {
    EXPECT_THAT(openRegistry(plugin, redisSettings(TestSocket::unusedPort(), "secret"_q)),
                failsAtOnce(": DBSIZE: not connected: connect: Connection refused"));
}

TEST_F(PluginRedisLogin, TellsAPasswordThatWasChangedMeanwhileAtTheNextConnection) {
    server.setPassword("before");
    const auto database = plugin.factory()->CreateClientDatabaseInst(
        redisSettings(server.port(), "before"_q), nullptr);
    auto* const registry = database->DeviceClientsRepository();
    server.setPassword("after");

    EXPECT_EQ(attempt([&] { registry->GetDeviceClients(7); }).type, "");
    server.run({"CLIENT", "KILL", "TYPE", "normal"});
    EXPECT_THAT(attempt([&] { registry->GetDeviceClients(7); }),
                failsAtOnce(": SMEMBERS: not connected: AUTH: WRONGPASS invalid username-password "
                            "pair or user is disabled."));
}

/// What a server in protected mode says to a client that is not on its machine.
const auto protectedMode = "-DENIED Redis is running in protected mode because protected mode is "
                           "enabled and no password is set for the default user."_qba;

TEST(PluginProtectedRedis, ShowsInTheWordsOfTheServer) {
    const FakePeer peer([](TestSocket& client, int) {
        client.write(protectedMode + "\r\n");
        client.endWriting();
        client.waitForClosing();
    });
    LoadedPlugin plugin;

    EXPECT_THAT(
        openRegistry(plugin, redisSettings(peer.port())),
        failsAtOnce(": DBSIZE: not connected: PING: " + protectedMode.mid(1).toStdString()));
}

/// Gives the calling thread a network of its own: one machine, with an address that no server takes
/// for the loopback's. False if the system does not let this user.
bool enterOwnNetwork(const char* address) {
    if (::unshare(CLONE_NEWNET) != 0) {
        return false;
    }
    const TestSocket any(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    const auto set = [&](const char* name, unsigned long what) {
        std::strncpy(request.ifr_name, name, IFNAMSIZ - 1);
        if (::ioctl(any.fd(), what, &request) != 0) {
            throw std::system_error(errno, std::generic_category(), name);
        }
    };
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    set("lo", SIOCSIFFLAGS);
    sockaddr_in name{};
    name.sin_family = AF_INET;
    ::inet_pton(AF_INET, address, &name.sin_addr);
    std::memcpy(&request.ifr_addr, &name, sizeof name);
    set("lo:1", SIOCSIFADDR);
    return true;
}

TEST(PluginProtectedRedis, ShowsAtTheServerItself) {
    const auto address = "192.0.2.1";
    std::optional<FailedAttempt> failed;
    std::thread([&] {
        if (enterOwnNetwork(address)) {
            const auto host = QString::fromLatin1(address);
            const RedisServer server({}, host);
            LoadedPlugin plugin;
            failed = openRegistry(plugin, redisSettings(server.port(), QString(), {}, host));
        }
    }).join();
    if (!failed) {
        GTEST_SKIP() << "a network of its own is not for this user";
    }

    EXPECT_EQ(failed->type, "RedisClient::Connection::Exception");
    EXPECT_THAT(failed->text,
                HasSubstr(": DBSIZE: not connected: PING: " + protectedMode.mid(1).toStdString()));
    EXPECT_LT(failed->took, connectTimeout);
}

// A state can be had without Redis, for it may be there when the first one is asked for.
class PluginStateLogin : public FixedMongoDatabase {
protected:
    RedisServer server;
    LoadedPlugin plugin;
};

TEST_F(PluginStateLogin, TellsAWrongPasswordAtTheFirstCommandOnly) {
    server.setPassword("secret");
    const auto state = plugin.factory()->CreateDriverStateInst(
        redisSettings(server.port(), "guess"_q, mongoUrl()), nullptr);

    const auto wrong = failsAtOnce("not connected: AUTH: WRONGPASS invalid username-password pair "
                                   "or user is disabled.");
    EXPECT_THAT(attempt([&] { state->Pull(7); }), wrong);
    EXPECT_THAT(attempt([&] { state->Push(7, true); }), wrong);
    EXPECT_EQ(database.count("states"), 0);
}

} // namespace
