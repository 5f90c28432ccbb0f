#include "tests/mongo/persistent_store_fixture.h"
#include "tests/support/mongo_wire.h"

#include <bsoncxx/v1/exception.hpp>

// What goes to the server, and what an answer that is no good leads to.
namespace {

using test_support::canonical;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace test_support::literals;

template <typename Store>
class PersistentStoreRequest : public PersistentStore<Store> {
protected:
    /// With the store's collection in place of "%1".
    static std::string command(std::string text) {
        const std::string collection = PersistentStore<Store>::collection;
        return canonical(text.replace(text.find("%1"), 2, collection));
    }

    std::vector<std::string> sentNames() const {
        std::vector<std::string> names;
        for (const auto& command : proxy.sent()) {
            names.push_back(command.name);
        }
        return names;
    }

    test_support::MongoProxy proxy;
    Store watched{proxy.url()};
};

TYPED_TEST_SUITE(PersistentStoreRequest, PersistentStores, store_names);

TYPED_TEST(PersistentStoreRequest, OfTheConstructorIsNone) {
    EXPECT_THAT(this->sentNames(), IsEmpty());
}

TYPED_TEST(PersistentStoreRequest, OfCreateAsksForTheCollectionAndSendsTheIndex) {
    this->watched.Create();

    ASSERT_THAT(this->sentNames(), ElementsAre("listCollections", "createIndexes"));
    EXPECT_EQ(this->proxy.sent()[1].asked(), this->command(R"({"createIndexes": "%1",
                  "indexes": [{"name": "_id_hashed", "key": {"_id": "hashed"}}]})"));
}

TYPED_TEST(PersistentStoreRequest, OfCreateWithTheCollectionThereIsTheQuestionAlone) {
    this->insert(1, "{}");
    this->watched.Create();

    EXPECT_THAT(this->sentNames(), ElementsAre("listCollections"));
}

TYPED_TEST(PersistentStoreRequest, OfSaveIsOneUpdateOfNumberAndStateInThisOrder) {
    this->watched.Save(-17, {{"b"_q, 1}, {"a"_q, "x"_q}});

    EXPECT_EQ(this->proxy.onlySent().asked(), this->command(R"({"update": "%1", "ordered": true,
        "updates": [{"q": {"_id": -17},
                     "u": {"$set": {"_id": -17, "state": {"a": "x", "b": 1.0}}},
                     "upsert": true, "multi": false}]})"));
}

TYPED_TEST(PersistentStoreRequest, OfASecondSaveIsTheSame) {
    this->watched.Save(17, {{"a"_q, 1}});
    const auto first = this->proxy.onlySent().asked();
    this->proxy.forget();
    this->watched.Save(17, {{"a"_q, 1}});

    EXPECT_EQ(this->proxy.onlySent().asked(), first);
}

TYPED_TEST(PersistentStoreRequest, OfSaveIsNoneForANameThatBsonCannotHold) {
    EXPECT_THROW(this->watched.Save(17, {{"a\0b"_q, 1}}), bsoncxx::v1::exception);

    EXPECT_THAT(this->sentNames(), IsEmpty());
    EXPECT_EQ(this->database.count(this->collection), 0);
}

TYPED_TEST(PersistentStoreRequest, OfGetIsOneFindByNumber) {
    this->watched.Get(17);

    EXPECT_EQ(this->proxy.onlySent().asked(), this->command(R"({"find": "%1", "filter": {"_id": 17},
                                "limit": {"$numberLong": "1"}})"));
}

TYPED_TEST(PersistentStoreRequest, OfDeleteIsOneDeletionByNumber) {
    this->watched.Delete(17);

    EXPECT_EQ(this->proxy.onlySent().asked(), this->command(R"({"delete": "%1", "ordered": true,
                                "deletes": [{"q": {"_id": 17}, "limit": 1}]})"));
}

TYPED_TEST(PersistentStoreRequest, ThatIsAnsweredWithBrokenTextThrows) {
    this->watched.Save(17, {{"a"_q, "to be broken"_q}});
    this->proxy.damageAnswers("to be broken", "to be\xff\xff\xff\xff\xff\xff\xff");

    EXPECT_THROW(this->watched.Get(17), bsoncxx::v1::exception);
}

} // namespace
