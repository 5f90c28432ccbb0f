#include "mongo/dl_message_repository.h"

#include "tests/mongo/downlink_repository_fixture.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

#include <QRegularExpression>

#include <chrono>
#include <stdexcept>
#include <thread>

using namespace records;
using namespace test_support;
using dl_status = model::dl_message::dl_status;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DownlinkRepositorySave : public DownlinkRepositoryTest {};
class DownlinkRepositorySetStatus : public DownlinkRepositoryTest {};
class DownlinkRepositoryDelete : public DownlinkRepositoryTest {};

TEST_F(DownlinkRepositorySave, StoresEveryMemberInItsFieldInTheFieldsOrder) {
    const QString id = save(downlink{});

    EXPECT_THAT(database.documents(collection),
                ElementsAre(canonical(R"({"_id": {"$oid": ")" + id.toStdString() + R"("},
        "modem_id": 7,
        "api_key": "key-5",
        "data": {"mode": "on", "relay": 2.0},
        "status": 0,
        "timeout": 90,
        "f_ack": 1,
        "payload": "0a0bff",
        "ttl": {"$date": {"$numberLong": "4102444800123"}},
        "timestamp": {"$numberLong": "1700000000"}
    })")));
}

TEST_F(DownlinkRepositorySave, StoresEveryFieldOfAnEmptyRecord) {
    model::dl_message message;
    message.ttl = in2100();
    const QString id = save(message);

    EXPECT_THAT(database.documents(collection),
                ElementsAre(canonical(R"({"_id": {"$oid": ")" + id.toStdString() + R"("},
        "modem_id": 0, "api_key": "", "data": {}, "status": 0, "timeout": 0, "f_ack": 0,
        "payload": "", "ttl": {"$date": {"$numberLong": "4102444800123"}},
        "timestamp": {"$numberLong": "4294967295"}
    })")));
}

TEST_F(DownlinkRepositorySave, WritesTheIdBackAsTwentyFourLowercaseDigits) {
    model::dl_message message = downlink{};
    message.db_id = "of an earlier command"_q;
    repository.SaveMessage(message);

    EXPECT_TRUE(QRegularExpression{"\\A[0-9a-f]{24}\\z"_q}.match(message.db_id).hasMatch())
        << message.db_id.toStdString();
    EXPECT_EQ(database.count(collection, withId(message.db_id)), 1);
}

TEST_F(DownlinkRepositorySave, ChangesNothingElseInTheRecord) {
    model::dl_message message = downlink{};
    repository.SaveMessage(message);

    model::dl_message expected = downlink{};
    expected.db_id = message.db_id;
    EXPECT_EQ(differences(message, expected), "");
}

TEST_F(DownlinkRepositorySave, StoresTheSameRecordTwiceUnderTwoIds) {
    model::dl_message message = downlink{};
    repository.SaveMessage(message);
    const QString first = message.db_id;
    repository.SaveMessage(message);

    EXPECT_NE(message.db_id, first);
    EXPECT_EQ(database.count(collection), 2);
}

TEST_F(DownlinkRepositorySave, StoresEachStatusAsItsNumber) {
    for (const int status : {0, 1, 2, 3}) {
        save(downlink{.modem = status, .status = static_cast<dl_status>(status)});
    }
    for (const int status : {0, 1, 2, 3}) {
        const std::string number = std::to_string(status);
        EXPECT_EQ(database.count(collection,
                                 R"({"modem_id": )" + number + R"(, "status": )" + number + "}"),
                  1)
            << status;
    }
}

TEST_F(DownlinkRepositorySave, StoresContentWithoutItsNullsAndEveryNumberAsADouble) {
    model::dl_message message = downlink{};
    message.data = QJsonObject{{"n"_q, 5}, {"none"_q, QJsonValue::Null}};
    const QString id = save(message);

    EXPECT_EQ(toJson(database.document(collection)["data"].get_document().value),
              canonical(R"({"n": 5.0})"));
}

TEST_F(DownlinkRepositorySave, StoresContentThatLooksLikeAnObjectIdAsADocument) {
    model::dl_message message = downlink{};
    message.data = QJsonObject{{"ref"_q, QJsonObject{{"$oid"_q, "not one"_q}}}};
    repository.SaveMessage(message);
    const auto found = repository.GetById(message.db_id);

    EXPECT_EQ(found.data, message.data);
}

TEST_F(DownlinkRepositorySave, AsksTheServerNothingForANameThatBsonCannotHold) {
    model::dl_message message = downlink{};
    message.data = QJsonObject{{"a\0b"_q, 5}};

    EXPECT_THROW(repository.SaveMessage(message), bsoncxx::v1::exception);
    EXPECT_EQ(message.db_id, QString());
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepositorySave, RefusesACommandOfMoreThanSixteenMegabytes) {
    model::dl_message message = downlink{};
    message.payload = QByteArray(9'000'000, '\x5a');

    EXPECT_THROW(repository.SaveMessage(message), mongocxx::v1::exception);
    EXPECT_EQ(message.db_id, QString());
    EXPECT_EQ(database.count(collection), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepositorySave, WithoutAnIdInTheAnswerThrowsAndLeavesTheCommandStored) {
    // A write that the server need not acknowledge gives no id back.
    recording_client hasty{mongoUrlWith("w=0")};
    mongo::DLMessageRepository hastyRepository{hasty.database(database.name())};
    model::dl_message message = downlink{};
    try {
        hastyRepository.SaveMessage(message);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "error in id");
    }

    EXPECT_EQ(message.db_id, QString());
    EXPECT_THAT(log.lines(), IsEmpty());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{30};
    while (database.count(collection) == 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(database.count(collection), 1);
}

TEST_F(DownlinkRepositorySave, IsOneRequestAndLogsItsDuration) {
    save(downlink{});

    EXPECT_THAT(client.sentNames(), ElementsAre("insert"));
    EXPECT_THAT(log.lines(), IsOneLine("Save DL messages executed in %1ms"));
}

TEST_F(DownlinkRepositorySetStatus, ChangesTheStatusAndNothingElse) {
    const QString id = save(downlink{});
    std::string expected = toJson(database.document(collection));
    repository.SetStatus(id, dl_status::TIMEOUT);

    const std::string pending = R"("status" : { "$numberInt" : "0" })";
    ASSERT_NE(expected.find(pending), std::string::npos);
    expected.replace(expected.find(pending), pending.size(),
                     R"("status" : { "$numberInt" : "3" })");
    EXPECT_THAT(database.documents(collection), ElementsAre(expected));
}

TEST_F(DownlinkRepositorySetStatus, ChangesTheNamedCommandOnly) {
    const QString id = save(downlink{});
    save(downlink{});
    repository.SetStatus(id, dl_status::WAIT_DATA);

    EXPECT_EQ(database.count(collection, R"({"status": 1})"), 1);
    EXPECT_EQ(database.count(collection, R"({"status": 0})"), 1);
}

TEST_F(DownlinkRepositorySetStatus, OfAnUnknownIdChangesNothingAndDoesNotFail) {
    save(downlink{});
    const auto before = database.documents(collection);
    log.clear();
    repository.SetStatus(unknownIdText(), dl_status::EXECUTED);

    EXPECT_EQ(database.documents(collection), before);
    EXPECT_THAT(log.lines(), IsOneLine("Set DL messages status executed in %1ms"));
}

// Deliberate: only GetById replaces the library's exception by a text.
TEST_F(DownlinkRepositorySetStatus, OfATextThatIsNoIdThrowsTheLibrarysException) {
    for (const QString& id : {"123"_q, ""_q, "0123456789abcdef0123456g"_q}) {
        EXPECT_THROW(repository.SetStatus(id, dl_status::EXECUTED), bsoncxx::v1::exception);
        EXPECT_THROW(repository.AckCommand(id), bsoncxx::v1::exception);
    }
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepositorySetStatus, SendsOneUpdateById) {
    repository.SetStatus(unknownIdText(), dl_status::EXECUTED);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "update": "dl_messages", "ordered": true,
        "updates": [{"q": {"_id": {"$oid": "0123456789abcdef01234567"}},
                     "u": {"$set": {"status": 2}}, "upsert": false, "multi": false}]
    })"));
}

TEST_F(DownlinkRepositorySetStatus, LogsItsDuration) {
    const QString id = save(downlink{});
    log.clear();
    repository.SetStatus(id, dl_status::EXECUTED);

    EXPECT_THAT(log.lines(), IsOneLine("Set DL messages status executed in %1ms"));
}

TEST_F(DownlinkRepositorySetStatus, AckCommandLeavesTheStatusExecuted) {
    const QString id = save(downlink{});
    repository.AckCommand(id);

    EXPECT_EQ(database.count(collection, R"({"status": 2})"), 1);
}

TEST_F(DownlinkRepositorySetStatus, AckCommandLogsTheLineOfSetStatusAlone) {
    const QString id = save(downlink{});
    log.clear();
    repository.AckCommand(id);

    EXPECT_THAT(log.lines(), IsOneLine("Set DL messages status executed in %1ms"));
}

TEST_F(DownlinkRepositorySetStatus, AckCommandGoesThroughASubclassesSetStatus) {
    class refusing final : public mongo::DLMessageRepository {
    public:
        using DLMessageRepository::DLMessageRepository;
        void SetStatus(const QString& id, dl_status status) override {
            asked.emplace_back(id, status);
        }
        std::vector<std::pair<QString, dl_status>> asked;
    };
    const QString id = save(downlink{});
    refusing subclass{client.database(database.name())};
    static_cast<interfaces::IDLAPPMessageRepository&>(subclass).AckCommand(id);

    EXPECT_THAT(subclass.asked, ElementsAre(std::pair{id, dl_status::EXECUTED}));
    EXPECT_EQ(database.count(collection, R"({"status": 0})"), 1);
}

TEST_F(DownlinkRepositoryDelete, DeletesThePeriodOfTheNamedDevicesBoundsIncluded) {
    for (const int modem : {3, 4, 5}) {
        for (const qint64 time : {99, 100, 150, 200, 201}) {
            save(downlink{.modem = modem, .at = time});
        }
    }
    repository.DeleteMessages({3, 5}, utc(100), utc(200));

    EXPECT_EQ(timesOf(*repository.GetCommands(downlinksOf({3, 4, 5}))),
              (times_by_device{{3, {201, 99}}, {4, {201, 200, 150, 100, 99}}, {5, {201, 99}}}));
    EXPECT_EQ(database.count(collection), 9);
}

TEST_F(DownlinkRepositoryDelete, DropsTheSubSecondPartOfTheBounds) {
    save(downlink{.at = 100});
    save(downlink{.at = 201});
    repository.DeleteMessages({7}, utc(100).addMSecs(999), utc(200).addMSecs(999));

    EXPECT_EQ(database.count(collection, R"({"timestamp": 201})"), 1);
    EXPECT_EQ(database.count(collection), 1);
}

TEST_F(DownlinkRepositoryDelete, DeletesCommandsOfAnyStatus) {
    for (const int status : {0, 1, 2, 3}) {
        save(downlink{.status = static_cast<dl_status>(status)});
    }
    repository.DeleteMessages({7}, utc(0), in2100());

    EXPECT_EQ(database.count(collection), 0);
}

TEST_F(DownlinkRepositoryDelete, SendsOneRequestPerDeviceInListOrder) {
    repository.DeleteMessages({5, 3}, utc(100), utc(200));

    ASSERT_THAT(client.sentNames(), ElementsAre("delete", "delete"));
    const auto expected = [](const char* device) {
        return canonical(
            std::string{R"({"delete": "dl_messages", "ordered": true, "deletes": [{"q": {
            "modem_id": )"} +
            device + R"(, "timestamp": {"$gte": {"$numberLong": "100"},
                                                          "$lte": {"$numberLong": "200"}}},
            "limit": 0}]})");
    };
    EXPECT_EQ(client.sent()[0].asked(), expected("5"));
    EXPECT_EQ(client.sent()[1].asked(), expected("3"));
}

TEST_F(DownlinkRepositoryDelete, OfEqualBoundsDeletesThatSecond) {
    for (const qint64 time : {99, 100, 101}) {
        save(downlink{.at = time});
    }
    repository.DeleteMessages({7, 7}, utc(100), utc(100));

    EXPECT_EQ(timesOf(*repository.GetCommands(downlinksOf({7}))),
              (times_by_device{{7, {101, 99}}}));
}

TEST_F(DownlinkRepositoryDelete, OfNoDevicesAsksTheServerNothing) {
    save(downlink{});
    client.forget();
    repository.DeleteMessages({}, utc(0), in2100());

    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_EQ(database.count(collection), 1);
}

TEST_F(DownlinkRepositoryDelete, LogsNothing) {
    save(downlink{});
    log.clear();
    repository.DeleteMessages({7, 8}, utc(0), in2100());

    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableDownlinkRepository, SaveThrowsTheDriversExceptionAndLeavesTheRecord) {
    model::dl_message message = downlink{};

    EXPECT_THROW(repository.SaveMessage(message), mongocxx::v1::exception);
    EXPECT_EQ(differences(message, downlink{}.record()), "");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableDownlinkRepository, QueriesThrowTheDriversExceptionAndLogNothing) {
    EXPECT_THROW(repository.GetById("0123456789abcdef01234567"_q), mongocxx::v1::exception);
    EXPECT_THROW(repository.GetCommands(downlinksOf({7})), mongocxx::v1::exception);
    EXPECT_THROW(repository.GetNotAckCommands(downlinksOf({7})), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableDownlinkRepository, SettingAStatusThrowsTheDriversExceptionAndLogsNothing) {
    const QString id = "0123456789abcdef01234567"_q;
    EXPECT_THROW(repository.SetStatus(id, dl_status::TIMEOUT), mongocxx::v1::exception);
    EXPECT_THROW(repository.AckCommand(id), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableDownlinkRepository, DeletingThrowsTheDriversException) {
    EXPECT_THROW(repository.DeleteMessages({7}, utc(0), in2100()), mongocxx::v1::exception);
}

TEST_F(UnreachableDownlinkRepository, QueriesWithoutADeviceSucceed) {
    EXPECT_TRUE(repository.GetCommands(downlinksOf({}))->empty());
    EXPECT_TRUE(repository.GetNotAckCommands(downlinksOf({}))->empty());
    EXPECT_EQ(log.lines().size(), 2u);
}

} // namespace
