#include "tests/support/eventually.h"
#include "tests/support/mongo_database.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/qt_literals.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <bsoncxx/v1/document/value.hpp>
#include <gmock/gmock.h>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <csignal>
#include <string>

// The program's `ingest`, whose MongoDB server is killed, in each of its parts, while it works.

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::HasSubstr;

class IngestWhoseServerGoes : public testing::Test {
protected:
    IngestWhoseServerGoes() {
        needMongoInstance();
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("MONGODB_URL"_q, QString::fromStdString(server.url()));
        host.setProcessEnvironment(environment);
        host.setReadChannel(QProcess::StandardError);
        host.start(QStringLiteral(KELVRO_HOST_PROGRAM),
                   {"ingest"_q, "--json"_q, "--batch"_q, "10"_q, "--plugin"_q,
                    QStringLiteral(KELVRO_PLUGIN_FILE)});
    }
    ~IngestWhoseServerGoes() override {
        host.kill();
        host.waitForFinished();
    }

    void feed(int first, int last) {
        for (int number = first; number < last; ++number) {
            const QJsonObject line{
                {"telegram"_q, QStringLiteral("%1").arg(number, 8, 16, QLatin1Char('0'))},
                {"time"_q, 1'700'000'000 + number},
                {"decoded"_q, QJsonObject{{"id"_q, "91000001"_q},
                                          {"meter"_q, "testmake"_q},
                                          {"media"_q, "water"_q},
                                          {"total_m3"_q, number},
                                          {"status"_q, "LEAK"_q}}}};
            host.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
        }
        while (host.bytesToWrite() > 0) {
            ASSERT_TRUE(host.waitForBytesWritten(60'000));
        }
    }

    std::int64_t count(const char* collection) const {
        mongocxx::v1::client client{mongocxx::v1::uri{server.url()}};
        return client.database("kelvrostorage")
            .collection(collection)
            .count_documents(bsoncxx::v1::document::value{});
    }

    void awaitRemark(const char* text) {
        while (!errors.contains(text)) {
            ASSERT_TRUE(host.waitForReadyRead(60'000)) << errors.toStdString();
            errors += host.readAllStandardError();
        }
    }

    QJsonObject accountAtEnd() {
        EXPECT_TRUE(host.waitForFinished(120'000));
        errors += host.readAllStandardError();
        return QJsonDocument::fromJson(host.readAllStandardOutput()).object();
    }

    PostgresqlServer storage{Durability::Complete};
    MongoServer server{storage, {.urlOptions = "serverSelectionTimeoutMS=2000"}};
    QProcess host;
    QByteArray errors;
};

TEST_F(IngestWhoseServerGoes, WaitsForItAndStoresEverythingOnce) {
    feed(0, 100);
    ASSERT_TRUE(eventually([&] { return count("eav_events") >= 20; }));
    server.kill();
    feed(100, 200);
    awaitRemark("waiting for it");
    server.start();
    awaitRemark("answers again");
    // Behind the server's back.
    storage.kill();
    feed(200, 300);
    storage.start();
    host.closeWriteChannel();

    const auto account = accountAtEnd();
    EXPECT_EQ(host.exitCode(), 0) << errors.toStdString();
    EXPECT_EQ(account.value("lines"_q), 300);
    EXPECT_EQ(account.value("uplinks"_q).toInt() + account.value("uplinks_there"_q).toInt(), 300);
    EXPECT_EQ(count("ul_messages"), 300);
    EXPECT_EQ(count("eav_values"), 300);
    EXPECT_EQ(count("eav_events"), 300);
}

TEST_F(IngestWhoseServerGoes, EndsWhenItIsToldToAndSaysWhatIsNotStored) {
    feed(0, 10);
    ASSERT_TRUE(eventually([&] { return count("eav_events") == 10; }));
    server.kill();
    feed(10, 15);
    awaitRemark("waiting for it");
    ::kill(static_cast<pid_t>(host.processId()), SIGTERM);

    const auto account = accountAtEnd();
    EXPECT_EQ(host.exitCode(), 1);
    EXPECT_EQ(account.value("lines"_q), 15);
    EXPECT_EQ(account.value("uplinks"_q), 10);
    EXPECT_EQ(account.value("unfinished"_q), 5);
}

} // namespace
