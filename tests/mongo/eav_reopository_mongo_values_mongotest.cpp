#include "mongo/eav_reopository_mongo.h"

#include "tests/mongo/damaged_answers.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/support/record_equality.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SaveValues : public EavRepositoryTest {};
class GetValues : public EavRepositoryTest {};
class DeleteValues : public EavRepositoryTest {};

/// The stored documents without their ids, which the driver makes.
std::vector<std::string> withoutIds(mongo_database& database, std::string_view collection) {
    std::vector<std::string> bodies;
    for (const std::string& document : database.documents(collection)) {
        bodies.push_back("{ " + document.substr(document.find("\"modem_id\"")));
    }
    return bodies;
}

TEST_F(SaveValues, StoresEveryMemberInItsFieldInTheFieldsOrder) {
    repository.SaveValues({reading{}});

    EXPECT_THAT(withoutIds(database, values), ElementsAre(canonical(R"({
        "modem_id": 7,
        "message_id": "m-5",
        "timestamp": {"$numberLong": "1700000000"},
        "tag": "energy",
        "obis_code": "1-0:1.8.0",
        "val_type": {"$numberLong": "6"},
        "extended_data": {"unit": "kWh"},
        "ttl": {"$date": {"$numberLong": "4102444800123"}},
        "value": 2.5
    })")));
}

TEST_F(SaveValues, GivesEveryDocumentAnObjectId) {
    repository.SaveValues({reading{}, reading{}});

    EXPECT_EQ(database.count(values, R"({"_id": {"$type": "objectId"}})"), 2);
}

TEST_F(SaveValues, StoresEachKindOfValueWithItsTypeNumber) {
    repository.SaveValues({reading{.obis = "a"_q, .value = true},
                           reading{.obis = "b"_q, .value = 5},
                           reading{.obis = "c"_q, .value = "text"_q},
                           reading{.obis = "d"_q, .value = qlonglong{1} << 40},
                           reading{.obis = "e"_q, .value = QByteArray("x")},
                           reading{.obis = "f"_q, .value = QVariant{}}});

    const auto stored = [&](const char* obis) {
        const auto document =
            database.document(values, std::string{R"({"obis_code": ")"} + obis + "\"}");
        const std::string text = toJson(document);
        return std::to_string(document["val_type"].get_int64().value) + ' ' +
               text.substr(text.find("\"value\""));
    };
    EXPECT_EQ(stored("a"), R"(1 "value" : true })");
    EXPECT_EQ(stored("b"), R"(2 "value" : { "$numberInt" : "5" } })");
    EXPECT_EQ(stored("c"), R"(10 "value" : "text" })");
    EXPECT_EQ(stored("d"), R"(4 "value" : { "$numberInt" : "0" } })");
    EXPECT_EQ(stored("e"), R"(12 "value" : "unknown type" })");
    EXPECT_EQ(stored("f"), R"(0 "value" : "invalid type" })");
}

TEST_F(SaveValues, SendsOneOrderedBulkInsertInListOrder) {
    repository.SaveValues({reading{.at = 3}, reading{.at = 1}, reading{.at = 2}});

    EXPECT_EQ(client.onlySent().part(
                  {"insert", "ordered", "bypassDocumentValidation", "comment", "writeConcern"}),
              canonical(R"({"insert": "eav_values", "ordered": true})"));
    const auto documents = client.onlySent().body["documents"].get_array().value;
    EXPECT_EQ(documents[0]["timestamp"].get_int64().value, 3);
    EXPECT_EQ(documents[1]["timestamp"].get_int64().value, 1);
    EXPECT_EQ(documents[2]["timestamp"].get_int64().value, 2);
}

TEST_F(SaveValues, StoresTenThousandValues) {
    std::list<model::dev_value> many;
    for (int number = 0; number < 10'000; ++number) {
        many.push_back(reading{.modem = number % 7, .at = number, .value = number});
    }
    repository.SaveValues(many);

    EXPECT_EQ(database.count(values), 10'000);
    EXPECT_EQ(database.count(values, R"({"timestamp": 9999, "value": 9999, "modem_id": 3})"), 1);
}

// More than some servers take at once unless they are told to.
TEST_F(SaveValues, StoresSixtyThousandValuesInOneRequest) {
    std::list<model::dev_value> many;
    for (int number = 0; number < 60'000; ++number) {
        many.push_back(reading{.modem = number % 7, .at = number, .value = number});
    }
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    repository.SaveValues(many);
    const qint64 taken = QDateTime::currentMSecsSinceEpoch() - before;

    EXPECT_THAT(client.sentNames(), ElementsAre("insert"));
    EXPECT_EQ(database.count(values), 60'000);
    EXPECT_EQ(database.count(values, R"({"timestamp": 59999, "value": 59999})"), 1);
    // The conversions and the request are both part of the duration.
    ASSERT_THAT(log.lines(), IsOneLine("Save EAV values executed in %1ms"));
    EXPECT_GE(durationIn(log.lines().front().text, "Save EAV values executed in %1ms"), taken / 2);
}

TEST_F(SaveValues, StoresNoneIfOneIsLargerThanTheServerTakes) {
    model::dev_value tooLarge = reading{.at = 2};
    tooLarge.message_id = QString(17'000'000, QLatin1Char('x'));

    EXPECT_THROW(repository.SaveValues({reading{.at = 1}, tooLarge, reading{.at = 3}}),
                 mongocxx::v1::exception);
    EXPECT_EQ(database.count(values), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

// What is more than the server takes at once (48 MB) goes in batches, and is kept batch by batch.
TEST_F(SaveValues, KeepsTheBatchesAheadOfOneThatCannotBeSent) {
    std::list<model::dev_value> many;
    for (int number = 1; number <= 5; ++number) {
        many.push_back(reading{.at = number});
        many.back().message_id = QString(number == 5 ? 17'000'000 : 13'000'000, QLatin1Char('x'));
    }

    EXPECT_THROW(repository.SaveValues(many), mongocxx::v1::exception);
    EXPECT_EQ(database.count(values, R"({"timestamp": {"$lte": 3}})"), 3);
    EXPECT_EQ(database.count(values), 3);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveValues, StoresNoneIfOneHasNoBsonForm) {
    model::dev_value formless = reading{.at = 2};
    formless.extended_data = QJsonDocument::fromJson(R"({"id": {"$oid": "no ObjectId"}})");

    EXPECT_THROW(repository.SaveValues({reading{.at = 1}, formless, reading{.at = 3}}),
                 bsoncxx::v1::exception);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_EQ(database.count(values), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveValues, KeepsTheValuesAheadOfADuplicate) {
    database.run(R"({"createIndexes": "eav_values", "indexes": [
        {"key": {"timestamp": 1}, "name": "unique_time", "unique": true}]})");

    EXPECT_THROW(
        repository.SaveValues({reading{.at = 1}, reading{.at = 1, .tag = "b"_q}, reading{.at = 2}}),
        mongocxx::v1::exception);
    EXPECT_EQ(database.count(values), 1);
    EXPECT_EQ(database.count(values, R"({"timestamp": 1, "tag": "energy"})"), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SaveValues, OfAnEmptyListAsksTheServerNothingAndLogs) {
    repository.SaveValues({});

    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Save EAV values executed in %1ms"));
}

TEST_F(SaveValues, LogsItsDuration) {
    repository.SaveValues({reading{}});

    EXPECT_THAT(log.lines(), IsOneLine("Save EAV values executed in %1ms"));
}

TEST_F(GetValues, ReadsBackWhatWasStored) {
    repository.SaveValues({reading{}});
    const auto found = repository.GetValues(allOf({7}));

    model::dev_value expected = reading{};
    expected.ttl = expected.ttl.toLocalTime();
    ASSERT_EQ(found->size(), 1u);
    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_EQ(differences(found->at(7).front(), expected), "");
}

TEST_F(GetValues, ReadsTimesAsUtcAndExpiryAsLocalTime) {
    repository.SaveValues({reading{.at = 1234}});
    const auto found = repository.GetValues(allOf({7}))->at(7).front();

    EXPECT_EQ(found.timestamp.timeSpec(), Qt::UTC);
    EXPECT_EQ(found.timestamp.toSecsSinceEpoch(), 1234);
    EXPECT_EQ(found.ttl.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(found.ttl.toMSecsSinceEpoch(), 4'102'444'800'123);
}

TEST_F(GetValues, GroupsByDeviceNewestFirst) {
    repository.SaveValues({reading{.modem = 1, .at = 10}, reading{.modem = 2, .at = 20},
                           reading{.modem = 1, .at = 30}, reading{.modem = 3, .at = 40}});

    EXPECT_EQ(valueTimes(allOf({2, 1, 9})), (times_by_device{{1, {30, 10}}, {2, {20}}}));
}

TEST_F(GetValues, IncludesBothBoundsAndDropsTheirSubSecondParts) {
    for (const qint64 time : {99, 100, 200, 201}) {
        repository.SaveValues({reading{.at = time}});
    }
    auto filter = allOf({7});
    filter.begin = utc(100).addMSecs(999);
    filter.end = utc(200).addMSecs(999);

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {200, 100}}}));
}

TEST_F(GetValues, OfEqualBoundsFindsThatSecond) {
    repository.SaveValues({reading{.at = 99}, reading{.at = 100}, reading{.at = 101}});
    auto filter = allOf({7});
    filter.begin = utc(100);
    filter.end = utc(100);

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {100}}}));
}

TEST_F(GetValues, OfNullBoundsFindsTheEpochOfTheHostsZone) {
    const local_time_zone zone{"UTC0"};
    repository.SaveValues({reading{.at = 0}, reading{.at = 1}});
    auto filter = allOf({7});
    filter.begin = QDateTime();
    filter.end = QDateTime();

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {0}}}));
}

TEST_F(GetValues, OfADeviceNamedTwiceGivesItsValuesOnce) {
    repository.SaveValues({reading{.at = 1}, reading{.at = 2}});

    EXPECT_EQ(valueTimes(allOf({7, 7})), (times_by_device{{7, {2, 1}}}));
}

TEST_F(GetValues, ThrowsAndLogsNothingWhenAValueInTheMiddleIsDamaged) {
    using damaged = damaged_answers<mongo::EAVRepositoryMongo>;
    repository.SaveValues(
        {reading{.at = 1}, reading{.at = 2, .value = damaged::text()}, reading{.at = 3}});
    log.clear();
    damaged answers{database.name()};

    EXPECT_THROW(answers.repository.GetValues(allOf({7})), bsoncxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GetValues, SelectsByObisCodeAndTag) {
    repository.SaveValues({reading{.at = 1, .obis = "a"_q, .tag = "x"_q},
                           reading{.at = 2, .obis = "b"_q, .tag = "x"_q},
                           reading{.at = 3, .obis = "a"_q, .tag = "y"_q}});
    auto filter = allOf({7});
    filter.obis_codes = {"a"_q};
    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {3, 1}}}));
    filter.tags = {"x"_q, "z"_q};
    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {1}}}));
}

TEST_F(GetValues, CountsTheLimitOverAllDevices) {
    for (int number = 0; number < 30; ++number) {
        repository.SaveValues({reading{.modem = number % 3, .at = number}});
    }
    auto filter = allOf({0, 1, 2});
    filter.limit = 10;

    EXPECT_EQ(valueTimes(filter),
              (times_by_device{{0, {27, 24, 21}}, {1, {28, 25, 22}}, {2, {29, 26, 23, 20}}}));
}

TEST_F(GetValues, TakesALimitOfZeroForNoLimit) {
    std::list<model::dev_value> many;
    for (int number = 0; number < 500; ++number) {
        many.push_back(reading{.at = number});
    }
    repository.SaveValues(many);

    EXPECT_EQ(repository.GetValues(allOf({7}))->at(7).size(), 500u);
}

TEST_F(GetValues, PassesANegativeLimitOn) {
    repository.SaveValues({reading{.at = 1}, reading{.at = 2}, reading{.at = 3}});
    auto filter = allOf({7});
    filter.limit = -2;

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {3, 2}}}));
}

TEST_F(GetValues, IncludesReadingsThatAreText) {
    repository.SaveValues({reading{.value = "on"_q}});

    EXPECT_EQ(repository.GetValues(allOf({7}))->at(7).front().value, QVariant("on"_q));
}

TEST_F(GetValues, MakesADoubleOfEveryNumber) {
    repository.SaveValues({reading{.value = 5}});
    const QVariant value = repository.GetValues(allOf({7}))->at(7).front().value;

    EXPECT_EQ(value.userType(), QMetaType::Double);
    EXPECT_EQ(value.toDouble(), 5.0);
}

TEST_F(GetValues, KeysADocumentWithoutADeviceOfItsOwnUnderTheOneItReads) {
    database.insert(values, R"({"modem_id": 7, "timestamp": {"$numberLong": "5"},
                                "value": {"$numberDouble": "NaN"}})");

    // Its text does not parse, so it reads as a record of defaults, under device 0.
    EXPECT_EQ(valueTimes(allOf({7})), (times_by_device{{0, {0}}}));
}

TEST_F(GetValues, ReadsATimestampBeyond32BitsAsTheEpoch) {
    database.insert(values, R"({"modem_id": 7, "timestamp": {"$numberLong": "2147483648"}})");

    EXPECT_EQ(valueTimes(allOf({7})), (times_by_device{{7, {0}}}));
}

TEST_F(GetValues, SendsPeriodDevicesCodesAndTagsInThisOrder) {
    auto filter = allOf({7, 5});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.obis_codes = {"b"_q, "a"_q};
    filter.tags = {"x"_q};
    filter.limit = 9;
    repository.GetValues(filter);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "find": "eav_values",
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7, 5]},
                   "obis_code": {"$in": ["b", "a"]},
                   "tag": {"$in": ["x"]}},
        "limit": {"$numberLong": "9"},
        "sort": {"timestamp": -1}
    })"));
}

TEST_F(GetValues, LeavesEmptyListsOutOfTheQuery) {
    auto filter = allOf({7});
    filter.begin = utc(100);
    filter.end = utc(200);
    repository.GetValues(filter);

    EXPECT_EQ(client.onlySent().part({"filter"}), canonical(R"({
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7]}}})"));
}

TEST_F(GetValues, OfNoDevicesAsksTheServerNothingAndLogs) {
    const auto found = repository.GetValues(allOf({}));

    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->empty());
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Get EAV values executed in %1ms"));
}

TEST_F(GetValues, LogsItsDuration) {
    repository.GetValues(allOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Get EAV values executed in %1ms"));
}

TEST_F(DeleteValues, DeletesByDevicePeriodAndTag) {
    repository.SaveValues({reading{.modem = 1, .at = 100}, reading{.modem = 2, .at = 100},
                           reading{.modem = 1, .at = 201},
                           reading{.modem = 1, .at = 100, .tag = "other"_q}});
    auto filter = allOf({1});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.tags = {"energy"_q};
    repository.DeleteValues(filter);

    EXPECT_EQ(database.count(values), 3);
    EXPECT_EQ(database.count(values, R"({"modem_id": 1, "timestamp": 100, "tag": "energy"})"), 0);
}

// Deliberate: the OBIS codes are not part of the filter.
TEST_F(DeleteValues, DeletesOtherObisCodesToo) {
    repository.SaveValues({reading{.obis = "a"_q}, reading{.obis = "b"_q}});
    auto filter = allOf({7});
    filter.obis_codes = {"a"_q};
    repository.DeleteValues(filter);

    EXPECT_EQ(database.count(values), 0);
}

TEST_F(DeleteValues, IgnoresTheLimitAndTheFirstLastFlag) {
    repository.SaveValues({reading{.at = 1}, reading{.at = 2}, reading{.at = 3}});
    auto filter = allOf({7});
    filter.limit = 1;
    filter.first_last = true;
    repository.DeleteValues(filter);

    EXPECT_EQ(database.count(values), 0);
}

TEST_F(DeleteValues, SendsOneRequest) {
    auto filter = allOf({7, 5});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.tags = {"x"_q};
    filter.obis_codes = {"a"_q};
    repository.DeleteValues(filter);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "delete": "eav_values", "ordered": true,
        "deletes": [{"q": {
            "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
            "modem_id": {"$in": [7, 5]}, "tag": {"$in": ["x"]}}, "limit": 0}]
    })"));
}

TEST_F(DeleteValues, OfNoDevicesDeletesNothingAndLogs) {
    repository.SaveValues({reading{}});
    client.forget();
    log.clear();
    repository.DeleteValues(allOf({}));

    EXPECT_EQ(database.count(values), 1);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Delete EAV values executed in %1ms"));
}

TEST_F(DeleteValues, LogsItsDuration) {
    repository.DeleteValues(allOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Delete EAV values executed in %1ms"));
}

TEST_F(UnreachableEavRepository, ValueOperationsThrowTheDriversExceptionAndLogNothing) {
    EXPECT_THROW(repository.SaveValues({reading{}}), mongocxx::v1::exception);
    EXPECT_THROW(repository.GetValues(allOf({7})), mongocxx::v1::exception);
    EXPECT_THROW(repository.DeleteValues(allOf({7})), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

} // namespace
