#include "interfaces/idevice_clients_database.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/secured/failed_attempt.h"
#include "tests/secured/secret_texts.h"
#include "tests/support/eventually.h"
#include "tests/support/extended_json.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/qt_literals.h"
#include "tests/support/redis_server.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include <memory>
#include <string>

// The secrets of the settings show nowhere: not in what the plug-in throws and logs, and not in
// what the host prints, logs and has in its command line.

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::HasSubstr;

/// The end that all of them have, for a part that shows is a leak too.
const auto endOfSecrets = "geheim47"_qba;
const auto mongoPassword = "M@ngo/geheim47"_qba;
const auto wrongMongoPassword = "F:lsch?geheim47"_qba;
const auto keyPassword = "Schl%ssel-geheim47"_qba;
const auto redisPassword = "R@dis geheim47"_qba;
const auto wrongRedisPassword = "Fa/sch:geheim47"_qba;
const QByteArrayList secrets{endOfSecrets, mongoPassword, wrongMongoPassword,
                             keyPassword,  redisPassword, wrongRedisPassword};

/// Of a connection string, lest a test waits longer.
const auto soon = "?serverSelectionTimeoutMS=1000"_qba;

QByteArray escaped(const QByteArray& text) {
    return QUrl::toPercentEncoding(QString::fromUtf8(text));
}

/// One way to be told of servers, and what comes of it.
struct Settings {
    const char* what;
    QByteArray url;
    int redisPort = 0;
    QByteArray auth;
    int hostStatus = 1;
    bool pluginMayTry = true;

    QJsonObject json() const {
        return {
            {"url"_q, QString::fromUtf8(url)},
            {"redis"_q, QJsonObject{{"port"_q, redisPort}, {"auth"_q, QString::fromUtf8(auth)}}}};
    }
};

struct HostRun {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

class Secrets : public testing::Test {
protected:
    static void SetUpTestSuite() {
        needMongoInstance();
        storage = std::make_unique<PostgresqlServer>();
        {
            const MongoServer open{*storage};
            mongocxx::v1::client client{mongocxx::v1::uri{open.url()}};
            client.database("admin").run_command(
                fromJson(R"({"createUser": "meter", "pwd": ")" + mongoPassword.toStdString() +
                         R"(", "roles": [{"role": "readWriteAnyDatabase", "db": "admin"},
                                         {"role": "clusterAdmin", "db": "admin"}]})"));
        }
        MongoServerOptions options;
        options.arguments = QStringList{"--auth"_q};
        mongo = std::make_unique<MongoServer>(*storage, options);
        redis = std::make_unique<RedisServer>();
        redis->setPassword(redisPassword);
        unknowingRedis =
            std::make_unique<RedisServer>(QStringList{"--rename-command"_q, "AUTH"_q, QString()});
    }

    static void TearDownTestSuite() {
        unknowingRedis.reset();
        redis.reset();
        mongo.reset();
        storage.reset();
    }

    static QByteArray mongoUrlWith(const QByteArray& password) {
        return "mongodb://meter:" + password + "@127.0.0.1:" + QByteArray::number(mongo->port()) +
               '/';
    }

    static Settings rightSettings() {
        return {.what = "right",
                .url = mongoUrlWith(escaped(mongoPassword)),
                .redisPort = redis->port(),
                .auth = redisPassword,
                .hostStatus = 0};
    }

    static QList<Settings> wrongSettings() {
        const auto with = [](const char* what, const auto& change) {
            auto settings = rightSettings();
            settings.what = what;
            settings.hostStatus = 1;
            change(settings);
            return settings;
        };
        return {
            with("a wrong password of MongoDB",
                 [](auto& all) { all.url = mongoUrlWith(escaped(wrongMongoPassword)); }),
            with("an unescaped password",
                 [](auto& all) {
                     all.url = mongoUrlWith(mongoPassword);
                     all.pluginMayTry = false; // it hands that on, see below
                 }),
            with("a password in place of a port",
                 [](auto& all) {
                     all.url = "mongodb://meter:" + endOfSecrets;
                     all.pluginMayTry = false;
                 }),
            with("a MongoDB that is not there",
                 [](auto& all) {
                     all.url = "mongodb://meter:" + escaped(mongoPassword) + "@127.0.0.1:1/" + soon;
                 }),
            with("a key that is not there",
                 [](auto& all) {
                     all.url += soon +
                                "&tls=true&tlsCertificateKeyFile=/nonexistent"
                                "&tlsCertificateKeyFilePassword=" +
                                escaped(keyPassword);
                 }),
            with("a wrong password of Redis", [](auto& all) { all.auth = wrongRedisPassword; }),
            with("a Redis that knows no passwords",
                 [](auto& all) { all.redisPort = unknowingRedis->port(); }),
            with("a Redis that is not there", [](auto& all) { all.redisPort = 1; }),
        };
    }

    QStringList demo(const QStringList& more) {
        const auto readings = folder.filePath("readings.ndjson"_q);
        write(readings, contentOf(KELVRO_HOST_DATA_DIR "/meter_readings.ndjson"_q).left(4096));
        return QStringList{"demo"_q,       "--plugin"_q, pluginFile(),         "--verbose"_q,
                           "--readings"_q, readings,     "--decoder=shipped"_q} +
               more;
    }

    static void start(QProcess& host, const QStringList& arguments,
                      const QProcessEnvironment& environment) {
        host.setProcessEnvironment(environment);
        host.start(QStringLiteral(KELVRO_HOST_PROGRAM), arguments);
        ASSERT_TRUE(host.waitForStarted());
    }

    static HostRun run(const QStringList& arguments, const QProcessEnvironment& environment) {
        QProcess host;
        start(host, arguments, environment);
        host.waitForFinished(120'000);
        return {.status = host.exitCode(),
                .output = host.readAllStandardOutput(),
                .errors = host.readAllStandardError()};
    }

    static QProcessEnvironment withoutServers() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove("MONGODB_URL"_q);
        environment.remove("REDIS_URL"_q);
        // The MongoDB driver's library then tells of every request, with its contents.
        environment.insert("MONGODB_LOG_ALL"_q, "trace"_q);
        return environment;
    }

    QString fileWith(const Settings& settings) {
        const auto name = folder.filePath("settings.json"_q);
        write(name, QJsonDocument(settings.json()).toJson());
        return name;
    }

    static QProcessEnvironment environmentWith(const Settings& settings) {
        auto environment = withoutServers();
        environment.insert("MONGODB_URL"_q, QString::fromUtf8(settings.url));
        environment.insert("REDIS_URL"_q,
                           QString::fromUtf8("redis://:" + escaped(settings.auth) + "@127.0.0.1:" +
                                             QByteArray::number(settings.redisPort)));
        return environment;
    }

    /// What all of the plug-in's operations that open something throw and log with such settings,
    /// and those that work on what was opened.
    static QByteArray wordsOfThePlugin(const Settings& settings) {
        const log_capture log;
        LoadedPlugin plugin;
        auto* const factory = plugin.factory();
        QByteArray words;
        const auto note = [&](const std::function<void()>& action) {
            words += attempt(action).text.c_str() + "\n"_qba;
        };
        note([&] {
            const auto database = factory->CreateMessageDatabaseInst(settings.json(), nullptr);
            database->UlMessageRepository()->SaveMessage({});
        });
        note([&] { factory->CreateEavDatabaseInst(settings.json(), nullptr); });
        note([&] {
            const auto state = factory->CreateDriverStateInst(settings.json(), nullptr);
            note([&] { state->Push(7, true); });
            note([&] { state->DLqueue()->Push(7, {}, true); });
        });
        note([&] { factory->CreateClientDatabaseInst(settings.json(), nullptr); });
        for (const auto& line : log.lines()) {
            words += line.text.toUtf8() + '\n';
        }
        return words;
    }

    static void write(const QString& name, const QByteArray& text) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    static QByteArray contentOf(const QString& name) {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }

    static inline std::unique_ptr<PostgresqlServer> storage;
    static inline std::unique_ptr<MongoServer> mongo;
    static inline std::unique_ptr<RedisServer> redis;
    static inline std::unique_ptr<RedisServer> unknowingRedis;
    QTemporaryDir folder;
};

TEST_F(Secrets, AreNotInWhatThePluginSaysWhenAllIsWell) {
    const auto words = wordsOfThePlugin(rightSettings());

    EXPECT_THAT(words.toStdString(), HasSubstr("Save UL message executed in "));
    EXPECT_EQ(secretIn(words, secrets), ""_qba) << words.toStdString();
}

TEST_F(Secrets, AreNotInWhatThePluginThrowsAndLogs) {
    const auto all = wrongSettings();
    for (const auto& settings : all) {
        if (settings.pluginMayTry) {
            const auto words = wordsOfThePlugin(settings);
            EXPECT_GT(words.trimmed().size(), 10) << settings.what;
            EXPECT_EQ(secretIn(words, secrets), ""_qba) << settings.what << words.toStdString();
        }
    }
}

// Deliberate: the plug-in hands the URL on as it is, and what follows an unescaped character is no
// secret to the library. Hosts have to look at it before, as ours does.
TEST_F(Secrets, AreRepeatedByTheLibraryIfTheyAreNotEscaped) {
    LoadedPlugin plugin;
    const auto failed = attempt([&] {
        plugin.factory()->CreateMessageDatabaseInst(
            settingsFor("mongodb://meter:a@b:geheim47@127.0.0.1/"), nullptr);
    });

    EXPECT_THAT(failed.text, HasSubstr("geheim47"));
}

TEST_F(Secrets, AreNotInWhatTheHostPrintsWhenAllIsWell) {
    const auto settings = rightSettings();
    for (const auto& result : {run(demo({"--settings"_q, fileWith(settings)}), withoutServers()),
                               run(demo({}), environmentWith(settings))}) {
        EXPECT_EQ(result.status, settings.hostStatus) << result.errors.toStdString();
        EXPECT_THAT(result.errors.toStdString(), HasSubstr("Save UL message executed in "));
        EXPECT_THAT(result.errors.toStdString(), HasSubstr("MONGODB_LOG Debug command "));
        EXPECT_EQ(secretIn(result.output, secrets), ""_qba);
        EXPECT_EQ(secretIn(result.errors, secrets), ""_qba);
    }
}

TEST_F(Secrets, AreNotInWhatTheHostPrintsWhenItFails) {
    const auto all = wrongSettings();
    for (const auto& settings : all) {
        for (const auto& result :
             {run(demo({"--settings"_q, fileWith(settings)}), withoutServers()),
              run(demo({}), environmentWith(settings))}) {
            EXPECT_EQ(result.status, settings.hostStatus) << settings.what;
            EXPECT_THAT(result.errors.toStdString(), HasSubstr("kelvro-host: ")) << settings.what;
            EXPECT_EQ(secretIn(result.output, secrets), ""_qba) << settings.what;
            EXPECT_EQ(secretIn(result.errors, secrets), ""_qba)
                << settings.what << ": " << result.errors.toStdString();
        }
    }
}

TEST_F(Secrets, AreNotInWhatTheHostSaysOfSettingsThatItCannotRead) {
    const auto name = folder.filePath("settings.json"_q);
    write(name, R"({"url": "mongodb://meter:geheim47@h/", )");
    EXPECT_EQ(secretIn(run(demo({"--settings"_q, name}), withoutServers()).errors, secrets),
              ""_qba);

    auto environment = environmentWith(rightSettings());
    environment.insert("REDIS_URL"_q, "redis://:geheim47@h:port"_q);
    EXPECT_EQ(secretIn(run(demo({}), environment).errors, secrets), ""_qba);
}

TEST_F(Secrets, AreNotInTheHostsCommandLineWhileItRuns) {
    mongo->freeze(); // the host waits for it
    QProcess host;
    start(host, demo({"--settings"_q, fileWith(rightSettings())}), withoutServers());
    ASSERT_TRUE(host.waitForReadyRead());

    const QString process = "/proc/"_q + QString::number(host.processId());
    const QByteArray words = contentOf(process + "/cmdline"_q) + contentOf(process + "/comm"_q);
    host.kill();
    host.waitForFinished();
    mongo->resume();

    EXPECT_THAT(words.toStdString(), HasSubstr("kelvro-host"));
    EXPECT_EQ(secretIn(words, secrets), ""_qba);
}

// What the tests above look for, they find.
TEST(SecretIn, FindsEachForm) {
    const QByteArrayList secret{"Fa/sch:geheim47"};
    for (const auto& text :
         {"a Fa/sch:geheim47 b"_qba, "Fa%2Fsch%3Ageheim47"_qba, "Fa/sch:geheim47"_qba.toBase64(),
          "u:Fa/sch:geheim47@h"_qba.toBase64(), "\0u\0Fa/sch:geheim47"_qba.toBase64()}) {
        EXPECT_NE(secretIn(text, secret), ""_qba) << text.toStdString();
    }
    EXPECT_EQ(secretIn("Fa/sch:geheim"_qba, secret), ""_qba);
}

} // namespace
