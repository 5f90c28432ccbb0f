#include "tests/secured/redis_tunnel.h"

#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/secured/certificates.h"
#include "tests/secured/failed_attempt.h"
#include "tests/secured/redis_settings.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/redis_server.h"
#include "tests/support/test_socket.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

// The settings know neither TLS nor the name of a Redis user. A server that wants TLS is reached
// through a tunnel on the host's own machine.

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr std::chrono::seconds connectTimeout{5};

/// A server with a password, a TLS port and a demand for certificates.
class RedisTunnels : public testing::Test {
protected:
    static void SetUpTestSuite() { certificates = std::make_unique<Certificates>(); }
    static void TearDownTestSuite() { certificates.reset(); }

    RedisServer& serverWith(const Certificates::Certificate& certificate) {
        tlsPort = TestSocket::unusedPort();
        server = std::make_unique<RedisServer>(
            QStringList{"--tls-port"_q, QString::number(tlsPort), "--tls-cert-file"_q,
                        certificate.certificate, "--tls-key-file"_q, certificate.key,
                        "--tls-ca-cert-file"_q, certificates->authority()});
        server->run({"SADD", "dev:clients:7", "utility"}, 2);
        server->setPassword("secret");
        return *server;
    }

    RedisTunnel tunnel() const {
        return {tlsPort, certificates->authority(), certificates->forClient().both};
    }

    std::shared_ptr<interfaces::IDeviceClientsDatabase> open(int port) {
        return plugin.factory()->CreateClientDatabaseInst(redisSettings(port, "secret"_q), nullptr);
    }

    template <typename Words>
    static auto fails(const Words& words) {
        return test_support::failsBefore(connectTimeout, test_support::redisException, words);
    }

    /// How a tunnel says that there is nothing behind it: one or the other, as it comes.
    static auto closed() {
        return AnyOf(EndsWith(": the server closed the connection"),
                     EndsWith(": Connection reset by peer"));
    }

    static inline std::unique_ptr<Certificates> certificates;
    int tlsPort = 0;
    std::unique_ptr<RedisServer> server;
    LoadedPlugin plugin;
};

TEST_F(RedisTunnels, LeadToAServerThatWantsTls) {
    serverWith(certificates->forThisMachine());
    const auto through = tunnel();

    const auto database = open(through.port());

    EXPECT_THAT(database->DeviceClientsRepository()->GetDeviceClients(7), ElementsAre("utility"_q));
}

TEST_F(RedisTunnels, ShowThatTheServerBehindThemWasKilledAndIsBack) {
    serverWith(certificates->forThisMachine());
    const auto through = tunnel();
    const auto database = open(through.port());
    auto* const registry = database->DeviceClientsRepository();
    server->kill();

    EXPECT_THAT(attempt([&] { registry->GetDeviceClients(7); }),
                fails(AllOf(HasSubstr(": SMEMBERS: "), closed())));

    server->start();
    server->run({"SADD", "dev:clients:7", "utility"}, 2);
    server->setPassword("secret");
    EXPECT_THAT(registry->GetDeviceClients(7), ElementsAre("utility"_q));
}

TEST_F(RedisTunnels, ShowThatTheyAreGone) {
    serverWith(certificates->forThisMachine());
    auto through = tunnel();
    const auto database = open(through.port());
    through.kill();

    EXPECT_THAT(attempt([&] { database->DeviceClientsRepository()->GetDeviceClients(7); }),
                fails(EndsWith(": SMEMBERS: not connected: connect: Connection refused")));
}

// Which of the three it is, only the tunnel's log says. It may close before AUTH is sent, or after.
TEST_F(RedisTunnels, CloseBeforeAServerThatIsNotTheRightOne) {
    for (const auto& certificate : {certificates->expired(), certificates->forAnotherHost(),
                                    certificates->byUnknownAuthority()}) {
        serverWith(certificate);
        const auto through = tunnel();

        EXPECT_THAT(attempt([&] { open(through.port()); }),
                    fails(AllOf(HasSubstr(": DBSIZE: not connected: "), closed())))
            << certificate.certificate.toStdString();
    }
}

// What goes there has the password in it, in plain: a tunnel's port and a server's are not to be
// mixed up.
TEST_F(RedisTunnels, AreMissedAtThePortForTls) {
    serverWith(certificates->forThisMachine());

    EXPECT_THAT(attempt([&] { open(tlsPort); }),
                fails(AllOf(HasSubstr(": DBSIZE: not connected: AUTH: "), closed())));
}

} // namespace
