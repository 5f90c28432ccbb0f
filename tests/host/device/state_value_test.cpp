#include "host/device/driver_state.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonObject>
#include <gtest/gtest.h>

namespace {

using host::stateValue;
using namespace test_support::literals;

TEST(StateValue, IsANumber) {
    EXPECT_EQ(stateValue("900"_q), QJsonValue(900));
    EXPECT_EQ(stateValue(" -2.5e3 "_q), QJsonValue(-2500.0));
}

TEST(StateValue, IsATextWithOrWithoutQuotes) {
    EXPECT_EQ(stateValue("slow"_q), QJsonValue("slow"_q));
    EXPECT_EQ(stateValue("two words, no more"_q), QJsonValue("two words, no more"_q));
    EXPECT_EQ(stateValue(R"("15")"_q), QJsonValue("15"_q));
    EXPECT_EQ(stateValue("1,2"_q), QJsonValue("1,2"_q));
    EXPECT_EQ(stateValue(""_q), QJsonValue(""_q));
}

TEST(StateValue, IsAnObject) {
    EXPECT_EQ(stateValue(R"({"power": 14})"_q), QJsonValue(QJsonObject{{"power"_q, 14}}));
}

TEST(StateValue, IsNothingThatAStateCannotHold) {
    for (const auto& typed : {"true"_q, "null"_q, "[1]"_q, "{"_q, "\"open"_q, "[1"_q}) {
        EXPECT_EQ(stateValue(typed), std::nullopt) << typed.toStdString();
    }
}

} // namespace
