#include "tests/growing/growing_fixture.h"
#include "tests/soak/record_kinds.h"
#include "tests/support/qt_literals.h"

#include <gmock/gmock.h>

// Two FerretDBs over one PostgreSQL, one of which goes while records of all kinds are stored.

namespace growing {

namespace {

using namespace test_support::literals;

class TwoFerretdbs : public GrowingTest {
protected:
    /// Two of the four kinds over each.
    void awaitConnections(int toA, int toB) {
        await(
            [&] {
                return servers.haproxy().connectionsTo("ferretdb", "a") == toA &&
                       servers.haproxy().connectionsTo("ferretdb", "b") == toB;
            },
            "HAProxy has its connections");
    }

    void awaitUp(const char* server) {
        await([&] { return servers.haproxy().isUp("ferretdb", server); },
              "HAProxy takes it for up");
    }
};

TEST_F(TwoFerretdbs, LoseNothingAcknowledgedWhenOneIsKilledOrFallsSilent) {
    Writers writers;
    for (auto& kind : soak::recordKinds(plugin.factory(), servers.settings())) {
        writers.push_back(std::make_unique<soak::Writer>(std::move(kind)));
    }
    start(writers);
    awaitConnections(2, 2);

    letFall("FerretDB a is killed", writers, [this] { servers.ferretdb(0).kill(); });
    awaitMoreOf(writers);
    servers.ferretdb(0).start();
    awaitUp("a");
    letFall("FerretDB b is killed", writers, [this] { servers.ferretdb(1).kill(); });
    awaitMoreOf(writers);
    servers.ferretdb(1).start();
    awaitUp("b");
    letFall("FerretDB a falls silent", writers, [this] { servers.ferretdb(0).freeze(); });
    awaitMoreOf(writers);
    servers.ferretdb(0).resume();
    awaitUp("a");

    stop(writers);
    std::int64_t thrown = 0;
    for (const auto& writer : writers) {
        const std::string name = writer->kind().name().toStdString();
        const soak::CallFigures calls = writer->calls();
        const soak::Findings found = writer->readBack();
        thrown += calls.thrown;
        std::cout << name << ": acknowledged " << calls.acknowledged << ", thrown " << calls.thrown
                  << " (stored though thrown " << found.storedThoughThrown << "), lost "
                  << found.lost << ", twice " << found.twice << ", different " << found.different
                  << ", longest call " << calls.longest.count() << " ms\n";
        for (const auto& [text, times] : calls.failures) {
            std::cout << "    " << times << " x " << text << '\n';
        }
        for (const QString& example : found.examples) {
            std::cout << "    " << example.toStdString() << '\n';
        }
        EXPECT_EQ(found.lost, 0) << name;
        EXPECT_EQ(found.different, 0) << name;
        EXPECT_EQ(found.twice, 0) << name;
    }
    EXPECT_GT(thrown, 0) << "nobody was at work on what fell";
}

// What HAProxy is for: of two servers that are no replica set, the MongoDB library gives one up.
TEST_F(TwoFerretdbs, DoNotStandInForEachOtherWhenBothAreNamedInTheConnectionString) {
    QJsonObject settings = servers.settings();
    settings["url"_q] = QStringLiteral("mongodb://127.0.0.1:%1,127.0.0.1:%2/")
                            .arg(servers.ferretdb(0).port())
                            .arg(servers.ferretdb(1).port());
    const auto open = [&] { plugin.factory().CreateEavDatabaseInst(settings, nullptr); };
    EXPECT_NO_THROW(open());
    for (const std::size_t index : {0U, 1U}) {
        servers.ferretdb(index).kill();
        EXPECT_THAT(open, testing::ThrowsMessage<std::exception>(
                              testing::HasSubstr("No suitable servers found")));
        servers.ferretdb(index).start();
    }
}

// By the connection string alone: the servers' names come from the server, writes wait for most.
TEST(FerretdbThatPosesAsAReplicaSet, IsUsedByTheConnectionStringAlone) {
    test_support::needMongoInstance();
    const test_support::PostgresqlServer storage;
    const test_support::MongoServer server(
        storage, {.arguments = {"--no-auth"_q, "--dev-repl-set-name=meters"_q},
                  .urlOptions = "replicaSet=meters&w=majority&retryWrites=true"});
    host::PluginFile plugin{QStringLiteral(KELVRO_PLUGIN_FILE)};
    const QJsonObject settings{{"url"_q, QString::fromStdString(server.url())}};
    constexpr int calls = 20;
    for (const auto& kind : soak::recordKinds(plugin.factory(), settings)) {
        for (int call = 1; call <= calls; ++call) {
            kind->save(call);
            kind->note(call, true);
        }
        const soak::Findings found = kind->readBack();
        EXPECT_EQ(found.lost, 0);
        EXPECT_EQ(found.twice, 0);
        EXPECT_EQ(found.different, 0);
    }
}

} // namespace

} // namespace growing
