// A stored reading back to its record; what is said of nested objects holds for every record that
// is read through its text.

#include "model/bson_utils.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/exception.hpp>

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace {

using namespace test_support::raw_bson;

QString q(const char* utf8) {
    return QString::fromUtf8(utf8);
}

QJsonObject parsed(const char* json) {
    return QJsonDocument::fromJson(json).object();
}

model::dev_value read(const bsoncxx::v1::document::view& document) {
    bson_utils::query_memory memory;
    return bson_utils::readDocument<model::dev_value>(document, memory);
}

model::dev_value valueOf(const element_bytes& value) {
    return read(doc(value).view());
}

QJsonObject extendedData(const document_bytes& data) {
    return read(doc(embedded("extended_data", data)).view()).extended_data.object();
}

TEST(ValueReader, ReadsEveryMemberOfAStoredReading) {
    // Qt itself gives instants before 1970 in some zones' local time as others.
    const test_support::local_time_zone utc{"UTC0"};
    const auto stored =
        doc(oid("_id", "twelve bytes"), int32("modem_id", 5), string("message_id", "m1"),
            int64("timestamp", 1553436321), string("tag", "electricity"),
            string("obis_code", "1-0:1.8.1"), int64("val_type", 6),
            embedded("extended_data", doc(string("unit", "kWh"))), date("ttl", -5),
            number("value", 3432.827));

    const model::dev_value value = read(stored.view());

    EXPECT_EQ(value.modem_id, 5);
    EXPECT_EQ(value.message_id, q("m1"));
    EXPECT_EQ(value.timestamp, QDateTime::fromSecsSinceEpoch(1553436321, Qt::UTC));
    EXPECT_EQ(value.tag, q("electricity"));
    EXPECT_EQ(value.obis_code, q("1-0:1.8.1"));
    EXPECT_EQ(value.extended_data.object(), parsed(R"({"unit": "kWh"})"));
    EXPECT_EQ(value.ttl.toMSecsSinceEpoch(), -5);
    EXPECT_EQ(value.value.userType(), QMetaType::Double);
    EXPECT_EQ(value.value.toDouble(), 3432.827);
}

TEST(ValueReader, MakesADoubleOfEveryNumber) {
    for (const auto& stored : {int32("value", 5), int64("value", 5), number("value", 5.0)}) {
        const QVariant value = valueOf(stored).value;
        EXPECT_EQ(value.userType(), QMetaType::Double);
        EXPECT_EQ(value.toDouble(), 5.0);
    }
}

TEST(ValueReader, MakesDoublesOfNestedNumbersToo) {
    const QVariant list = valueOf(array("value", doc(int32("0", 1), int64("1", 2)))).value;
    ASSERT_EQ(list.userType(), QMetaType::QVariantList);
    EXPECT_EQ(list.toList().at(0).userType(), QMetaType::Double);
    EXPECT_EQ(list.toList().at(1).userType(), QMetaType::Double);

    const QVariant map = valueOf(embedded("value", doc(int32("a", 1)))).value;
    ASSERT_EQ(map.userType(), QMetaType::QVariantMap);
    EXPECT_EQ(map.toMap().value(q("a")).userType(), QMetaType::Double);
}

TEST(ValueReader, KeepsTextAndBooleans) {
    EXPECT_EQ(valueOf(string("value", "12")).value, QVariant(q("12")));
    EXPECT_EQ(valueOf(string("value", "12")).value.userType(), QMetaType::QString);
    EXPECT_EQ(valueOf(boolean("value", true)).value.userType(), QMetaType::Bool);
    EXPECT_EQ(valueOf(boolean("value", false)).value, QVariant(false));
}

TEST(ValueReader, TellsAMissingValueFromANullOne) {
    EXPECT_FALSE(read(doc().view()).value.isValid());
    EXPECT_EQ(valueOf(null("value")).value.userType(), QMetaType::Nullptr);
}

TEST(ValueReader, ReadsADateAsItsJsonForm) {
    const QVariantMap expected{{q("$date"), 1553436321123.0}};
    EXPECT_EQ(valueOf(date("value", 1553436321123)).value, QVariant(expected));
}

TEST(ValueReader, ReadsATimestampBeyond32BitsAsTheEpoch) {
    const auto stored = doc(int64("timestamp", 2147483648));
    EXPECT_EQ(read(stored.view()).timestamp.toSecsSinceEpoch(), 0);
    const auto last = doc(int64("timestamp", 2147483647));
    EXPECT_EQ(read(last.view()).timestamp.toSecsSinceEpoch(), 2147483647);
}

TEST(ValueReader, ReadsAWholeDoubleAsATimestampAndAFractionAsTheEpoch) {
    EXPECT_EQ(read(doc(number("timestamp", 7.0)).view()).timestamp.toSecsSinceEpoch(), 7);
    EXPECT_EQ(read(doc(number("timestamp", 7.5)).view()).timestamp.toSecsSinceEpoch(), 0);
}

TEST(ValueReader, CutsTheFractionOffADateGivenAsANumber) {
    const auto stored = doc(embedded("ttl", doc(number("$date", 1234.9))));
    EXPECT_EQ(read(stored.view()).ttl.toMSecsSinceEpoch(), 1234);
}

TEST(ValueReader, RoundsADateBeyondTheRangeOfDoubles) {
    const auto stored = doc(date("ttl", 9007199254740993));
    EXPECT_EQ(read(stored.view()).ttl.toMSecsSinceEpoch(), 9007199254740992);
}

TEST(ValueReader, CountsTheLastOfARepeatedKey) {
    EXPECT_EQ(read(doc(int32("modem_id", 1), int32("modem_id", 2)).view()).modem_id, 2);
    EXPECT_EQ(read(doc(int32("modem_id", 1), string("modem_id", "2")).view()).modem_id, 0);
}

TEST(ValueReader, GivesARecordOfDefaultsWhenANumberIsNotFinite) {
    model::dev_value empty;
    empty.timestamp = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    empty.ttl = QDateTime::fromMSecsSinceEpoch(0);
    empty.extended_data = QJsonDocument{QJsonObject{}};
    for (const double strange :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const auto stored = doc(int32("modem_id", 5), string("tag", "t"),
                                embedded("other", doc(number("n", strange))));
        EXPECT_EQ(test_support::differences(read(stored.view()), empty), "");
    }
}

TEST(ValueReader, GivesARecordOfDefaultsWhenTheNestingIsTooDeep) {
    const auto nested = [](int levels) {
        document_bytes inner = doc();
        for (int i = 0; i < levels; ++i) {
            inner = doc(embedded("d", inner));
        }
        return doc(int32("modem_id", 5), embedded("other", inner));
    };
    EXPECT_EQ(read(nested(199).view()).modem_id, 5);
    EXPECT_EQ(read(nested(200).view()).modem_id, 0);
}

TEST(ValueReader, GivesARecordOfDefaultsWhenArraysAreNestedTooDeep) {
    const auto nested = [](int levels) {
        document_bytes inner = doc();
        for (int i = 0; i < levels; ++i) {
            inner = doc(array("0", inner));
        }
        return doc(int32("modem_id", 5), array("other", inner));
    };
    EXPECT_EQ(read(nested(199).view()).modem_id, 5);
    EXPECT_EQ(read(nested(200).view()).modem_id, 0);
}

TEST(ValueReader, RefusesDamageInsideANestedArray) {
    document_bytes stored =
        doc(embedded("extended_data", doc(array("a", doc(string("0", "electricity"))))));
    EXPECT_NO_THROW(read(stored.view()));
    stored.bytes[stored.bytes.find("electricity") + 11] = 'x'; // instead of the closing zero
    EXPECT_THROW(read(stored.view()), bsoncxx::v1::exception);
}

TEST(ValueReader, RefusesInvalidUtf8Anywhere) {
    EXPECT_THROW(read(doc(string("tag", "\xFF")).view()), bsoncxx::v1::exception);
    EXPECT_THROW(read(doc(string("other", "\xED\xA0\x80")).view()), bsoncxx::v1::exception);
    EXPECT_THROW(read(doc(int32("\xFE", 1)).view()), bsoncxx::v1::exception);
    EXPECT_THROW(read(doc(embedded("other", doc(string("s", "\x80")))).view()),
                 bsoncxx::v1::exception);
}

TEST(ValueReader, RefusesBytesThatAreNoDocument) {
    document_bytes cut = doc(string("tag", "electricity"));
    cut.bytes[0] = static_cast<char>(cut.bytes.size() - 4);
    EXPECT_THROW(read(cut.view()), bsoncxx::v1::exception);
}

TEST(NestedObjects, KeepWholeNumbersExactly) {
    const QJsonObject data = extendedData(doc(int64("big", 9007199254740993)));
    EXPECT_EQ(data.value(q("big")).toVariant(), QVariant(qlonglong{9007199254740993}));
}

TEST(NestedObjects, KeepControlCharactersAndZeros) {
    const QJsonObject data = extendedData(doc(string("s", std::string_view("a\0\x01\n\"\\", 6))));
    EXPECT_EQ(data.value(q("s")).toString(), QString::fromLatin1("a\0\x01\n\"\\", 6));
}

TEST(NestedObjects, ReadKeysAsUtf8) {
    EXPECT_EQ(extendedData(doc(int32("é", 1))).keys(), QStringList{q("é")});
}

TEST(NestedObjects, ShowOtherTypesInTheirLegacyJsonForm) {
    const auto stored =
        doc(oid("oid", "\x01\x23\x45\x67\x89\xAB\xCD\xEF\x01\x23\x45\x67"), date("date", -5),
            binary("bin", "abcd", '\x04'), regex("re", "^a", "xmi"), timestamp("ts", 0x100000002),
            undefined("un"), null("null"), code("code", "f()"),
            codeWithScope("scope", "f()", doc(date("d", 1))), symbol("sym", "s"),
            decimal128("dec", 150, 0x303c000000000000), minKey("min"), maxKey("max"),
            dbPointer("ref", "coll", "\x01\x23\x45\x67\x89\xAB\xCD\xEF\x01\x23\x45\x67"));

    EXPECT_EQ(extendedData(stored), parsed(R"json({
        "oid": {"$oid": "0123456789abcdef01234567"},
        "date": {"$date": -5},
        "bin": {"$binary": "YWJjZA==", "$type": "04"},
        "re": {"$regex": "^a", "$options": "imx"},
        "ts": {"$timestamp": {"t": 1, "i": 2}},
        "un": {"$undefined": true},
        "null": null,
        "code": {"$code": "f()"},
        "scope": {"$code": "f()", "$scope": {"d": {"$date": 1}}},
        "sym": "s",
        "dec": {"$numberDecimal": "1.50"},
        "min": {"$minKey": 1},
        "max": {"$maxKey": 1},
        "ref": {"$ref": "coll", "$id": "0123456789abcdef01234567"}})json"));
}

TEST(NestedObjects, ComeBackFromNestedEmptyArrays) {
    const auto stored =
        doc(array("a", doc(array("0", doc()), array("1", doc(embedded("0", doc()))))));
    EXPECT_EQ(extendedData(stored), parsed(R"({"a": [[], [{}]]})"));
}

TEST(NestedObjects, AreEmptyWhenTheMemberIsNoObject) {
    EXPECT_EQ(read(doc(int32("extended_data", 1)).view()).extended_data,
              QJsonDocument{QJsonObject{}});
    EXPECT_EQ(read(doc(array("extended_data", doc(int32("0", 1)))).view()).extended_data,
              QJsonDocument{QJsonObject{}});
}

} // namespace
