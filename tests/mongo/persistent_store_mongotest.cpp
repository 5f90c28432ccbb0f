#include "tests/mongo/persistent_store_fixture.h"

#include <mongocxx/v1/exception.hpp>

#include <QJsonArray>

// Creating, saving and deleting, seen in the database.
namespace {

using test_support::canonical;
using test_support::mongoUrlOfDatabase;
using test_support::unreachableMongoUrl;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace test_support::literals;

static_assert(
    std::is_convertible_v<mongo::driver_state_persistent*, interfaces::IDriverStatePersistent*>);
// Deliberate: only its owner uses a dl_queue_persistent, so it is no store to anybody else.
static_assert(
    std::is_base_of_v<interfaces::IDriverDLqueuePersistent, mongo::dl_queue_persistent> &&
    !std::is_convertible_v<mongo::dl_queue_persistent*, interfaces::IDriverDLqueuePersistent*>);
static_assert(!std::has_virtual_destructor_v<mongo::driver_state_persistent> &&
              !std::has_virtual_destructor_v<mongo::dl_queue_persistent>);

TYPED_TEST(PersistentStore, CreatesTheCollectionWithAHashedIndexOfTheDeviceNumber) {
    this->store.Create();

    EXPECT_THAT(this->database.collections(), ElementsAre(this->collection));
    EXPECT_THAT(this->database.indexKeys(this->collection),
                ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"_id": "hashed"})")));
}

TYPED_TEST(PersistentStore, CreatesTheIndexWithoutOptions) {
    this->store.Create();

    const auto indexes = this->database.indexes(this->collection);
    ASSERT_EQ(indexes.size(), 2U);
    EXPECT_EQ(indexes[1].name, "_id_hashed");
    EXPECT_EQ(indexes[1].expireAfterSeconds, std::nullopt);
    EXPECT_EQ(indexes[1].otherOptions, canonical("{}"));
}

TYPED_TEST(PersistentStore, CreatesNoDocument) {
    this->store.Create();

    EXPECT_THAT(this->documents(), IsEmpty());
}

// Deliberate: what a database has is taken as it is.
TYPED_TEST(PersistentStore, CreateLeavesAnExistingCollectionWithoutTheIndex) {
    this->insert(5, R"({"a": 1.0})");

    this->store.Create();

    EXPECT_THAT(this->database.indexKeys(this->collection),
                ElementsAre(canonical(R"({"_id": 1})")));
    EXPECT_EQ(this->database.count(this->collection), 1);
}

TYPED_TEST(PersistentStore, CreateTwiceIsCreateOnce) {
    this->store.Create();
    this->store.Save(5, {});
    this->store.Create();

    EXPECT_EQ(this->database.indexKeys(this->collection).size(), 2U);
    EXPECT_EQ(this->database.count(this->collection), 1);
}

TYPED_TEST(PersistentStore, CreateOfAnotherObjectKeepsWhatIsThere) {
    this->store.Create();
    this->store.Save(5, {{"a"_q, 1}});

    TypeParam{test_support::mongoUrl()}.Create();

    EXPECT_EQ(this->database.count(this->collection), 1);
}

TYPED_TEST(PersistentStore, SavesWithoutHavingCreated) {
    this->store.Save(5, {{"a"_q, 1}});

    EXPECT_EQ(this->database.count(this->collection), 1);
    EXPECT_THAT(this->database.indexKeys(this->collection),
                ElementsAre(canonical(R"({"_id": 1})")));
}

// Deliberate: owners ignore the result, and it means "replaced".
TYPED_TEST(PersistentStore, FirstSaveGivesFalseAndInserts) {
    EXPECT_FALSE(this->store.Save(17, {{"a"_q, 1}}));

    EXPECT_THAT(this->documents(), ElementsAre(canonical(R"({"_id": 17, "state": {"a": 1.0}})")));
}

TYPED_TEST(PersistentStore, SecondSaveGivesTrueAndReplacesTheWholeState) {
    this->store.Save(17, {{"a"_q, 1}, {"b"_q, 2}});

    EXPECT_TRUE(this->store.Save(17, {{"b"_q, "x"_q}, {"c"_q, true}}));

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(R"({"_id": 17, "state": {"b": "x", "c": true}})")));
}

TYPED_TEST(PersistentStore, SaveOfTheSameStateGivesTrueToo) {
    this->store.Save(17, {{"a"_q, 1}});

    EXPECT_TRUE(this->store.Save(17, {{"a"_q, 1}}));
    EXPECT_EQ(this->database.count(this->collection), 1);
}

TYPED_TEST(PersistentStore, SaveOverADocumentOfAnotherShapeReplacesItsStateAlone) {
    this->database.insert(this->collection, R"({"_id": 17, "note": "kept", "state": 5})");

    EXPECT_TRUE(this->store.Save(17, {{"a"_q, 1}}));

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(R"({"_id": 17, "note": "kept", "state": {"a": 1.0}})")));
}

TYPED_TEST(PersistentStore, SaveAfterDeleteGivesFalseAgain) {
    this->store.Save(17, {{"a"_q, 1}});
    this->store.Delete(17);

    EXPECT_FALSE(this->store.Save(17, {{"a"_q, 1}}));
}

TYPED_TEST(PersistentStore, SavesOneDocumentForEachDevice) {
    this->store.Save(2, {{"a"_q, 2}});
    this->store.Save(1, {{"a"_q, 1}});

    EXPECT_THAT(this->documents(), ElementsAre(canonical(R"({"_id": 1, "state": {"a": 1.0}})"),
                                               canonical(R"({"_id": 2, "state": {"a": 2.0}})")));
}

TYPED_TEST(PersistentStore, SavesTheDeviceNumberAsAnInt32) {
    for (const int id : {-2147483647 - 1, -1, 0, 2147483647}) {
        this->store.Save(id, {});
    }

    EXPECT_THAT(this->documents(), ElementsAre(canonical(R"({"_id": -2147483648, "state": {}})"),
                                               canonical(R"({"_id": -1, "state": {}})"),
                                               canonical(R"({"_id": 0, "state": {}})"),
                                               canonical(R"({"_id": 2147483647, "state": {}})")));
}

TYPED_TEST(PersistentStore, SavesEveryNumberAsADouble) {
    this->store.Save(1, {{"whole"_q, 5}, {"part"_q, -0.5}, {"large"_q, 1e300}, {"zero"_q, 0}});

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(R"({"_id": 1, "state": {"large": 1e300, "part": -0.5, )"
                                      R"("whole": 5.0, "zero": 0.0}})")));
}

TYPED_TEST(PersistentStore, SavesEveryOtherKindAsItIs) {
    this->store.Save(1, QJsonDocument::fromJson(
                            R"({"array": [1, "x", [true], {"k": 2}], "bool": false, "empty": {},
                                "none": [], "object": {"o": {"p": 3}}, "text": "Жук"})")
                            .object());

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(
                    R"({"_id": 1, "state": {"array": [1.0, "x", [true], {"k": 2.0}], )"
                    R"("bool": false, "empty": {}, "none": [], "object": {"o": {"p": 3.0}}, )"
                    R"("text": "Жук"}})")));
}

TYPED_TEST(PersistentStore, LeavesNullsOut) {
    this->store.Save(
        1,
        QJsonDocument::fromJson(R"({"a": null, "b": [null, 1, null], "c": {"d": null}})").object());

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(R"({"_id": 1, "state": {"b": [1.0], "c": {}}})")));
}

TYPED_TEST(PersistentStore, SavesNamesWithDotsAndDollarsAsTheyAre) {
    this->store.Save(1, {{"a.b"_q, 1}, {"c"_q, QJsonObject{{"$d.e"_q, 2}}}});

    EXPECT_THAT(this->documents(),
                ElementsAre(canonical(R"({"_id": 1, "state": {"a.b": 1.0, "c": {"$d.e": 2.0}}})")));
}

// The MongoDB driver sends no update that has an empty name in it, at any depth.
TYPED_TEST(PersistentStore, SaveOfAnEmptyNameThrowsAndLeavesWhatWasSaved) {
    this->store.Save(1, {{"a"_q, 1}});

    EXPECT_THROW(this->store.Save(1, {{""_q, 2}}), mongocxx::v1::exception);
    EXPECT_THROW(this->store.Save(1, {{"b"_q, QJsonObject{{""_q, 2}}}}), mongocxx::v1::exception);

    EXPECT_THAT(this->documents(), ElementsAre(canonical(R"({"_id": 1, "state": {"a": 1.0}})")));
}

TYPED_TEST(PersistentStore, DeleteOfASavedDeviceGivesTrueAndLeavesTheOthers) {
    this->store.Save(1, {});
    this->store.Save(2, {});

    EXPECT_TRUE(this->store.Delete(1));

    EXPECT_THAT(this->documents(), ElementsAre(canonical(R"({"_id": 2, "state": {}})")));
}

TYPED_TEST(PersistentStore, DeleteOfAnUnknownDeviceGivesFalse) {
    this->store.Save(1, {});

    EXPECT_FALSE(this->store.Delete(2));
    EXPECT_EQ(this->database.count(this->collection), 1);
}

TYPED_TEST(PersistentStore, DeleteTwiceGivesFalseTheSecondTime) {
    this->store.Save(1, {});

    EXPECT_TRUE(this->store.Delete(1));
    EXPECT_FALSE(this->store.Delete(1));
}

TYPED_TEST(PersistentStore, DeleteWithoutACollectionGivesFalseAndCreatesNone) {
    EXPECT_FALSE(this->store.Delete(1));
    EXPECT_THAT(this->database.collections(), IsEmpty());
}

TYPED_TEST(PersistentStore, UsesItsOwnCollectionAlone) {
    this->store.Create();
    this->store.Save(1, {});
    this->store.Delete(1);
    this->store.Save(2, {});

    EXPECT_THAT(this->database.collections(), ElementsAre(this->collection));
}

// Deliberate: every host finds its data in the same place.
TYPED_TEST(PersistentStore, DatabaseOfTheConnectionStringIsNotUsed) {
    test_support::temporary_database elsewhere;
    TypeParam other{mongoUrlOfDatabase(elsewhere.name())};
    other.Create();
    other.Save(1, {{"a"_q, 1}});

    EXPECT_EQ(this->database.count(this->collection), 1);
    EXPECT_THAT(elsewhere.collections(), IsEmpty());
}

TYPED_TEST(PersistentStore, MalformedConnectionStringIsRefusedByTheConstructor) {
    EXPECT_THROW(TypeParam{"no connection string"}, mongocxx::v1::exception);
    EXPECT_THROW(TypeParam{""}, mongocxx::v1::exception);
}

TYPED_TEST(PersistentStore, ConstructorReachesNoServer) {
    EXPECT_NO_THROW(TypeParam{unreachableMongoUrl()});
}

TYPED_TEST(PersistentStore, EveryOperationOnAnUnreachableServerThrows) {
    TypeParam unreachable{unreachableMongoUrl()};

    EXPECT_THROW(unreachable.Create(), mongocxx::v1::exception);
    EXPECT_THROW(unreachable.Save(1, {}), mongocxx::v1::exception);
    EXPECT_THROW(unreachable.Get(1), mongocxx::v1::exception);
    EXPECT_THROW(unreachable.Delete(1), mongocxx::v1::exception);
}

} // namespace
