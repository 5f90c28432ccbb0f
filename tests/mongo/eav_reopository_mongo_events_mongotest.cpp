#include "mongo/eav_reopository_mongo.h"

#include "tests/mongo/damaged_answers.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SaveEvents : public EavRepositoryTest {};
class GetEvents : public EavRepositoryTest {};
class DeleteEvents : public EavRepositoryTest {};

TEST_F(SaveEvents, StoresEveryMemberInItsFieldInTheFieldsOrder) {
    repository.SaveEvents({happening{}});

    const std::string stored = database.documents(events).front();
    EXPECT_EQ("{ " + stored.substr(stored.find("\"modem_id\"")), canonical(R"({
        "modem_id": 7,
        "timestamp": {"$numberLong": "1700000000"},
        "message_id": "m-5",
        "event_code": 8,
        "message": "PERMANENT_ERROR",
        "parameter": -3,
        "extended_data": {"sabotage": true},
        "ttl": {"$date": {"$numberLong": "4102444800123"}}
    })"));
    EXPECT_EQ(database.count(events, R"({"_id": {"$type": "objectId"}})"), 1);
}

TEST_F(SaveEvents, SendsOneOrderedBulkInsertInListOrder) {
    repository.SaveEvents({happening{.at = 3}, happening{.at = 1}});

    EXPECT_EQ(client.onlySent().part(
                  {"insert", "ordered", "bypassDocumentValidation", "comment", "writeConcern"}),
              canonical(R"({"insert": "eav_events", "ordered": true})"));
    const auto documents = client.onlySent().body["documents"].get_array().value;
    EXPECT_EQ(documents[0]["timestamp"].get_int64().value, 3);
    EXPECT_EQ(documents[1]["timestamp"].get_int64().value, 1);
}

TEST_F(SaveEvents, KeepsTheEventsAheadOfADuplicate) {
    database.run(R"({"createIndexes": "eav_events", "indexes": [
        {"key": {"timestamp": 1}, "name": "unique_time", "unique": true}]})");

    EXPECT_THROW(
        repository.SaveEvents({happening{.at = 1}, happening{.at = 1}, happening{.at = 2}}),
        mongocxx::v1::exception);
    EXPECT_EQ(database.count(events), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveEvents, StoresNoneIfOneHasNoBsonForm) {
    model::dev_event formless = happening{.at = 2};
    formless.extended_data = QJsonDocument::fromJson(R"({"id": {"$oid": "no ObjectId"}})");

    EXPECT_THROW(repository.SaveEvents({happening{.at = 1}, formless, happening{.at = 3}}),
                 bsoncxx::v1::exception);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_EQ(database.count(events), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveEvents, StoresNoneIfOneIsLargerThanTheServerTakes) {
    model::dev_event tooLarge = happening{.at = 2};
    tooLarge.message_id = QString(17'000'000, QLatin1Char('x'));

    EXPECT_THROW(repository.SaveEvents({happening{.at = 1}, tooLarge, happening{.at = 3}}),
                 mongocxx::v1::exception);
    EXPECT_EQ(database.count(events), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveEvents, OfAnEmptyListAsksTheServerNothingAndLogs) {
    repository.SaveEvents({});

    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Save EAV events executed in %1ms"));
}

TEST_F(SaveEvents, LogsItsDuration) {
    repository.SaveEvents({happening{}});

    EXPECT_THAT(log.lines(), IsOneLine("Save EAV events executed in %1ms"));
}

TEST_F(GetEvents, ReadsBackWhatWasStored) {
    repository.SaveEvents({happening{}});
    const auto found = repository.GetEvents(allOf({7}));

    model::dev_event expected = happening{};
    expected.ttl = expected.ttl.toLocalTime();
    ASSERT_EQ(found->size(), 1u);
    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_EQ(differences(found->at(7).front(), expected), "");
}

TEST_F(GetEvents, GroupsByDeviceNewestFirst) {
    repository.SaveEvents({happening{.modem = 1, .at = 10}, happening{.modem = 2, .at = 20},
                           happening{.modem = 1, .at = 30}, happening{.modem = 3, .at = 40}});

    EXPECT_EQ(eventTimes(allOf({2, 1, 9})), (times_by_device{{1, {30, 10}}, {2, {20}}}));
}

TEST_F(GetEvents, IncludesBothBoundsAndDropsTheirSubSecondParts) {
    for (const qint64 time : {99, 100, 200, 201}) {
        repository.SaveEvents({happening{.at = time}});
    }
    auto filter = allOf({7});
    filter.begin = utc(100).addMSecs(999);
    filter.end = utc(200).addMSecs(999);

    EXPECT_EQ(eventTimes(filter), (times_by_device{{7, {200, 100}}}));
}

TEST_F(GetEvents, OfEqualBoundsFindsThatSecond) {
    repository.SaveEvents({happening{.at = 99}, happening{.at = 100}, happening{.at = 101}});
    auto filter = allOf({7});
    filter.begin = utc(100);
    filter.end = utc(100);

    EXPECT_EQ(eventTimes(filter), (times_by_device{{7, {100}}}));
}

TEST_F(GetEvents, OfADeviceNamedTwiceGivesItsEventsOnce) {
    repository.SaveEvents({happening{.at = 1}, happening{.at = 2}});

    EXPECT_EQ(eventTimes(allOf({7, 7})), (times_by_device{{7, {2, 1}}}));
}

TEST_F(GetEvents, ThrowsAndLogsNothingWhenAnEventInTheMiddleIsDamaged) {
    using damaged = damaged_answers<mongo::EAVRepositoryMongo>;
    repository.SaveEvents(
        {happening{.at = 1}, happening{.at = 2, .message = damaged::text()}, happening{.at = 3}});
    log.clear();
    damaged answers{database.name()};

    EXPECT_THROW(answers.repository.GetEvents(allOf({7})), bsoncxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GetEvents, SelectsByTextWithTheTagsOfTheFilter) {
    repository.SaveEvents({happening{.at = 1, .message = "x"_q},
                           happening{.at = 2, .message = "y"_q},
                           happening{.at = 3, .message = "z"_q}});
    auto filter = allOf({7});
    filter.tags = {"x"_q, "z"_q};

    EXPECT_EQ(eventTimes(filter), (times_by_device{{7, {3, 1}}}));
}

TEST_F(GetEvents, IgnoresObisCodesAndTheFirstLastFlag) {
    repository.SaveEvents({happening{.at = 1}, happening{.at = 2}, happening{.at = 3}});
    auto filter = allOf({7});
    filter.obis_codes = {"1-0:1.8.0"_q};
    filter.first_last = true;

    EXPECT_EQ(eventTimes(filter), (times_by_device{{7, {3, 2, 1}}}));
}

TEST_F(GetEvents, CountsTheLimitOverAllDevices) {
    for (int number = 0; number < 12; ++number) {
        repository.SaveEvents({happening{.modem = number % 3, .at = number}});
    }
    auto filter = allOf({0, 1, 2});
    filter.limit = 5;

    EXPECT_EQ(eventTimes(filter), (times_by_device{{0, {9}}, {1, {10, 7}}, {2, {11, 8}}}));
}

TEST_F(GetEvents, TakesALimitOfZeroForNoLimitAndPassesANegativeOneOn) {
    std::list<model::dev_event> many;
    for (int number = 0; number < 300; ++number) {
        many.push_back(happening{.at = number});
    }
    repository.SaveEvents(many);
    auto filter = allOf({7});
    EXPECT_EQ(repository.GetEvents(filter)->at(7).size(), 300u);
    filter.limit = -2;
    EXPECT_EQ(eventTimes(filter), (times_by_device{{7, {299, 298}}}));
}

TEST_F(GetEvents, ReadsATimestampBeyond32BitsAsTheEpoch) {
    repository.SaveEvents({happening{.at = 2'147'483'648}});

    EXPECT_EQ(database.count(events, R"({"timestamp": 2147483648})"), 1);
    EXPECT_EQ(eventTimes(allOf({7})), (times_by_device{{7, {0}}}));
}

TEST_F(GetEvents, GivesDefaultsForWhatADocumentLacks) {
    database.insert(events, R"({"modem_id": 7, "timestamp": {"$numberLong": "5"}})");

    model::dev_event expected;
    expected.modem_id = 7;
    expected.timestamp = utc(5);
    expected.ttl = QDateTime::fromMSecsSinceEpoch(0);
    expected.extended_data = QJsonDocument{QJsonObject{}};
    EXPECT_EQ(differences(repository.GetEvents(allOf({7}))->at(7).front(), expected), "");
}

TEST_F(GetEvents, SendsPeriodDevicesAndTextsInThisOrder) {
    auto filter = allOf({7, 5});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.tags = {"b"_q, "a"_q};
    filter.obis_codes = {"ignored"_q};
    filter.limit = 9;
    repository.GetEvents(filter);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "find": "eav_events",
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7, 5]},
                   "message": {"$in": ["b", "a"]}},
        "limit": {"$numberLong": "9"},
        "sort": {"timestamp": -1}
    })"));
}

TEST_F(GetEvents, OfNoDevicesAsksTheServerNothingAndLogs) {
    const auto found = repository.GetEvents(allOf({}));

    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->empty());
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Get EAV events executed in %1ms"));
}

TEST_F(GetEvents, LogsItsDuration) {
    repository.GetEvents(allOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Get EAV events executed in %1ms"));
}

// Deliberate: the texts are not part of the filter.
TEST_F(DeleteEvents, DeletesEventsWithAnyText) {
    repository.SaveEvents({happening{.message = "x"_q}, happening{.message = "y"_q}});
    auto filter = allOf({7});
    filter.tags = {"x"_q};
    repository.DeleteEvents(filter);

    EXPECT_EQ(database.count(events), 0);
}

TEST_F(DeleteEvents, DeletesByDeviceAndPeriodBoundsIncluded) {
    for (const int modem : {1, 2}) {
        for (const qint64 time : {99, 100, 200, 201}) {
            repository.SaveEvents({happening{.modem = modem, .at = time}});
        }
    }
    auto filter = allOf({1});
    filter.begin = utc(100);
    filter.end = utc(200);
    repository.DeleteEvents(filter);

    EXPECT_EQ(eventTimes(allOf({1, 2})),
              (times_by_device{{1, {201, 99}}, {2, {201, 200, 100, 99}}}));
}

TEST_F(DeleteEvents, SendsOneRequest) {
    auto filter = allOf({7, 5});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.tags = {"x"_q};
    repository.DeleteEvents(filter);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "delete": "eav_events", "ordered": true,
        "deletes": [{"q": {
            "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
            "modem_id": {"$in": [7, 5]}}, "limit": 0}]
    })"));
}

TEST_F(DeleteEvents, OfNoDevicesDeletesNothingAndLogs) {
    repository.SaveEvents({happening{}});
    client.forget();
    log.clear();
    repository.DeleteEvents(allOf({}));

    EXPECT_EQ(database.count(events), 1);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Delete EAV events executed in %1ms"));
}

TEST_F(DeleteEvents, LogsItsDuration) {
    repository.DeleteEvents(allOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Delete EAV events executed in %1ms"));
}

TEST_F(UnreachableEavRepository, EventOperationsThrowTheDriversExceptionAndLogNothing) {
    EXPECT_THROW(repository.SaveEvents({happening{}}), mongocxx::v1::exception);
    EXPECT_THROW(repository.GetEvents(allOf({7})), mongocxx::v1::exception);
    EXPECT_THROW(repository.DeleteEvents(allOf({7})), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableEavRepository, OperationsThatNeedNoServerSucceedAndLog) {
    repository.SaveValues({});
    repository.SaveEvents({});
    repository.GetValues(allOf({}));
    repository.GetEvents(allOf({}));
    repository.DeleteValues(allOf({}));
    repository.DeleteEvents(allOf({}));

    EXPECT_EQ(log.lines().size(), 6u);
}

} // namespace
