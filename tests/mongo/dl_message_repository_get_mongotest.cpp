#include "tests/mongo/damaged_answers.h"
#include "tests/mongo/downlink_repository_fixture.h"
#include "tests/support/record_equality.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/exception.hpp>

using namespace records;
using namespace test_support;
using dl_status = model::dl_message::dl_status;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DownlinkRepositoryGetById : public DownlinkRepositoryTest {
protected:
    /// Stores a document with this content under the id "0123456789abcdef01234567" and reads it.
    model::dl_message readBack(const std::string& members) {
        database.insert(collection, R"({"_id": {"$oid": "0123456789abcdef01234567"})" +
                                        (members.empty() ? "" : ", " + members) + "}");
        return repository.GetById(unknownIdText());
    }
};

TEST_F(DownlinkRepositoryGetById, GivesBackAnEqualCommand) {
    model::dl_message message = downlink{.status = dl_status::WAIT_DATA};
    repository.SaveMessage(message);

    message.extra_text = QString();
    EXPECT_EQ(differences(repository.GetById(message.db_id), message, date_times::byInstant), "");
}

TEST_F(DownlinkRepositoryGetById, GivesTheTimeInUtcAndTheExpiryInLocalTime) {
    const auto found = repository.GetById(save(downlink{}));

    EXPECT_EQ(found.timestamp.timeSpec(), Qt::UTC);
    EXPECT_EQ(found.ttl.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(found.ttl.toMSecsSinceEpoch(), 4'102'444'800'123);
}

TEST_F(DownlinkRepositoryGetById, FindsByUppercaseDigitsToo) {
    const QString id = save(downlink{});

    EXPECT_EQ(repository.GetById(id.toUpper()).db_id, id);
}

TEST_F(DownlinkRepositoryGetById, RefusesTextThatIsNoId) {
    const QString longer = unknownIdText() + "8"_q;
    for (const QString& id : {"123"_q, QString(), "0123456789abcdef0123456g"_q, longer,
                              " 123456789abcdef01234567"_q, "идентификатор"_q, "twelve bytes"_q}) {
        EXPECT_EQ(thrownText([&] { repository.GetById(id); }), "invalid id"_q) << id.toStdString();
    }
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepositoryGetById, ThrowsForAnUnknownIdAndLogsNothing) {
    save(downlink{});
    log.clear();

    EXPECT_EQ(thrownText([&] { repository.GetById(unknownIdText()); }), "not exist"_q);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepositoryGetById, SendsOneRequestById) {
    thrownText([&] { repository.GetById(unknownIdText()); });

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "find": "dl_messages", "filter": {"_id": {"$oid": "0123456789abcdef01234567"}},
        "limit": {"$numberLong": "1"}})"));
}

TEST_F(DownlinkRepositoryGetById, LogsItsDuration) {
    const QString id = save(downlink{});
    log.clear();
    repository.GetById(id);

    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages by ID executed in %1ms"));
}

// Deliberate: the line tells of the search.
TEST_F(DownlinkRepositoryGetById, LogsBeforeItConverts) {
    using damaged = damaged_answers<mongo::DLMessageRepository>;
    model::dl_message message = downlink{};
    message.api_key = damaged::text();
    const QString id = save(message);
    log.clear();
    damaged answers{database.name()};

    EXPECT_THROW(answers.repository.GetById(id), bsoncxx::v1::exception);
    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages by ID executed in %1ms"));
}

TEST_F(DownlinkRepositoryGetById, ReadsAPayloadInMixedCase) {
    EXPECT_EQ(readBack(R"("payload": "0a0B")").payload, "\x0a\x0b"_qba);
}

TEST_F(DownlinkRepositoryGetById, GivesDefaultsForWhatADocumentLacks) {
    model::dl_message expected;
    expected.db_id = unknownIdText();
    expected.timestamp = utc(0);
    expected.ttl = utc(0);

    EXPECT_EQ(differences(readBack(""), expected, date_times::byInstant), "");
}

TEST_F(DownlinkRepositoryGetById, GivesDefaultsForMembersOfAnotherType) {
    model::dl_message expected;
    expected.db_id = unknownIdText();
    expected.timestamp = utc(0);
    expected.ttl = utc(0);

    EXPECT_EQ(differences(readBack(R"("modem_id": "7", "timeout": true, "status": "EXECUTED",
                                      "timestamp": {"$date": {"$numberLong": "5000"}},
                                      "data": [1], "api_key": 5, "payload": 10, "f_ack": null,
                                      "ttl": {"$numberLong": "5000"})"),
                          expected, date_times::byInstant),
              "");
}

TEST_F(DownlinkRepositoryGetById, ReadsWholeNumbersOfAnyWidth) {
    const auto found = readBack(R"("modem_id": {"$numberLong": "7"}, "timeout": 90.0,
                                   "status": {"$numberLong": "3"}, "timestamp": 1700000000.0)");
    EXPECT_EQ(found.modem_id, 7);
    EXPECT_EQ(found.timeout, 90);
    EXPECT_EQ(found.status, dl_status::TIMEOUT);
    EXPECT_EQ(found.timestamp, utc(1'700'000'000));
}

TEST_F(DownlinkRepositoryGetById, ReadsNumbersThatAreNotWholeAsZero) {
    const auto found = readBack(R"("modem_id": 7.5, "timestamp": 100.5)");
    EXPECT_EQ(found.modem_id, 0);
    EXPECT_EQ(found.timestamp, utc(0));
}

// Deliberate: a time is read as a signed 32-bit number.
TEST_F(DownlinkRepositoryGetById, ReadsATimeAfter2038AsTheEpoch) {
    EXPECT_EQ(readBack(R"("timestamp": {"$numberLong": "2147483648"})").timestamp, utc(0));
}

TEST_F(DownlinkRepositoryGetById, ReadsACommandStoredWithoutATimeAsTheEpoch) {
    model::dl_message message = downlink{};
    message.timestamp = QDateTime();

    EXPECT_EQ(repository.GetById(save(message)).timestamp, utc(0));
}

class DownlinkRepository : public DownlinkRepositoryTest {
protected:
    void saveAt(int modem, std::initializer_list<qint64> times) {
        for (const qint64 time : times) {
            save(downlink{.modem = modem, .at = time});
        }
    }

    static model::filter_dl filterOf100To200(std::list<int> modem_ids) {
        auto filter = downlinksOf(std::move(modem_ids));
        filter.begin = utc(100);
        filter.end = utc(200);
        filter.limit = 9;
        return filter;
    }

    times_by_device timesFor(const model::filter_dl& filter) {
        return timesOf(*repository.GetCommands(filter));
    }
    times_by_device notAckTimesFor(const model::filter_dl& filter) {
        return timesOf(*repository.GetNotAckCommands(filter));
    }
};

TEST_F(DownlinkRepository, AStoredCommandComesBackEqual) {
    model::dl_message message = downlink{};
    repository.SaveMessage(message);
    const auto found = repository.GetCommands(downlinksOf({7}));

    message.extra_text = QString();
    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_EQ(differences(found->at(7).front(), message, date_times::byInstant), "");
}

TEST_F(DownlinkRepository, BothBoundsOfThePeriodAreInclusive) {
    saveAt(7, {99, 100, 150, 200, 201});

    EXPECT_EQ(timesFor(filterOf100To200({7})), (times_by_device{{7, {200, 150, 100}}}));
    EXPECT_EQ(notAckTimesFor(filterOf100To200({7})), (times_by_device{{7, {200, 150, 100}}}));
}

TEST_F(DownlinkRepository, TheSubSecondPartOfTheBoundsIsDropped) {
    saveAt(7, {99, 100, 200, 201});
    auto filter = filterOf100To200({7});
    filter.begin = utc(100).addMSecs(999);
    filter.end = utc(200).addMSecs(999);

    EXPECT_EQ(timesFor(filter), (times_by_device{{7, {200, 100}}}));
}

TEST_F(DownlinkRepository, EqualBoundsFindThatSecond) {
    saveAt(7, {99, 100, 101});
    auto filter = downlinksOf({7});
    filter.begin = utc(100);
    filter.end = utc(100);

    EXPECT_EQ(timesFor(filter), (times_by_device{{7, {100}}}));
    EXPECT_EQ(notAckTimesFor(filter), (times_by_device{{7, {100}}}));
}

TEST_F(DownlinkRepository, NullBoundsFindTheEpochOfTheHostsZone) {
    const local_time_zone zone{"UTC0"};
    saveAt(7, {0, 1});
    auto filter = downlinksOf({7});
    filter.begin = QDateTime();
    filter.end = QDateTime();

    EXPECT_EQ(timesFor(filter), (times_by_device{{7, {0}}}));
}

TEST_F(DownlinkRepository, QueriesThatFailAtTheirSecondDeviceThrowAndLogNothing) {
    using damaged = damaged_answers<mongo::DLMessageRepository>;
    model::dl_message message = downlink{.modem = 8};
    message.api_key = damaged::text();
    save(message);
    saveAt(7, {110});
    log.clear();
    damaged answers{database.name()};

    EXPECT_THROW(answers.repository.GetCommands(downlinksOf({7, 8})), bsoncxx::v1::exception);
    EXPECT_THROW(answers.repository.GetNotAckCommands(downlinksOf({7, 8})), bsoncxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownlinkRepository, EachDeviceHasItsNewestFirst) {
    saveAt(7, {110, 130, 120});
    saveAt(8, {125, 105});

    EXPECT_EQ(timesFor(downlinksOf({8, 7})),
              (times_by_device{{7, {130, 120, 110}}, {8, {125, 105}}}));
}

TEST_F(DownlinkRepository, ADeviceWithoutCommandsHasNoKey) {
    saveAt(7, {110});

    EXPECT_EQ(timesFor(downlinksOf({6, 7, 8})), (times_by_device{{7, {110}}}));
}

TEST_F(DownlinkRepository, ADeviceNamedTwiceHasItsCommandsTwice) {
    saveAt(7, {110, 120});

    EXPECT_EQ(timesFor(downlinksOf({7, 7})), (times_by_device{{7, {120, 110, 120, 110}}}));
}

TEST_F(DownlinkRepository, LimitReturnsTheNewestOfEachDevice) {
    saveAt(7, {110, 130, 120});
    saveAt(8, {125, 105});
    auto filter = downlinksOf({7, 8});
    filter.limit = 1;

    EXPECT_EQ(timesFor(filter), (times_by_device{{7, {130}}, {8, {125}}}));
    EXPECT_EQ(notAckTimesFor(filter), (times_by_device{{7, {130}}, {8, {125}}}));
}

TEST_F(DownlinkRepository, LimitZeroReturnsAll) {
    saveAt(7, {110, 130, 120});
    auto filter = downlinksOf({7});
    filter.limit = 0;

    EXPECT_EQ(timesFor(filter), (times_by_device{{7, {130, 120, 110}}}));
}

TEST_F(DownlinkRepository, ManyCommandsComeBackCompleteAndInOrder) {
    std::vector<bsoncxx::v1::document::value> documents;
    std::vector<qint64> newestFirst;
    for (int number = 0; number < 1'000; ++number) {
        const int time = 1'000 + (number * 7) % 1'000;
        documents.push_back(fromJson(R"({"modem_id": 7, "timestamp": {"$numberLong": ")" +
                                     std::to_string(time) + R"("}})"));
        newestFirst.push_back(1'999 - number);
    }
    database.insertMany(collection, documents);

    EXPECT_EQ(timesFor(downlinksOf({7})), (times_by_device{{7, newestFirst}}));
    EXPECT_GT(client.sentNames().size(), 1u) << "the result came in one batch";
}

TEST_F(DownlinkRepository, AnEmptyDeviceListGivesAnEmptyMapWithoutARequestButLogs) {
    const auto commands = repository.GetCommands(downlinksOf({}));
    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages executed in %1ms"));
    log.clear();
    const auto notAcknowledged = repository.GetNotAckCommands(downlinksOf({}));
    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages NOT ACK executed in %1ms"));

    ASSERT_NE(commands, nullptr);
    EXPECT_TRUE(commands->empty());
    ASSERT_NE(notAcknowledged, nullptr);
    EXPECT_TRUE(notAcknowledged->empty());
    EXPECT_THAT(client.sentNames(), IsEmpty());
}

TEST_F(DownlinkRepository, MalformedCommandsComeBackWithDefaults) {
    database.insert(collection, R"({"modem_id": 7.0, "timestamp": 150, "payload": 5})");
    const auto found = repository.GetCommands(downlinksOf({7}));

    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_EQ(found->at(7).front().modem_id, 7);
    EXPECT_EQ(found->at(7).front().timestamp, utc(150));
    EXPECT_EQ(found->at(7).front().payload, QByteArray());
}

TEST_F(DownlinkRepository, CommandsStandUnderTheDeviceOfTheFilterWhateverTheDocumentSays) {
    // The server finds a number inside an array, too.
    database.insert(collection, R"({"modem_id": [7, 8], "timestamp": 150})");
    const auto found = repository.GetCommands(downlinksOf({8}));

    EXPECT_EQ(timesOf(*found), (times_by_device{{8, {150}}}));
    EXPECT_EQ(found->at(8).front().modem_id, 0);
}

TEST_F(DownlinkRepository, NegativeLimitsAreSentAsTheyAre) {
    auto filter = filterOf100To200({7});
    filter.limit = -2;
    repository.GetCommands(filter);

    EXPECT_EQ(client.onlySent().part({"limit", "singleBatch"}),
              canonical(R"({"limit": {"$numberLong": "-2"}})"));
}

TEST_F(DownlinkRepository, NotAcknowledgedAreThePendingAndTheWaiting) {
    save(downlink{.at = 10, .status = dl_status::PENDING});
    save(downlink{.at = 11, .status = dl_status::WAIT_DATA});
    save(downlink{.at = 12, .status = dl_status::EXECUTED});
    save(downlink{.at = 13, .status = dl_status::TIMEOUT});

    EXPECT_EQ(notAckTimesFor(downlinksOf({7})), (times_by_device{{7, {11, 10}}}));
    EXPECT_EQ(timesFor(downlinksOf({7})), (times_by_device{{7, {13, 12, 11, 10}}}));
}

TEST_F(DownlinkRepository, LimitOfNotAcknowledgedCountsNoOthers) {
    save(downlink{.at = 10, .status = dl_status::PENDING});
    save(downlink{.at = 11, .status = dl_status::WAIT_DATA});
    save(downlink{.at = 12, .status = dl_status::EXECUTED});
    auto filter = downlinksOf({7});
    filter.limit = 1;

    EXPECT_EQ(notAckTimesFor(filter), (times_by_device{{7, {11}}}));
}

TEST_F(DownlinkRepository, AcknowledgedCommandsLeaveTheNotAcknowledged) {
    const QString id = save(downlink{.at = 10});
    save(downlink{.at = 11});
    repository.AckCommand(id);

    EXPECT_EQ(notAckTimesFor(downlinksOf({7})), (times_by_device{{7, {11}}}));
}

TEST_F(DownlinkRepository, GetCommandsSendsOneRequestPerDeviceInListOrder) {
    repository.GetCommands(filterOf100To200({8, 7, 8}));

    const auto expected = [](const char* device) {
        return canonical(std::string{R"({"find": "dl_messages", "filter": {
            "modem_id": )"} +
                         device + R"(,
            "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}}},
            "limit": {"$numberLong": "9"}, "sort": {"timestamp": -1}})");
    };
    ASSERT_THAT(client.sentNames(), ElementsAre("find", "find", "find"));
    EXPECT_EQ(client.sent()[0].asked(), expected("8"));
    EXPECT_EQ(client.sent()[1].asked(), expected("7"));
    EXPECT_EQ(client.sent()[2].asked(), expected("8"));
}

TEST_F(DownlinkRepository, GetNotAckCommandsSendsOneRequestPerDeviceInListOrder) {
    repository.GetNotAckCommands(filterOf100To200({8, 7}));

    const auto expected = [](const char* device) {
        return canonical(std::string{R"({"find": "dl_messages", "filter": {
            "modem_id": )"} +
                         device + R"(,
            "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
            "$or": [{"status": 1}, {"status": 0}]},
            "limit": {"$numberLong": "9"}, "sort": {"timestamp": -1}})");
    };
    ASSERT_THAT(client.sentNames(), ElementsAre("find", "find"));
    EXPECT_EQ(client.sent()[0].asked(), expected("8"));
    EXPECT_EQ(client.sent()[1].asked(), expected("7"));
}

TEST_F(DownlinkRepository, QueriesLogTheirDurationOnceForAllDevices) {
    repository.GetCommands(downlinksOf({7, 8, 9}));
    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages executed in %1ms"));
    log.clear();
    repository.GetNotAckCommands(downlinksOf({7, 8, 9}));
    EXPECT_THAT(log.lines(), IsOneLine("Get DL messages NOT ACK executed in %1ms"));
}

} // namespace
