#include "tests/redis/driver_state_fixture.h"

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

// Values in the working copy, which are read and written without Redis.
namespace {

using namespace test_support::literals;
using testing::IsEmpty;

using value_type = std::variant<int, double, QByteArray>;

class DriverStateValues : public DriverStateTest {
protected:
    value_type setAndGet(const value_type& value) {
        states.SetValue(7, "v"_q, value);
        return states.GetValue(7, "v"_q);
    }

    value_type pullAndGet(const QByteArray& json) {
        pullText(7, "{\"v\":" + json + "}");
        return states.GetValue(7, "v"_q);
    }
};

TEST_F(DriverStateValues, OfADeviceNeverPulledIsTheIntZero) {
    EXPECT_EQ(states.GetValue(7, "v"_q), value_type{0});
    EXPECT_EQ(states.GetAll(7), QJsonObject{});
}

TEST_F(DriverStateValues, OfAnUnknownNameIsTheIntZeroAndAddsNoMember) {
    setA(7, 1.5);

    EXPECT_EQ(states.GetValue(7, "v"_q), value_type{0});
    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}}));
}

class DriverStateInts : public DriverStateValues, public testing::WithParamInterface<int> {};

// Deliberate: a number is a double when read, also one that was set as an int.
TEST_P(DriverStateInts, ComeBackAsDoubles) {
    EXPECT_EQ(setAndGet(GetParam()), value_type{static_cast<double>(GetParam())});
}

TEST_P(DriverStateInts, ComeBackAsDoublesFromRedisToo) {
    states.SetValue(7, "v"_q, GetParam());
    states.Push(7, false);
    states.Pull(7);

    EXPECT_EQ(states.GetValue(7, "v"_q), value_type{static_cast<double>(GetParam())});
    EXPECT_EQ(inRedis("drv:7"), "{\"v\":" + QByteArray::number(GetParam()) + "}");
}

INSTANTIATE_TEST_SUITE_P(Number, DriverStateInts,
                         testing::Values(5, 0, -1, std::numeric_limits<int>::max(),
                                         std::numeric_limits<int>::min()));

class DriverStateDoubles : public DriverStateValues, public testing::WithParamInterface<double> {};

TEST_P(DriverStateDoubles, ComeBackAsTheyAre) {
    EXPECT_EQ(setAndGet(GetParam()), value_type{GetParam()});
}

TEST_P(DriverStateDoubles, ComeBackAsTheyAreFromRedisToo) {
    states.SetValue(7, "v"_q, GetParam());
    states.Push(7, true);
    states.Pull(7);

    EXPECT_EQ(states.GetValue(7, "v"_q), value_type{GetParam()});
}

INSTANTIATE_TEST_SUITE_P(Number, DriverStateDoubles,
                         testing::Values(2.5, 3.0, -0.1, 1e300, 4294967296.0, 9007199254740993.0,
                                         std::numeric_limits<double>::denorm_min()));

struct bytes_case {
    const char* name = nullptr;
    QByteArray set;
    value_type got;

    friend void PrintTo(const bytes_case& bytes, std::ostream* out) { *out << bytes.name; }
};

class DriverStateBytes : public DriverStateValues,
                         public testing::WithParamInterface<bytes_case> {};

// Deliberate: text that reads as a number comes back as that number.
TEST_P(DriverStateBytes, ComeBackAsWhatTheyReadAs) {
    EXPECT_EQ(setAndGet(GetParam().set), GetParam().got);
}

INSTANTIATE_TEST_SUITE_P(
    Text, DriverStateBytes,
    testing::Values(
        bytes_case{"whole_number", "42", 42}, bytes_case{"negative_number", "-7", -7},
        bytes_case{"leading_zero", "042", 42}, bytes_case{"plus", "+7", 7},
        bytes_case{"spaces_around", " 42 ", 42}, bytes_case{"fraction", "4.5", 4.5},
        bytes_case{"whole_number_with_a_point", "4.0", 4.0}, bytes_case{"exponent", "1e3", 1000.0},
        bytes_case{"infinity", "inf", std::numeric_limits<double>::infinity()},
        // The low 32 bits of a number within 64, as QVariant::toInt has it.
        bytes_case{"just_beyond_int", "2147483648", std::numeric_limits<int>::min()},
        bytes_case{"beyond_32_bits", "4294967301", 5},
        bytes_case{"beyond_64_bits", "18446744073709551616", 18446744073709551616.0},
        bytes_case{"letters", "abc", "abc"_qba}, bytes_case{"number_and_letters", "42x", "42x"_qba},
        bytes_case{"hexadecimal", "0x10", "0x10"_qba},
        bytes_case{"decimal_comma", "4,5", "4,5"_qba}, bytes_case{"word_true", "true", "true"_qba},
        bytes_case{"empty", "", ""_qba}, bytes_case{"only_a_space", " ", " "_qba},
        bytes_case{"utf8", "\xd0\x96\xf0\x9f\x94\x8c", "\xd0\x96\xf0\x9f\x94\x8c"_qba},
        bytes_case{"malformed_utf8", "a\xff", "a\xef\xbf\xbd"_qba},
        bytes_case{"until_the_first_zero", "ab\0cd"_qba, "ab"_qba},
        bytes_case{"number_until_the_first_zero", "42\0x"_qba, 42},
        bytes_case{"zero_first", "\0ab"_qba, ""_qba}),
    [](const auto& info) { return std::string{info.param.name}; });

TEST_F(DriverStateValues, BytesAreKeptAsText) {
    states.SetValue(7, "v"_q, "42"_qba);

    EXPECT_TRUE(states.GetAll(7).value("v"_q).isString());
}

TEST_F(DriverStateValues, BytesReadAsAnIntAreTheIntAlternative) {
    EXPECT_EQ(setAndGet("42"_qba).index(), 0U);
    EXPECT_EQ(setAndGet("4.5"_qba).index(), 1U);
    EXPECT_EQ(setAndGet("abc"_qba).index(), 2U);
}

TEST_F(DriverStateValues, BooleanFromRedisIsAnInt) {
    EXPECT_EQ(pullAndGet("true"), value_type{1});
    EXPECT_EQ(pullAndGet("false"), value_type{0});
}

TEST_F(DriverStateValues, NullObjectAndArrayFromRedisAreEmptyBytes) {
    EXPECT_EQ(pullAndGet("null"), value_type{""_qba});
    EXPECT_EQ(pullAndGet("{\"x\":1}"), value_type{""_qba});
    EXPECT_EQ(pullAndGet("[1]"), value_type{""_qba});
}

TEST_F(DriverStateValues, NotANumberIsNullInRedis) {
    EXPECT_TRUE(std::isnan(std::get<double>(setAndGet(std::nan("")))));
    states.Push(7, false);

    EXPECT_EQ(inRedis("drv:7"), "{\"v\":null}");
}

TEST_F(DriverStateValues, SetReplacesTheValueAndLeavesTheOthers) {
    setA(7, 1.5);
    setAndGet(2);
    setAndGet("x"_qba);

    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}, {"v"_q, "x"_q}}));
}

TEST_F(DriverStateValues, OfTwoDevicesAreApart) {
    setA(7, 1.5);
    setA(-7, 2.5);

    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}}));
    EXPECT_EQ(states.GetAll(-7), (QJsonObject{{"a"_q, 2.5}}));
}

TEST_F(DriverStateValues, DoNotDependOnThePrefix) {
    setA(7, 1.5);
    states.SetPrefix("other"_q);

    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}}));
}

TEST_F(DriverStateValues, NamesMayBeAnyText) {
    for (const QString& name : {""_q, "\u0416\U0001F50C"_q, "a.b$c:\0\""_q}) {
        states.SetValue(7, name, 1.5);

        EXPECT_EQ(states.GetValue(7, name), value_type{1.5});
    }
    const QJsonObject all = states.GetAll(7);
    states.Push(7, false);
    states.Pull(7);
    EXPECT_EQ(states.GetAll(7), all);
}

TEST_F(DriverStateValues, ReadingAndWritingSendsNothingToRedis) {
    setA(7, 1.5);
    states.GetValue(7, "a"_q);
    states.SetValueAsVariant(7, "b"_q, QJsonObject{});
    states.GetValueAsVariant(7, "b"_q);
    states.GetAll(7);
    states.SetPrefix("other"_q);

    EXPECT_THAT(proxy.sent(), IsEmpty());
    EXPECT_EQ(server.run({"DBSIZE"}), QVariant(0));
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverStateValues, GetAllIsACopy) {
    setA(7, 1.5);
    QJsonObject copy = states.GetAll(7);
    copy.insert("b"_q, 2);
    setA(7, 3.5);

    EXPECT_EQ(copy, (QJsonObject{{"a"_q, 1.5}, {"b"_q, 2}}));
    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 3.5}}));
}

// Its conversion fails, which leaves the variant that it was meant for without a value.
struct failing_bytes {
    operator QByteArray() const { throw std::runtime_error("no bytes"); }
};

TEST_F(DriverStateValues, VariantWithoutAValueIsRefusedAndChangesNothing) {
    setA(7, 1.5);
    value_type valueless;
    EXPECT_THROW(valueless.emplace<QByteArray>(failing_bytes{}), std::runtime_error);
    ASSERT_TRUE(valueless.valueless_by_exception());

    std::optional<std::string> text;
    try {
        states.SetValue(7, "a"_q, valueless);
    } catch (const std::bad_variant_access& refusal) {
        text = refusal.what();
    }

    EXPECT_EQ(text, "Unexpected index");
    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}}));
}

class DriverStateVariants : public DriverStateValues {
protected:
    QJsonValue set(const QVariant& value) {
        states.SetValueAsVariant(7, "v"_q, value);
        return states.GetAll(7).value("v"_q);
    }

    QVariant pull(const QByteArray& json) {
        pullText(7, "{\"v\":" + json + "}");
        return states.GetValueAsVariant(7, "v"_q);
    }
};

TEST_F(DriverStateVariants, OfAJsonObjectIsThatObject) {
    const QJsonObject object{{"n"_q, 5}, {"o"_q, QJsonObject{{"p"_q, "x"_q}}}};

    EXPECT_EQ(set(object), QJsonValue{object});
}

TEST_F(DriverStateVariants, OfAMapIsTheObjectOfItsMembers) {
    EXPECT_EQ(set(QVariantMap{{"n"_q, 5}, {"t"_q, "x"_q}}),
              (QJsonValue{QJsonObject{{"n"_q, 5}, {"t"_q, "x"_q}}}));
}

TEST_F(DriverStateVariants, OfAnyOtherKindIsAnEmptyObject) {
    for (const QVariant& value : {QVariant(), QVariant(5), QVariant(2.5), QVariant(true),
                                  QVariant("text"_q), QVariant(QVariantList{1})}) {
        EXPECT_EQ(set(value), QJsonValue{QJsonObject{}}) << testing::PrintToString(value);
    }
}

TEST_F(DriverStateVariants, ReplacesWhatThereWas) {
    states.SetValue(7, "v"_q, 5);

    EXPECT_EQ(set(QJsonObject{{"n"_q, 1}}), (QJsonValue{QJsonObject{{"n"_q, 1}}}));
}

TEST_F(DriverStateVariants, AreWrittenToRedisAsObjects) {
    set(QJsonObject{{"n"_q, 5}});
    states.Push(7, false);

    EXPECT_EQ(inRedis("drv:7"), "{\"v\":{\"n\":5}}");
}

TEST_F(DriverStateVariants, OfAnUnknownNameIsInvalid) {
    setA(7, 1.5);

    EXPECT_FALSE(states.GetValueAsVariant(7, "v"_q).isValid());
    EXPECT_FALSE(states.GetValueAsVariant(8, "v"_q).isValid());
    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1.5}}));
}

TEST_F(DriverStateVariants, OfANumberIsADoubleWholeOrNot) {
    EXPECT_EQ(pull("5").type(), QVariant::Double);
    EXPECT_EQ(pull("5"), QVariant(5.0));
    EXPECT_EQ(pull("2.5"), QVariant(2.5));
}

TEST_F(DriverStateVariants, OfAValueThatWasSetIsADoubleToo) {
    states.SetValue(7, "v"_q, 5);

    EXPECT_EQ(states.GetValueAsVariant(7, "v"_q).type(), QVariant::Double);
}

TEST_F(DriverStateVariants, OfATextIsAText) {
    EXPECT_EQ(pull("\"42\"").type(), QVariant::String);
    EXPECT_EQ(pull("\"42\""), QVariant("42"_q));
}

TEST_F(DriverStateVariants, OfABooleanIsABoolean) {
    EXPECT_EQ(pull("true").type(), QVariant::Bool);
    EXPECT_EQ(pull("true"), QVariant(true));
}

TEST_F(DriverStateVariants, OfNullIsANullPointer) {
    EXPECT_EQ(pull("null"), QVariant::fromValue(nullptr));
    EXPECT_TRUE(pull("null").isValid());
}

TEST_F(DriverStateVariants, OfObjectsAndArraysAreMapsAndListsOfDoubles) {
    const QVariant got = pull("{\"n\":5,\"l\":[1,\"x\"]}");

    ASSERT_EQ(got.type(), QVariant::Map);
    EXPECT_EQ(got.toMap(), (QVariantMap{{"l"_q, QVariantList{1.0, "x"_q}}, {"n"_q, 5.0}}));
    EXPECT_EQ(got.toMap().value("n"_q).type(), QVariant::Double);
    EXPECT_EQ(got.toMap().value("l"_q).toList().value(0).type(), QVariant::Double);
}

} // namespace
