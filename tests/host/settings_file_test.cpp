#include "host/settings_file.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <stdexcept>

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

TEST(ServerName, LeavesOutUserNameAndPassword) {
    EXPECT_EQ(host::serverName({{"url"_q, "mongodb://user:p%40ss@a:1,b:2/x?y=z@w"_q}}),
              "mongodb://a:1,b:2/x?y=z@w"_q);
}

TEST(ServerName, KeepsAUrlWithoutThem) {
    EXPECT_EQ(host::serverName({{"url"_q, "mongodb://a:1/"_q}}), "mongodb://a:1/"_q);
}

} // namespace
