#include "tests/mongo/persistent_store_fixture.h"

#include <QJsonArray>

// Reading back, also what was stored by other means.
namespace {

using namespace test_support::literals;

TYPED_TEST(PersistentStore, GetOfAnUnknownDeviceIsEmpty) {
    this->store.Create();
    this->store.Save(1, {{"a"_q, 1}});

    EXPECT_EQ(this->store.Get(2), QJsonObject{});
}

TYPED_TEST(PersistentStore, GetWithoutACollectionIsEmptyAndCreatesNone) {
    EXPECT_EQ(this->store.Get(1), QJsonObject{});
    EXPECT_TRUE(this->database.collections().empty());
}

TYPED_TEST(PersistentStore, GetGivesWhatWasSaved) {
    const QJsonObject state =
        QJsonDocument::fromJson(R"({"array": [1, "x", [true], {"k": 2.5}], "bool": false,
                                    "empty": {}, "none": [], "number": -17, "text": "Жук \u0001"})")
            .object();
    this->store.Save(1, state);

    EXPECT_EQ(this->store.Get(1), state);
}

TYPED_TEST(PersistentStore, GetGivesTheDevicesOwn) {
    for (const int id : {-2147483647 - 1, -1, 0, 1, 2147483647}) {
        this->store.Save(id, {{"id"_q, id}});
    }

    for (const int id : {-2147483647 - 1, -1, 0, 1, 2147483647}) {
        EXPECT_EQ(this->store.Get(id), (QJsonObject{{"id"_q, id}}));
    }
}

TYPED_TEST(PersistentStore, GetOfAnotherObjectGivesWhatWasSaved) {
    this->store.Save(1, {{"a"_q, 1}});

    EXPECT_EQ(TypeParam{test_support::mongoUrl()}.Get(1), (QJsonObject{{"a"_q, 1}}));
}

TYPED_TEST(PersistentStore, NullsDoNotComeBack) {
    this->store.Save(
        1,
        QJsonDocument::fromJson(R"({"a": null, "b": [null, 1, null], "c": {"d": null}})").object());

    EXPECT_EQ(this->store.Get(1), QJsonDocument::fromJson(R"({"b": [1], "c": {}})").object());
}

TYPED_TEST(PersistentStore, NamesMayBeAnyText) {
    const QJsonObject state{{"\u0416\U0001F50C"_q, "\u0416\U0001F50C"_q},
                            {"with space"_q, "a\nb\"\\"_q},
                            {"id"_q, QJsonObject{{"state"_q, QJsonObject{{"_id"_q, 9}}}}}};
    this->store.Save(1, state);

    EXPECT_EQ(this->store.Get(1), state);
}

TYPED_TEST(PersistentStore, AStateOfAMebibyteComesBack) {
    const QJsonObject state{{"text"_q, QString(1 << 20, QChar(u'x'))}};
    this->store.Save(1, state);

    EXPECT_EQ(this->store.Get(1).value("text"_q).toString().size(), 1 << 20);
    EXPECT_EQ(this->store.Get(1), state);
}

TYPED_TEST(PersistentStore, AStateOfTenThousandValuesComesBack) {
    QJsonObject state;
    for (int i = 0; i < 10'000; ++i) {
        state.insert("value-"_q + QString::number(i), i * 0.5);
    }
    this->store.Save(1, state);

    EXPECT_EQ(this->store.Get(1), state);
}

TYPED_TEST(PersistentStore, StateThatIsNoDocumentIsEmpty) {
    int id = 0;
    for (const char* state : {"5", "2.5", "\"text\"", "null", "true", "[{\"a\": 1}]"}) {
        this->insert(++id, state);

        EXPECT_EQ(this->store.Get(id), QJsonObject{}) << state;
    }
}

// An ObjectId is an object in its JSON form.
TYPED_TEST(PersistentStore, StateThatIsAnObjectIdIsItsLegacyForm) {
    this->insert(1, R"({"$oid": "5f0e5f0e5f0e5f0e5f0e5f0e"})");

    EXPECT_EQ(this->store.Get(1), (QJsonObject{{"$oid"_q, "5f0e5f0e5f0e5f0e5f0e5f0e"_q}}));
}

TYPED_TEST(PersistentStore, DocumentWithoutAStateIsEmpty) {
    this->database.insert(this->collection, R"({"_id": 1, "State": {"a": 1}, "a": 1})");

    EXPECT_EQ(this->store.Get(1), QJsonObject{});
}

TYPED_TEST(PersistentStore, OtherMembersOfTheDocumentAreLeftAside) {
    this->database.insert(this->collection, R"({"_id": 1, "a": {"state": {"b": 2}}, )"
                                            R"("state": {"c": 3}, "z": "x"})");

    EXPECT_EQ(this->store.Get(1), (QJsonObject{{"c"_q, 3}}));
}

TYPED_TEST(PersistentStore, WholeNumbersOfEitherWidthAreNumbers) {
    this->insert(1, R"({"int32": 7, "int64": {"$numberLong": "5000000000"}})");

    EXPECT_EQ(this->store.Get(1), (QJsonObject{{"int32"_q, 7}, {"int64"_q, 5000000000.0}}));
}

struct shape {
    const char* name = nullptr;
    const char* stored = nullptr;
    const char* read = nullptr;

    friend void PrintTo(const shape& shape, std::ostream* out) { *out << shape.name; }
};

class LegacyShape : public PersistentStore<mongo::driver_state_persistent>,
                    public testing::WithParamInterface<shape> {};

// What has no plain JSON form arrives in its legacy extended one.
TEST_P(LegacyShape, OfAValueReachesTheOwner) {
    insert(1, std::string{R"({"v": )"} + GetParam().stored + "}");

    EXPECT_EQ(store.Get(1).value("v"_q), QJsonDocument::fromJson(GetParam().read).object());
}

INSTANTIATE_TEST_SUITE_P(
    Of, LegacyShape,
    testing::Values(
        shape{"object_id", R"({"$oid": "5f0e5f0e5f0e5f0e5f0e5f0e"})",
              R"({"$oid": "5f0e5f0e5f0e5f0e5f0e5f0e"})"},
        shape{"date", R"({"$date": {"$numberLong": "1700000000123"}})",
              R"({"$date": 1700000000123})"},
        shape{"date_before_the_epoch", R"({"$date": {"$numberLong": "-1"}})", R"({"$date": -1})"},
        shape{"binary", R"({"$binary": {"base64": "AAEC/w==", "subType": "00"}})",
              R"({"$binary": "AAEC/w==", "$type": "00"})"},
        shape{"regular_expression", R"({"$regularExpression": {"pattern": "^a", "options": "i"}})",
              R"({"$regex": "^a", "$options": "i"})"},
        shape{"timestamp", R"({"$timestamp": {"t": 17, "i": 3}})",
              R"({"$timestamp": {"t": 17, "i": 3}})"},
        shape{"decimal", R"({"$numberDecimal": "1.50"})", R"({"$numberDecimal": "1.50"})"},
        shape{"smallest_key", R"({"$minKey": 1})", R"({"$minKey": 1})"},
        shape{"largest_key", R"({"$maxKey": 1})", R"({"$maxKey": 1})"},
        shape{"undefined", R"({"$undefined": true})", R"({"$undefined": true})"},
        shape{"code", R"({"$code": "f"})", R"({"$code": "f"})"}),
    [](const auto& info) { return std::string{info.param.name}; });

TYPED_TEST(PersistentStore, StoredNullIsNull) {
    this->insert(1, R"({"v": null, "w": [null]})");

    EXPECT_EQ(this->store.Get(1),
              (QJsonObject{{"v"_q, QJsonValue::Null}, {"w"_q, QJsonArray{QJsonValue::Null}}}));
}

// The text of such a document is no JSON, so nothing of it can be read.
TYPED_TEST(PersistentStore, DocumentWithANumberThatJsonDoesNotHaveIsEmpty) {
    this->insert(1, R"({"a": 1, "v": {"$numberDouble": "NaN"}})");
    this->insert(2, R"({"a": 1, "v": [{"$numberDouble": "Infinity"}]})");
    this->database.insert(this->collection,
                          R"({"_id": 3, "state": {"a": 1}, "z": {"$numberDouble": "-Infinity"}})");

    EXPECT_EQ(this->store.Get(1), QJsonObject{});
    EXPECT_EQ(this->store.Get(2), QJsonObject{});
    EXPECT_EQ(this->store.Get(3), QJsonObject{});
}

} // namespace
