#include "host/mongo_log.h"

#include "tests/support/log_capture.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/qt_literals.h"

#include <QProcess>
#include <gmock/gmock.h>

#include <string>

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TEST(MongoLog, KeepsTheLevels) {
    using enum mongocxx::v1::log_level;
    host::MongoLog log;
    const log_capture captured;
    for (const auto level : {k_error, k_critical, k_warning, k_message, k_info, k_debug, k_trace}) {
        log(level, "cluster", "100% away");
    }

    std::vector<QtMsgType> types;
    for (const auto& line : captured.lines()) {
        EXPECT_EQ(line.category, "mongodb"_q);
        EXPECT_EQ(line.text, "cluster: 100% away"_q);
        types.push_back(line.type);
    }
    EXPECT_THAT(types, ElementsAre(QtCriticalMsg, QtCriticalMsg, QtWarningMsg, QtInfoMsg, QtInfoMsg,
                                   QtDebugMsg, QtDebugMsg));
}

/// The program, whose MongoDB server is killed while it works.
class HostWhoseServerGoes : public testing::Test {
protected:
    void run(const QStringList& more = {}) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("MONGODB_URL"_q, QString::fromStdString(server.url()));
        QProcess host;
        host.setProcessEnvironment(environment);
        host.start(QStringLiteral(KELVRO_HOST_PROGRAM),
                   QStringList{"demo"_q, "--plugin"_q, QStringLiteral(KELVRO_PLUGIN_FILE),
                               "--decoder=shipped"_q} +
                       more);
        QByteArray printed;
        while (!printed.contains("\nUplink messages\n")) {
            ASSERT_TRUE(host.waitForReadyRead()) << host.readAllStandardError().toStdString();
            printed += host.readAllStandardOutput();
        }
        server.kill();
        ASSERT_TRUE(host.waitForFinished(120'000));
        EXPECT_EQ(host.exitCode(), 1);
        printed += host.readAllStandardOutput();
        output = printed.toStdString();
        errors = host.readAllStandardError().toStdString();
    }

    PostgresqlServer storage;
    MongoServer server{storage};
    std::string output;
    std::string errors;
};

/// The library's own words for a connection that broke, at its debug level and as a warning.
constexpr auto debugLine = "cluster: could not read message length";
constexpr auto warning = "mongodb: client: Couldn't send \"endSessions\"";

TEST_F(HostWhoseServerGoes, KeepsTheDriversLinesFromItsResults) {
    run();

    EXPECT_THAT(output, AllOf(Not(HasSubstr("cluster:")), Not(HasSubstr("client:"))));
    EXPECT_THAT(errors,
                AllOf(HasSubstr("kelvro-host: "), HasSubstr(warning), Not(HasSubstr(debugLine))));
}

TEST_F(HostWhoseServerGoes, ShowsTheDriversLinesAmongTheOthersWhenAsked) {
    run({"--verbose"_q});

    EXPECT_THAT(output, AllOf(Not(HasSubstr("cluster:")), Not(HasSubstr("client:"))));
    EXPECT_THAT(errors, AllOf(HasSubstr("kelvro-host: "), HasSubstr(warning),
                              HasSubstr(std::string("mongodb: ") + debugLine)));
}

} // namespace
