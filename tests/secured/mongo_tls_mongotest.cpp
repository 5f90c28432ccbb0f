#include "interfaces/imessages_database.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/secured/certificates.h"
#include "tests/secured/failed_attempt.h"
#include "tests/support/mongo_database.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/qt_literals.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>

namespace {

using test_support::attempt;
using test_support::Certificates;
using test_support::FailedAttempt;
using test_support::failsBefore;
using test_support::mongoException;
using test_support::MongoServer;
using test_support::succeeds;
using testing::AllOf;
using testing::Field;
using testing::HasSubstr;
using namespace test_support::literals;
using Certificate = Certificates::Certificate;

/// No server can be used; the words in brackets say why.
constexpr int noServer = 13053;
/// The library's own, after which it gives up looking for a server.
constexpr std::chrono::seconds selectionTimeout{30};

class MongoTls : public testing::Test {
protected:
    static void SetUpTestSuite() {
        test_support::needMongoInstance();
        storage = std::make_unique<test_support::PostgresqlServer>();
        certificates = std::make_unique<Certificates>();
    }

    static void TearDownTestSuite() {
        certificates.reset();
        storage.reset();
    }

    static MongoServer serverWith(const Certificate& certificate, const QStringList& more = {}) {
        test_support::MongoServerOptions options;
        options.arguments += QStringList{"--listen-tls-cert-file="_q + certificate.certificate,
                                         "--listen-tls-key-file="_q + certificate.key} +
                             more;
        options.tls = true;
        return MongoServer{*storage, options};
    }

    static MongoServer serverThatAsksForCertificates() {
        return serverWith(certificates->forThisMachine(),
                          {"--listen-tls-ca-file="_q + certificates->authority()});
    }

    /// As the settings of a host should be: the server has to be one of our authority.
    static std::string trusting() {
        return "tls=true&tlsCAFile=" + certificates->authority().toStdString();
    }

    static std::string trustingAs(const Certificate& client) {
        return trusting() + "&tlsCertificateKeyFile=" + client.both.toStdString();
    }

    static FailedAttempt open(const MongoServer& server, const std::string& options,
                              const std::string& host = "127.0.0.1") {
        return openAt(host + ':' + std::to_string(server.port()), options);
    }

    static FailedAttempt openAt(const std::string& address, const std::string& options) {
        const auto url = "mongodb://" + address + "/?" + options;
        return attempt(
            [&] { plugin.factory()->CreateMessageDatabaseInst(settingsFor(url), nullptr); });
    }

    static auto fails(const std::string& words) {
        return AllOf(failsBefore(selectionTimeout, mongoException, HasSubstr(words)),
                     Field("code", &FailedAttempt::code, noServer));
    }

    static inline LoadedPlugin plugin;
    static inline std::unique_ptr<test_support::PostgresqlServer> storage;
    static inline std::unique_ptr<Certificates> certificates;
};

TEST_F(MongoTls, ServesWithACertificateOfTheAuthority) {
    EXPECT_THAT(open(serverWith(certificates->forThisMachine()), trusting()), succeeds());
}

TEST_F(MongoTls, RefusesAnExpiredCertificate) {
    EXPECT_THAT(open(serverWith(certificates->expired()), trusting()),
                fails("certificate verify failed (10): certificate has expired"));
}

TEST_F(MongoTls, RefusesACertificateForAnotherHost) {
    const auto server = serverWith(certificates->forAnotherHost());

    EXPECT_THAT(open(server, trusting()),
                fails("certificate verify failed (64): IP address mismatch"));
    EXPECT_THAT(open(server, trusting(), "localhost"),
                fails("certificate verify failed (62): hostname mismatch"));
}

TEST_F(MongoTls, RefusesACertificateOfAnUnknownAuthority) {
    EXPECT_THAT(open(serverWith(certificates->byUnknownAuthority()), trusting()),
                fails("certificate verify failed (20): unable to get local issuer certificate"));
}

// The system's own authorities do not know ours.
TEST_F(MongoTls, RefusesTheAuthorityThatTheSettingsDoNotName) {
    EXPECT_THAT(open(serverWith(certificates->forThisMachine()), "tls=true"),
                fails("certificate verify failed (20): unable to get local issuer certificate"));
}

TEST_F(MongoTls, RefusesAServerThatSpeaksPlainly) {
    EXPECT_THAT(open(MongoServer{*storage}, trusting()), fails("TLS handshake failed"));
}

TEST_F(MongoTls, FailsPlainlyAtAServerThatWantsTls) {
    EXPECT_THAT(open(serverWith(certificates->forThisMachine()), "appName=plain"),
                fails("calling hello on"));
}

// Not always in the words that it has without TLS, "connection refused".
TEST_F(MongoTls, FailsAtAServerThatIsNotThere) {
    EXPECT_THAT(openAt("127.0.0.1:1", trusting()), fails("calling hello on '127.0.0.1:1'"));
}

TEST_F(MongoTls, ServesAClientWithTheCertificateThatItDemands) {
    EXPECT_THAT(open(serverThatAsksForCertificates(), trustingAs(certificates->forClient())),
                succeeds());
}

TEST_F(MongoTls, ReadsAClientsEncryptedKey) {
    EXPECT_THAT(
        open(serverThatAsksForCertificates(), trustingAs(certificates->forClient("sesame"_q)) +
                                                  "&tlsCertificateKeyFilePassword=sesame"),
        succeeds());
}

// The server only closes the connection, as TLS 1.3 lets it; which of the library's words that
// comes to is a matter of the moment.
TEST_F(MongoTls, FailsWithoutTheCertificateThatTheServerDemands) {
    const auto server = serverThatAsksForCertificates();

    EXPECT_THAT(open(server, trusting()), fails("calling hello on"));
    EXPECT_THAT(open(server, trustingAs(certificates->expired())), fails("calling hello on"));
    EXPECT_THAT(open(server, trustingAs(certificates->byUnknownAuthority())),
                fails("calling hello on"));
}

// Why, only the library's log says: see the host's.
TEST_F(MongoTls, FailsWithFilesThatItCannotRead) {
    const auto server = serverThatAsksForCertificates();

    EXPECT_THAT(open(server, "tls=true&tlsCAFile=/nonexistent"),
                fails("[connection error calling hello on"));
    EXPECT_THAT(open(server, trusting() + "&tlsCertificateKeyFile=/nonexistent"),
                fails("[connection error calling hello on"));
    EXPECT_THAT(open(server, trustingAs(certificates->forClient("sesame"_q)) +
                                 "&tlsCertificateKeyFilePassword=wrong"),
                fails("[connection error calling hello on"));
}

// What the options that switch the checks off come to, should somebody find them in the settings.
TEST_F(MongoTls, TakesAnyServerOnceTheSettingsSayThatAnyWillDo) {
    const auto server = serverWith(certificates->byUnknownAuthority());

    EXPECT_THAT(open(server, "tls=true&tlsAllowInvalidCertificates=true"), succeeds());
    EXPECT_THAT(open(server, "tls=true&tlsInsecure=true"), succeeds());
}

// One that looks for another server until the time-out is up says the same, but late.
TEST_F(MongoTls, WaitsOnlyIfTheSettingsForbidToGiveUpAfterOneTry) {
    const auto failed =
        open(serverWith(certificates->expired()), trusting() + "&serverSelectionTryOnce=false"
                                                               "&serverSelectionTimeoutMS=1500");

    EXPECT_THAT(failed, fails("certificate has expired"));
    EXPECT_THAT(failed.text, HasSubstr("`serverSelectionTimeoutMS` expired"));
}

} // namespace
