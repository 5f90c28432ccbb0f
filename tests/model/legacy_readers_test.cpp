#include "model/legacy_readers.h"
#include "model/bson/bson_error.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace {

using namespace test_support::raw_bson;
using bson_utils::bson_error;
using bson_utils::fromBsonDL;
using bson_utils::fromBsonEvent;
using bson_utils::fromBsonValue;

QString q(const char* utf8) {
    return QString::fromUtf8(utf8);
}

QJsonObject parsed(const char* json) {
    return QJsonDocument::fromJson(json).object();
}

model::dev_value valueOf(const element_bytes& value) {
    return fromBsonValue(doc(value).view());
}

QJsonObject extendedData(const document_bytes& data) {
    return fromBsonValue(doc(embedded("extended_data", data)).view()).extended_data.object();
}

TEST(DownlinkReader, ReadsEveryMemberOfAStoredCommand) {
    const auto stored =
        doc(oid("_id", "\x5f\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\xff"), int32("modem_id", 17),
            string("api_key", "key"), embedded("data", doc(number("n", 5.0))), int32("status", 1),
            int32("timeout", 30), int32("f_ack", 1), string("payload", "0a0B"),
            date("ttl", 1553436321123), int64("timestamp", 1553436321));

    const model::dl_message message = fromBsonDL(stored.view());

    EXPECT_EQ(message.db_id, q("5f0102030405060708090aff"));
    EXPECT_EQ(message.modem_id, 17);
    EXPECT_EQ(message.api_key, q("key"));
    EXPECT_EQ(message.data, parsed(R"({"n": 5})"));
    EXPECT_EQ(message.status, model::dl_message::dl_status::WAIT_DATA);
    EXPECT_EQ(message.timeout, 30);
    EXPECT_EQ(message.f_ack, 1);
    EXPECT_EQ(message.payload, QByteArray("\x0a\x0b"));
    EXPECT_EQ(message.ttl.toMSecsSinceEpoch(), 1553436321123);
    EXPECT_EQ(message.ttl.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(message.timestamp, QDateTime::fromSecsSinceEpoch(1553436321, Qt::UTC));
    EXPECT_EQ(message.timestamp.timeSpec(), Qt::UTC);
    EXPECT_TRUE(message.extra_text.isEmpty());
}

TEST(DownlinkReader, GivesDefaultsForAnEmptyDocument) {
    model::dl_message empty;
    empty.timestamp = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    empty.ttl = QDateTime::fromMSecsSinceEpoch(0);

    EXPECT_EQ(test_support::differences(fromBsonDL(doc().view()), empty), "");
}

TEST(DownlinkReader, TakesTheIdOnlyFromAnObjectIdOrItsJsonForm) {
    EXPECT_EQ(fromBsonDL(doc(string("_id", "0123456789abcdef01234567")).view()).db_id, QString());
    EXPECT_EQ(fromBsonDL(doc(embedded("_id", doc(string("$oid", "x")))).view()).db_id, q("x"));
}

TEST(DownlinkReader, SkipsWhatIsNotHexadecimalInThePayload) {
    EXPECT_EQ(fromBsonDL(doc(string("payload", "0-a zz 1")).view()).payload,
              QByteArray::fromHex("0a1"));
}

TEST(ValueReader, ReadsEveryMemberOfAStoredReading) {
    const auto stored =
        doc(oid("_id", "twelve bytes"), int32("modem_id", 5), string("message_id", "m1"),
            int64("timestamp", 1553436321), string("tag", "electricity"),
            string("obis_code", "1-0:1.8.1"), int64("val_type", 6),
            embedded("extended_data", doc(string("unit", "kWh"))), date("ttl", -5),
            number("value", 3432.827));

    const model::dev_value value = fromBsonValue(stored.view());

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
    EXPECT_FALSE(fromBsonValue(doc().view()).value.isValid());
    EXPECT_EQ(valueOf(null("value")).value.userType(), QMetaType::Nullptr);
}

TEST(ValueReader, ReadsADateAsItsJsonForm) {
    const QVariantMap expected{{q("$date"), 1553436321123.0}};
    EXPECT_EQ(valueOf(date("value", 1553436321123)).value, QVariant(expected));
}

TEST(ValueReader, ReadsATimestampBeyond32BitsAsTheEpoch) {
    const auto stored = doc(int64("timestamp", 2147483648));
    EXPECT_EQ(fromBsonValue(stored.view()).timestamp.toSecsSinceEpoch(), 0);
    const auto last = doc(int64("timestamp", 2147483647));
    EXPECT_EQ(fromBsonValue(last.view()).timestamp.toSecsSinceEpoch(), 2147483647);
}

TEST(ValueReader, ReadsAWholeDoubleAsATimestampAndAFractionAsTheEpoch) {
    EXPECT_EQ(fromBsonValue(doc(number("timestamp", 7.0)).view()).timestamp.toSecsSinceEpoch(), 7);
    EXPECT_EQ(fromBsonValue(doc(number("timestamp", 7.5)).view()).timestamp.toSecsSinceEpoch(), 0);
}

TEST(ValueReader, CutsTheFractionOffADateGivenAsANumber) {
    const auto stored = doc(embedded("ttl", doc(number("$date", 1234.9))));
    EXPECT_EQ(fromBsonValue(stored.view()).ttl.toMSecsSinceEpoch(), 1234);
}

TEST(ValueReader, RoundsADateBeyondTheRangeOfDoubles) {
    const auto stored = doc(date("ttl", 9007199254740993));
    EXPECT_EQ(fromBsonValue(stored.view()).ttl.toMSecsSinceEpoch(), 9007199254740992);
}

TEST(ValueReader, CountsTheLastOfARepeatedKey) {
    EXPECT_EQ(fromBsonValue(doc(int32("modem_id", 1), int32("modem_id", 2)).view()).modem_id, 2);
    EXPECT_EQ(fromBsonValue(doc(int32("modem_id", 1), string("modem_id", "2")).view()).modem_id, 0);
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
        EXPECT_EQ(test_support::differences(fromBsonValue(stored.view()), empty), "");
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
    EXPECT_EQ(fromBsonValue(nested(199).view()).modem_id, 5);
    EXPECT_EQ(fromBsonValue(nested(200).view()).modem_id, 0);
}

TEST(ValueReader, RefusesInvalidUtf8Anywhere) {
    EXPECT_THROW(fromBsonValue(doc(string("tag", "\xFF")).view()), bson_error);
    EXPECT_THROW(fromBsonValue(doc(string("other", "\xED\xA0\x80")).view()), bson_error);
    EXPECT_THROW(fromBsonValue(doc(int32("\xFE", 1)).view()), bson_error);
    EXPECT_THROW(fromBsonValue(doc(embedded("other", doc(string("s", "\x80")))).view()),
                 bson_error);
}

TEST(ValueReader, RefusesBytesThatAreNoDocument) {
    document_bytes cut = doc(string("tag", "electricity"));
    cut.bytes[0] = static_cast<char>(cut.bytes.size() - 4);
    EXPECT_THROW(fromBsonValue(cut.view()), bson_error);
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
    EXPECT_EQ(fromBsonValue(doc(int32("extended_data", 1)).view()).extended_data,
              QJsonDocument{QJsonObject{}});
    EXPECT_EQ(fromBsonValue(doc(array("extended_data", doc(int32("0", 1)))).view()).extended_data,
              QJsonDocument{QJsonObject{}});
}

TEST(EventReader, ReadsEveryMemberOfAStoredEvent) {
    const auto stored =
        doc(int32("modem_id", 5), int64("timestamp", 1553436321), string("message_id", "m1"),
            int32("event_code", 7), string("message", "PERMANENT_ERROR"), int32("parameter", -3),
            embedded("extended_data", doc(boolean("sabotage", true))), date("ttl", 1553436321999));

    const model::dev_event event = fromBsonEvent(stored.view());

    EXPECT_EQ(event.modem_id, 5);
    EXPECT_EQ(event.timestamp, QDateTime::fromSecsSinceEpoch(1553436321, Qt::UTC));
    EXPECT_EQ(event.message_id, q("m1"));
    EXPECT_EQ(event.event_code, 7);
    EXPECT_EQ(event.message, q("PERMANENT_ERROR"));
    EXPECT_EQ(event.parameter, -3);
    EXPECT_EQ(event.extended_data.object(), parsed(R"({"sabotage": true})"));
    EXPECT_EQ(event.ttl.toMSecsSinceEpoch(), 1553436321999);
    EXPECT_EQ(event.ttl.timeSpec(), Qt::LocalTime);
}

TEST(EventReader, GivesDefaultsForMissingAndMistypedMembers) {
    model::dev_event empty;
    empty.timestamp = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    empty.ttl = QDateTime::fromMSecsSinceEpoch(0);
    empty.extended_data = QJsonDocument{QJsonObject{}};
    EXPECT_EQ(test_support::differences(fromBsonEvent(doc().view()), empty), "");

    const auto mistyped =
        doc(string("modem_id", "5"), string("timestamp", "5"), int32("message_id", 1),
            boolean("event_code", true), int32("message", 1), number("parameter", 1.5),
            string("extended_data", "{}"), int64("ttl", 5));
    EXPECT_EQ(test_support::differences(fromBsonEvent(mistyped.view()), empty), "");
}

} // namespace
