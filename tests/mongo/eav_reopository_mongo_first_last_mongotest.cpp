#include "mongo/eav_reopository_mongo.h"

#include "tests/mongo/damaged_answers.h"
#include "tests/mongo/eav_repository_fixture.h"

#include <bsoncxx/v1/exception.hpp>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The newest and the oldest numeric value per device and OBIS code.
class FirstLast : public EavRepositoryTest {
protected:
    static model::filter_eav filterOf(std::list<int> modem_ids, std::list<QString> codes) {
        auto filter = allOf(std::move(modem_ids));
        filter.obis_codes = std::move(codes);
        filter.first_last = true;
        return filter;
    }
};

TEST_F(FirstLast, GivesTheNewestAndThenTheOldest) {
    repository.SaveValues(
        {reading{.at = 20}, reading{.at = 10}, reading{.at = 40}, reading{.at = 30}});

    EXPECT_EQ(valueTimes(filterOf({7}, {"1-0:1.8.0"_q})), (times_by_device{{7, {40, 10}}}));
}

TEST_F(FirstLast, KeepsTheOrderOfTheCodes) {
    repository.SaveValues({reading{.at = 1, .obis = "a"_q}, reading{.at = 2, .obis = "a"_q},
                           reading{.at = 3, .obis = "b"_q}, reading{.at = 4, .obis = "b"_q}});

    EXPECT_EQ(valueTimes(filterOf({7}, {"b"_q, "a"_q})), (times_by_device{{7, {4, 3, 2, 1}}}));
}

TEST_F(FirstLast, KeepsThePeriodAndTheTags) {
    for (const qint64 time : {99, 100, 150, 200, 201}) {
        repository.SaveValues({reading{.at = time}});
    }
    repository.SaveValues({reading{.at = 101, .tag = "x"_q}, reading{.at = 199, .tag = "x"_q}});
    auto filter = filterOf({7}, {"1-0:1.8.0"_q});
    filter.begin = utc(100);
    filter.end = utc(200);

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {200, 100}}}));
    filter.tags = {"x"_q, "y"_q};
    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {199, 101}}}));
}

// Deliberate: always a newest and an oldest entry.
TEST_F(FirstLast, GivesASingleReadingTwice) {
    repository.SaveValues({reading{.at = 5}});

    EXPECT_EQ(valueTimes(filterOf({7}, {"1-0:1.8.0"_q})), (times_by_device{{7, {5, 5}}}));
}

TEST_F(FirstLast, OfADeviceAndACodeNamedTwiceGivesThemAsOften) {
    repository.SaveValues({reading{.at = 5}, reading{.at = 6}});

    EXPECT_EQ(valueTimes(filterOf({7, 7}, {"1-0:1.8.0"_q})), (times_by_device{{7, {6, 5, 6, 5}}}));
    EXPECT_EQ(valueTimes(filterOf({7}, {"1-0:1.8.0"_q, "1-0:1.8.0"_q})),
              (times_by_device{{7, {6, 5, 6, 5}}}));
}

TEST_F(FirstLast, ThrowsAndLogsNothingWhenTheOldestIsDamaged) {
    using damaged = damaged_answers<mongo::EAVRepositoryMongo>;
    repository.SaveValues({reading{.at = 1, .tag = damaged::text()}, reading{.at = 2}});
    log.clear();
    damaged answers{database.name()};

    EXPECT_THROW(answers.repository.GetValues(filterOf({7}, {"1-0:1.8.0"_q})),
                 bsoncxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FirstLast, LeavesTextAndBooleansOut) {
    repository.SaveValues({reading{.at = 1, .value = "on"_q}, reading{.at = 2, .value = 7},
                           reading{.at = 3, .value = true}});

    EXPECT_EQ(valueTimes(filterOf({7}, {"1-0:1.8.0"_q})), (times_by_device{{7, {2, 2}}}));
}

TEST_F(FirstLast, GivesNothingForACodeWithTextOnly) {
    repository.SaveValues({reading{.at = 1, .value = "on"_q}});

    EXPECT_TRUE(repository.GetValues(filterOf({7}, {"1-0:1.8.0"_q}))->empty());
}

TEST_F(FirstLast, GivesNothingWithoutCodes) {
    repository.SaveValues({reading{}});
    client.forget();

    EXPECT_TRUE(repository.GetValues(filterOf({7}, {}))->empty());
    EXPECT_THAT(client.sentNames(), IsEmpty());
}

TEST_F(FirstLast, IgnoresTheLimit) {
    repository.SaveValues({reading{.at = 1}, reading{.at = 2}});
    auto filter = filterOf({7}, {"1-0:1.8.0"_q});
    filter.limit = 1;

    EXPECT_EQ(valueTimes(filter), (times_by_device{{7, {2, 1}}}));
}

TEST_F(FirstLast, KeysByTheDeviceAskedForNotByTheOneReadBack) {
    database.insert(values, R"({"modem_id": 7, "timestamp": {"$numberLong": "5"}, "value": 1,
                                "obis_code": "a", "other": {"$numberDouble": "NaN"}})");

    EXPECT_EQ(valueTimes(filterOf({7}, {"a"_q})), (times_by_device{{7, {0, 0}}}));
}

TEST_F(FirstLast, SendsTwoFindsPerDeviceAndCodeInListOrder) {
    auto filter = filterOf({7, 5}, {"b"_q, "a"_q});
    filter.begin = utc(100);
    filter.end = utc(200);
    repository.GetValues(filter);

    const auto expected = [](const char* device, const char* code, const char* direction) {
        return canonical(std::string{R"({"find": "eav_values", "filter": {
            "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
            "modem_id": )"} +
                         device + R"(, "obis_code": ")" + code +
                         R"(", "value": {"$type": "number"}}, "limit": {"$numberLong": "1"},
            "sort": {"timestamp": )" +
                         direction + "}}");
    };
    std::vector<std::string> sent;
    for (const sent_command& command : client.sent()) {
        sent.push_back(command.asked());
    }
    EXPECT_THAT(sent, ElementsAre(expected("7", "b", "-1"), expected("7", "b", "1"),
                                  expected("7", "a", "-1"), expected("7", "a", "1"),
                                  expected("5", "b", "-1"), expected("5", "b", "1"),
                                  expected("5", "a", "-1"), expected("5", "a", "1")));
}

TEST_F(FirstLast, PutsTheTagsAheadOfTheTypeOfTheValue) {
    auto filter = filterOf({7}, {"a"_q});
    filter.begin = utc(100);
    filter.end = utc(200);
    filter.tags = {"x"_q, "y"_q};
    repository.GetValues(filter);

    EXPECT_EQ(client.sent().front().part({"filter"}), canonical(R"({"filter": {
        "timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
        "modem_id": 7, "obis_code": "a", "tag": {"$in": ["x", "y"]},
        "value": {"$type": "number"}}})"));
}

TEST_F(FirstLast, LogsOneLine) {
    repository.GetValues(filterOf({7, 5}, {"a"_q, "b"_q}));

    EXPECT_THAT(log.lines(), IsOneLine("Get EAV values executed in %1ms"));
}

} // namespace
