// The comparison that other tests lean on: it must see every member.

#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <list>

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::HasSubstr;

template <typename Record>
class RecordEquality : public testing::Test {};

using records =
    testing::Types<model::message, model::dl_message, model::hb_message, model::in_message,
                   model::custom_cmd, model::dl_queues, model::dl_queues::queue,
                   model::dl_queues::element, model::dev_value, model::dev_event,
                   model::filter_roll, model::filter_dl, model::filter_eav>;
TYPED_TEST_SUITE(RecordEquality, records);

template <typename Value>
void change(Value& value) {
    if constexpr (std::is_same_v<Value, bool>) {
        value = !value;
    } else if constexpr (std::is_arithmetic_v<Value>) {
        value = static_cast<Value>(value + 1);
    } else if constexpr (std::is_enum_v<Value>) {
        value = static_cast<Value>(static_cast<int>(value) + 1);
    } else if constexpr (std::is_same_v<Value, QString>) {
        value.append("x"_q);
    } else if constexpr (std::is_same_v<Value, QByteArray>) {
        value.append('x');
    } else if constexpr (std::is_same_v<Value, QDateTime>) {
        value = QDateTime::fromMSecsSinceEpoch(1, Qt::UTC);
    } else if constexpr (std::is_same_v<Value, QVariant>) {
        value = 1;
    } else if constexpr (std::is_same_v<Value, QJsonDocument>) {
        value = QJsonDocument{QJsonObject{}};
    } else if constexpr (requires { value.insert("x"_q, {}); }) {
        value.insert("x"_q, {});
    } else {
        value.push_back({});
    }
}

TYPED_TEST(RecordEquality, SeesAChangeOfAnyMember) {
    std::apply(
        [](const auto&... member) {
            const auto expectSeen = [](const auto& one) {
                TypeParam changed{};
                change(changed.*one.pointer);
                EXPECT_FALSE(changed == TypeParam{}) << one.name;
                EXPECT_THAT(differences(changed, TypeParam{}),
                            testing::StartsWith(std::string{one.name} + ": "));
            };
            (expectSeen(member), ...);
        },
        membersOf<TypeParam>);
}

TYPED_TEST(RecordEquality, HoldsForACopy) {
    const TypeParam record{};
    EXPECT_EQ(TypeParam{record}, record);
}

TEST(RecordEquality, ListsOnlyWhatDiffers) {
    model::dev_event changed = sampleEvent();
    changed.event_code = 405;
    changed.message = "cover closed"_q;
    EXPECT_EQ(differences(changed, sampleEvent()),
              "event_code: 405, expected 404\n"
              "message: \"cover closed\", expected \"cover opened\"\n");
}

TEST(RecordEquality, TellsLocalFromUtcUnlessAskedForTheInstant) {
    model::dev_event local = sampleEvent();
    local.timestamp = local.timestamp.toLocalTime();
    EXPECT_NE(local, sampleEvent());
    EXPECT_THAT(differences(local, sampleEvent()), HasSubstr("timestamp: "));
    EXPECT_EQ(differences(local, sampleEvent(), date_times::byInstant), "");
}

TEST(RecordEquality, TellsANullTimeFromTheEpoch) {
    model::dev_event epoch;
    epoch.ttl = QDateTime::fromMSecsSinceEpoch(0);
    EXPECT_NE(differences(epoch, model::dev_event{}, date_times::byInstant), "");
}

TEST(RecordEquality, TellsTheNumberOneFromTheTextOne) {
    model::dev_value number;
    number.value = 1;
    model::dev_value text;
    text.value = "1"_q;
    EXPECT_NE(number, text);
}

TEST(RecordEquality, TellsANullDocumentFromAnEmptyObject) {
    model::dev_value empty;
    empty.extended_data = QJsonDocument{QJsonObject{}};
    EXPECT_NE(model::dev_value{}, empty);
}

TEST(RecordEquality, TakesNotANumberAsEqualToItself) {
    model::hb_message first;
    first.voltage = std::numeric_limits<double>::quiet_NaN();
    const model::hb_message second = first;
    EXPECT_EQ(first, second);
}

TEST(RecordEquality, WorksInLists) {
    const std::list<model::dl_message> commands{sampleCommand(), {}};
    EXPECT_THAT(commands, testing::ElementsAre(sampleCommand(), model::dl_message{}));
}

TEST(RecordEquality, PrintsMembersByName) {
    EXPECT_THAT(testing::PrintToString(sampleCommand()),
                testing::AllOf(HasSubstr("status: 2"), HasSubstr("api_key: \"key-42\""),
                               HasSubstr("payload: 4 bytes de ad be ef")));
}

} // namespace
