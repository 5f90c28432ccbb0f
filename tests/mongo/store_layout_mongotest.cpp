#include "mongo/store_layout.h"

#include "model/documents/ul_message.h"
#include "tests/support/mongo_commands.h"
#include "tests/support/mongo_database.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class StoreLayout : public UniqueMongoDatabase {
protected:
    void create(std::span<const layout::index> indexes) {
        auto target = client.database(database.name()).collection("things");
        mongo::createIndexes(target, indexes);
    }

    recording_client client{mongoUrl()};
};

constexpr layout::index byName{.keys = {{{"name"}}}};
constexpr layout::index byAge{.keys = {{{"age", layout::index_order::descending}, {"name"}}}};
constexpr layout::index byHash{.keys = {{{"name", layout::index_order::hashed}}}};
constexpr layout::index byEnd{.keys = {{{"end"}}}, .expires = true};
constexpr layout::index byFour{.keys = {{{"a"}, {"b"}, {"c"}, {"d"}}}};

TEST_F(StoreLayout, SendsOneRequestPerIndexInOrder) {
    const std::array indexes{byName, byAge};
    create(indexes);

    ASSERT_THAT(client.sentNames(), ElementsAre("createIndexes", "createIndexes"));
    EXPECT_EQ(client.sent()[0].asked(), canonical(R"({
        "createIndexes": "things", "indexes": [{"name": "name_1", "key": {"name": 1}}]})"));
    EXPECT_EQ(client.sent()[1].asked(), canonical(R"({
        "createIndexes": "things",
        "indexes": [{"name": "age_-1_name_1", "key": {"age": -1, "name": 1}}]})"));
}

TEST_F(StoreLayout, SendsTheExpiryOfIndexesThatHaveOne) {
    create(std::array{byEnd});

    EXPECT_EQ(client.onlySent().part({"indexes"}), canonical(R"({
        "indexes": [{"name": "end_1", "key": {"end": 1}, "expireAfterSeconds": 60}]})"));
}

TEST_F(StoreLayout, SendsTheWordHashedAsDirection) {
    create(std::array{byHash});

    EXPECT_EQ(client.onlySent().part({"indexes"}), canonical(R"({
        "indexes": [{"name": "name_hashed", "key": {"name": "hashed"}}]})"));
}

TEST_F(StoreLayout, TakesUpToFourKeys) {
    create(std::array{byFour});

    EXPECT_THAT(
        database.indexKeys("things"),
        ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"a": 1, "b": 1, "c": 1, "d": 1})")));
}

TEST_F(StoreLayout, CreatesNoCollectionWithoutAnIndex) {
    create({});

    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(database.collections(), IsEmpty());
}

TEST_F(StoreLayout, MayBeCreatedTwice) {
    const std::array indexes{byName, byEnd};
    create(indexes);
    create(indexes);

    EXPECT_THAT(database.indexKeys("things"),
                ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"name": 1})"),
                            canonical(R"({"end": 1})")));
}

TEST_F(StoreLayout, KeepsTheIndexesAheadOfARefusedOneAndCreatesNoneAfterIt) {
    database.run(R"({"createIndexes": "things", "indexes": [
        {"key": {"end": 1}, "name": "end_1", "expireAfterSeconds": 5}]})");

    EXPECT_THROW(create(std::array{byName, byEnd, byAge}), mongocxx::v1::exception);
    EXPECT_THAT(database.indexKeys("things"),
                ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"end": 1})"),
                            canonical(R"({"name": 1})")));
}

} // namespace
