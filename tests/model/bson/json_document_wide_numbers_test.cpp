#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test_support::literals;
using namespace test_support::raw_bson;

class JsonTextWideNumber : public testing::TestWithParam<double> {};

TEST_P(JsonTextWideNumber, IsStoredWithItsOwnValue) {
    const QJsonObject json{{"a"_q, GetParam()}};
    const auto stored = bson_utils::toBson(QJsonDocument{json});

    EXPECT_EQ(rawBson(stored), doc(number("a", GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Values, JsonTextWideNumber,
                         testing::Values(9.3e18, -9.3e18, 9223372036854775808.0,
                                         -9223372036854775808.0, 18446744073709551616.0,
                                         -18446744073709551616.0, 20000000000000004096.0,
                                         123456789012345683968.0, 36893488147419103232.0,
                                         18446744073709555712.0, 27670116110564327424.0,
                                         1844674407370955161600.0, 1234567890123456789012.0,
                                         999999999999999916113.0));

TEST(JsonTextWideNumbers, BeyondSixtyFourBitsBecomeDoubles) {
    const auto json = QJsonDocument::fromJson(
        R"({"a": 18446744073709551616, "b": [-9223372036854775809, 1], "c": 1000000000000000000})");
    EXPECT_EQ(rawBson(bson_utils::toBson(json)),
              doc(number("a", 18446744073709551616.0),
                  array("b", doc(number("0", -9223372036854775808.0), int32("1", 1))),
                  int64("c", 1000000000000000000)));
}

TEST(JsonTextWideNumbers, DigitsInsideATextStayText) {
    const QJsonObject json{{"1844674407370955161600"_q, "x\"18446744073709551616\\"_q},
                           {"n"_q, 1844674407370955161600.0}};
    EXPECT_EQ(rawBson(bson_utils::toBson(QJsonDocument{json})),
              doc(string("1844674407370955161600", "x\"18446744073709551616\\"),
                  number("n", 1844674407370955161600.0)));
}

} // namespace
