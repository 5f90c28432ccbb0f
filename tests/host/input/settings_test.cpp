#include "host/input/settings.h"

#include "host/failure.h"
#include "host/input/mongo_timeouts.h"
#include "tests/support/environment.h"
#include "tests/support/log_capture.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using namespace test_support::literals;

class SettingsFile : public testing::Test {
protected:
    QString write(const QByteArray& text) {
        auto fileName = m_folder.filePath("settings.json"_q);
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly)) {
            throw std::runtime_error("cannot write the settings");
        }
        file.write(text);
        return fileName;
    }

    static QString failureOf(const QString& fileName) {
        try {
            host::readSettings(fileName);
        } catch (const host::Failure& failure) {
            return QString::fromUtf8(failure.what());
        }
        return {};
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(SettingsFile, GivesTheObject) {
    const auto settings =
        host::readSettings(write(R"({"url":"mongodb://h/","redis":{"cleint_db":2}})"));
    EXPECT_EQ(settings.value("url"_q), QJsonValue("mongodb://h/"_q));
    EXPECT_EQ(settings.value("redis"_q).toObject().value("cleint_db"_q), QJsonValue(2));
}

TEST_F(SettingsFile, NamesAFileThatIsMissing) {
    EXPECT_EQ(failureOf("/nonexistent.json"_q),
              "cannot read the settings file /nonexistent.json: No such file or directory"_q);
}

TEST_F(SettingsFile, SaysWhereAFileStopsBeingJson) {
    const auto fileName = write(R"({"url":)");
    EXPECT_EQ(failureOf(fileName),
              "the settings file "_q + fileName + " is not JSON: unterminated object at byte 8"_q);
}

TEST_F(SettingsFile, RefusesJsonThatIsNoObject) {
    const auto fileName = write("[]");
    EXPECT_EQ(failureOf(fileName), "the settings file "_q + fileName + " is not a JSON object"_q);
}

TEST_F(SettingsFile, RefusesAnObjectWithoutUrl) {
    const auto fileName = write(R"({"redis":{}})");
    EXPECT_EQ(failureOf(fileName), "the settings file "_q + fileName + " has no \"url\" text"_q);
}

TEST_F(SettingsFile, RefusesAPasswordWithUnescapedCharactersWithoutRepeatingIt) {
    const auto fileName = write(R"({"url":"mongodb://u:se@cret@h/"})");
    const auto failure = failureOf(fileName);
    EXPECT_TRUE(failure.startsWith("the \"url\" of the settings file "_q + fileName +
                                   " has an unescaped @ in the user name or password"_q))
        << failure.toStdString();
    EXPECT_FALSE(failure.contains("cret"_q));
}

class OpenSettingsFile : public SettingsFile {
protected:
    std::vector<test_support::log_line> linesAbout(const QByteArray& text, bool isOpen = true) {
        const auto fileName = write(text);
        auto permissions = QFile::permissions(fileName);
        permissions.setFlag(QFile::ReadOther, isOpen);
        QFile::setPermissions(fileName, permissions);
        const test_support::log_capture log;
        host::readSettings(fileName);
        return log.lines();
    }
};

TEST_F(OpenSettingsFile, GetsAWarningIfItHoldsAPassword) {
    for (const auto* const text :
         {R"({"url":"mongodb://u:p@h/"})", R"({"url":"mongodb://h/","redis":{"auth":"a"}})"}) {
        const auto lines = linesAbout(text);
        ASSERT_EQ(lines.size(), 1U) << text;
        EXPECT_EQ(lines.front().type, QtWarningMsg);
        EXPECT_TRUE(lines.front().text.endsWith(
            "settings.json has a password in it, and every user may read it"_q));
    }
}

TEST_F(OpenSettingsFile, GetsNoWarningIfItHoldsNone) {
    EXPECT_TRUE(linesAbout(R"({"url":"mongodb://h/","redis":{"auth":""}})").empty());
}

TEST_F(OpenSettingsFile, GetsNoWarningOnceItIsClosedToOthers) {
    EXPECT_TRUE(linesAbout(R"({"url":"mongodb://u:p@h/"})", false).empty());
}

TEST(RedisSettings, HaveThePluginsDefaults) {
    const auto redis = host::redisSettings({});
    EXPECT_EQ(redis.host, "127.0.0.1"_q);
    EXPECT_EQ(redis.auth, QString());
    EXPECT_EQ(redis.name, QString());
    EXPECT_EQ(redis.port, 6379);
    EXPECT_EQ(redis.clientDb, 2);
    EXPECT_EQ(redis.stateDb, 0);
    EXPECT_EQ(redis.queueDb, 7);
}

TEST(RedisSettings, TakeEachKey) {
    const auto redis = host::redisSettings({{"redis"_q, QJsonObject{{"host"_q, "h"_q},
                                                                    {"auth"_q, "a"_q},
                                                                    {"name"_q, "n"_q},
                                                                    {"port"_q, 1},
                                                                    {"cleint_db"_q, 3},
                                                                    {"state_db"_q, 4},
                                                                    {"queue_db"_q, 5}}}});
    EXPECT_EQ(redis.host, "h"_q);
    EXPECT_EQ(redis.auth, "a"_q);
    EXPECT_EQ(redis.name, "n"_q);
    EXPECT_EQ(redis.port, 1);
    EXPECT_EQ(redis.clientDb, 3);
    EXPECT_EQ(redis.stateDb, 4);
    EXPECT_EQ(redis.queueDb, 5);
}

TEST(RedisName, IsHostAndPort) {
    EXPECT_EQ(host::redisName({{"redis"_q, QJsonObject{{"host"_q, "h"_q}}}}), "h:6379"_q);
}

/// The two variables, for as long as a test runs.
class EnvironmentSettings : public testing::Test {
protected:
    EnvironmentSettings() {
        environment.set("MONGODB_URL", "mongodb://h/"_q);
        environment.unset("REDIS_URL");
    }

    QJsonObject redisOf(const char* url) {
        environment.set("REDIS_URL", QString::fromLatin1(url));
        return host::settingsFromEnvironment().value("redis"_q).toObject();
    }

    static QString failure() {
        try {
            host::settingsFromEnvironment();
        } catch (const host::Failure& failure) {
            return QString::fromUtf8(failure.what());
        }
        return {};
    }

    test_support::Environment environment;
};

TEST_F(EnvironmentSettings, TakeTheMongoUrlWithTimeouts) {
    EXPECT_EQ(host::settingsFromEnvironment(),
              (QJsonObject{{"url"_q, host::withTimeouts("mongodb://h/"_q)}}));
}

TEST_F(EnvironmentSettings, TakeHostPortAndPasswordOfTheRedisUrl) {
    EXPECT_EQ(
        redisOf("redis://:p%25%40%2Fss@redis.example:7000"),
        (QJsonObject{{"host"_q, "redis.example"_q}, {"port"_q, 7000}, {"auth"_q, "p%@/ss"_q}}));
}

TEST_F(EnvironmentSettings, LeaveWhatTheRedisUrlDoesNotSayToThePlugin) {
    EXPECT_EQ(redisOf("redis://redis.example"), (QJsonObject{{"host"_q, "redis.example"_q}}));
}

TEST_F(EnvironmentSettings, RefuseARedisUrlWithoutRepeatingItsPassword) {
    for (const auto* const url : {"redis://:secret@", "http://:secret@h:1", "h:1", "redis://h:x"}) {
        environment.set("REDIS_URL", QString::fromLatin1(url));
        EXPECT_EQ(failure(), "REDIS_URL is not of the form redis://[:password@]host:port"_q) << url;
    }
}

TEST_F(EnvironmentSettings, NameTheVariableThatIsMissing) {
    environment.unset("MONGODB_URL");
    EXPECT_EQ(failure(), "neither a settings file (--settings) nor MONGODB_URL says where the "
                         "servers are"_q);
}

TEST_F(EnvironmentSettings, RefuseAMongoUrlWithUnescapedCharactersWithoutRepeatingIt) {
    environment.set("MONGODB_URL", "mongodb://u:se/cret@h/"_q);
    EXPECT_TRUE(
        failure().startsWith("MONGODB_URL has an unescaped / in the user name or password"_q));
    EXPECT_FALSE(failure().contains("cret"_q));
}

TEST(ServerName, LeavesOutUserNamePasswordAndOptions) {
    EXPECT_EQ(host::serverName({{"url"_q, "mongodb://user:p%40ss@a:1,b:2/x?y=z@w"_q}}),
              "mongodb://a:1,b:2/x"_q);
}

TEST(ServerName, LeavesOutAPasswordThatIsNotWrittenAsItShouldBe) {
    for (const auto* const url : {"mongodb://u:se/cret@h/", "mongodb://u:se@cret@h/"}) {
        EXPECT_EQ(host::serverName({{"url"_q, QString::fromUtf8(url)}}), "mongodb://h/"_q);
    }
}

TEST(ServerName, KeepsAUrlWithoutThem) {
    EXPECT_EQ(host::serverName({{"url"_q, "mongodb://a:1/"_q}}), "mongodb://a:1/"_q);
}

/// In an environment without any of it, but for what a test sets.
class FindSettings : public SettingsFile {
protected:
    FindSettings() {
        for (const auto* name : {"KELVRO_SETTINGS", "MONGODB_URL", "REDIS_URL"}) {
            m_environment.unset(name);
        }
        set("XDG_CONFIG_HOME", m_folder.path());
    }

    void set(const char* name, const QString& value) { m_environment.set(name, value); }

    void writeOwn() const {
        QDir(m_folder.path()).mkdir("kelvrostorage"_q);
        QFile file(m_folder.filePath("kelvrostorage/settings.json"_q));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"({"url":"mongodb://own/"})");
    }

    static QString found(const QString& fileName = {}) {
        return host::findSettings(fileName).value("url"_q).toString();
    }

private:
    QTemporaryDir m_folder;
    test_support::Environment m_environment;
};

TEST_F(FindSettings, TakesTheNamedFileFirst) {
    set("KELVRO_SETTINGS", write(R"({"url":"mongodb://environment/"})"));
    QTemporaryDir folder;
    const auto named = folder.filePath("named.json"_q);
    QFile file(named);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"url":"mongodb://named/"})");
    file.close();
    EXPECT_EQ(found(named), "mongodb://named/"_q);
}

TEST_F(FindSettings, TakesTheFileOfTheEnvironmentBeforeItsServers) {
    set("KELVRO_SETTINGS", write(R"({"url":"mongodb://file/"})"));
    set("MONGODB_URL", "mongodb://server/"_q);
    EXPECT_EQ(found(), "mongodb://file/"_q);
}

TEST_F(FindSettings, TakesTheServersOfTheEnvironmentBeforeTheUsersOwnFile) {
    writeOwn();
    set("MONGODB_URL", "mongodb://server/"_q);
    EXPECT_TRUE(found().startsWith("mongodb://server/"_q));
}

TEST_F(FindSettings, TakesTheUsersOwnFileLast) {
    writeOwn();
    EXPECT_EQ(found(), "mongodb://own/"_q);
}

TEST_F(FindSettings, SaysWhereItHasLooked) {
    try {
        found();
        ADD_FAILURE() << "found some";
    } catch (const host::Failure& failure) {
        const auto text = QString::fromUtf8(failure.what());
        EXPECT_TRUE(text.contains("KELVRO_SETTINGS"_q)) << text.toStdString();
        EXPECT_TRUE(text.contains("/kelvrostorage/settings.json"_q)) << text.toStdString();
    }
}

} // namespace
