#include "mongo/query.h"

#include "tests/support/extended_json.h"
#include "tests/support/qt_literals.h"

#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

using namespace test_support;
using namespace test_support::literals;

namespace {

QDateTime utcMsecs(qint64 msecs) {
    return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
}

class Query : public testing::Test {
protected:
    std::string built() { return toJson(builder.take()); }

    bson_utils::bson_builder builder;
};

TEST_F(Query, PeriodIsTwoWideNumbersOfSeconds) {
    mongo::appendPeriod(builder, "timestamp", utcMsecs(100'000), utcMsecs(200'000));

    EXPECT_EQ(built(), canonical(R"({"timestamp": {"$gte": {"$numberLong": "100"},
                                                   "$lte": {"$numberLong": "200"}}})"));
}

TEST_F(Query, PeriodDropsWhatIsBelowASecond) {
    mongo::appendPeriod(builder, "t", utcMsecs(100'999), utcMsecs(200'999));

    EXPECT_EQ(built(), canonical(R"({"t": {"$gte": {"$numberLong": "100"},
                                           "$lte": {"$numberLong": "200"}}})"));
}

TEST_F(Query, PeriodTakesTimesOfAnyZoneAsInstants) {
    mongo::appendPeriod(builder, "t", utcMsecs(100'000).toOffsetFromUtc(-3600),
                        utcMsecs(200'000).toLocalTime());

    EXPECT_EQ(built(), canonical(R"({"t": {"$gte": {"$numberLong": "100"},
                                           "$lte": {"$numberLong": "200"}}})"));
}

TEST_F(Query, PeriodReachesBeyond32Bits) {
    mongo::appendPeriod(builder, "t", utcMsecs(-62'135'596'800'000), utcMsecs(253'402'300'799'000));

    EXPECT_EQ(built(), canonical(R"({"t": {"$gte": {"$numberLong": "-62135596800"},
                                           "$lte": {"$numberLong": "253402300799"}}})"));
}

TEST_F(Query, NumbersKeepTheirOrderAndTheirRepetitions) {
    mongo::appendIn(builder, "modem_id", std::list<int>{3, -1, 3, 2'147'483'647});

    EXPECT_EQ(built(), canonical(R"({"modem_id": {"$in": [3, -1, 3, 2147483647]}})"));
}

TEST_F(Query, NoNumbersAreAnEmptyArray) {
    mongo::appendIn(builder, "modem_id", std::list<int>{});

    EXPECT_EQ(built(), canonical(R"({"modem_id": {"$in": []}})"));
}

TEST_F(Query, ArraysNumberTheirElementsPastTen) {
    std::list<int> numbers;
    std::string expected;
    for (int number = 0; number < 101; ++number) {
        numbers.push_back(number);
        expected += (number == 0 ? "" : ", ") + std::to_string(number);
    }
    mongo::appendIn(builder, "modem_id", numbers);
    const auto query = builder.take();

    EXPECT_EQ(toJson(query), canonical(R"({"modem_id": {"$in": [)" + expected + "]}}"));
    const auto array = query["modem_id"].get_document().value["$in"].get_array().value;
    EXPECT_EQ(std::string_view{array[100].key()}, "100");
}

TEST_F(Query, TextsAreUtf8InListOrder) {
    mongo::appendIn(builder, "tag", std::list<QString>{"b"_q, "ä🔌"_q, QString(), "z\0z"_q});

    EXPECT_EQ(built(), canonical(R"({"tag": {"$in": ["b", "ä🔌", "", "z\u0000z"]}})"));
}

TEST_F(Query, ConditionsStandInTheOrderOfTheCalls) {
    mongo::appendIn(builder, "b", std::list<int>{1});
    mongo::appendPeriod(builder, "a", utcMsecs(0), utcMsecs(0));

    EXPECT_EQ(built(), canonical(R"({"b": {"$in": [1]}, "a": {"$gte": {"$numberLong": "0"},
                                                               "$lte": {"$numberLong": "0"}}})"));
}

TEST_F(Query, NewestFirstSortsDownAndOldestFirstUp) {
    EXPECT_EQ(toJson(*mongo::newestFirst("t", 5).sort()), canonical(R"({"t": -1})"));
    EXPECT_EQ(toJson(*mongo::oldestFirst("t", 5).sort()), canonical(R"({"t": 1})"));
}

TEST_F(Query, LimitsAreHandedOnAsTheyAre) {
    for (const int limit : {0, 1, -1, 2'147'483'647}) {
        EXPECT_EQ(*mongo::newestFirst("t", limit).limit(), limit);
        EXPECT_EQ(*mongo::oldestFirst("t", limit).limit(), limit);
    }
}

} // namespace
