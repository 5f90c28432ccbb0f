#include "model/bson_utils.h"
#include "model/documents/ul_message.h"
#include "mongo/store_layout.h"
#include "tests/mongo/damaged_answers.h"
#include "tests/mongo/uplink_repository_fixture.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/collection.hpp>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What GetMessages asks the server.
class UplinkQuery : public UplinkRepositoryTest {
protected:
    static model::filter_roll filterOf100To200(std::list<int> modem_ids) {
        auto filter = uplinksOf(std::move(modem_ids));
        filter.begin = utc(100);
        filter.end = utc(200);
        filter.limit = 9;
        return filter;
    }

    std::string sentFor(const model::filter_roll& filter) {
        client.forget();
        repository.GetMessages(filter);
        return client.onlySent().asked();
    }

    /// The indexes that the server takes for it, in a collection laid out and filled.
    std::set<std::string> indexesUsedFor(const model::filter_roll& filter) {
        auto uplinks = database.handle().collection(collection);
        mongo::createIndexes(uplinks, layout::ul_messages::indexes);
        std::vector<bsoncxx::v1::document::value> documents;
        for (int number = 0; number < 300; ++number) {
            const uplink message{.id = static_cast<quint64>(number),
                                 .modem = number % 30,
                                 .at = number,
                                 .detected = number,
                                 .tag = QString::number(number % 5)};
            documents.push_back(bson_utils::toBson(message.record()));
        }
        database.insertMany(collection, documents);
        return database.indexesUsedBy(sentFor(filter));
    }
};

TEST_F(UplinkQuery, ByMessageTimeSendsPeriodAndDevices) {
    EXPECT_EQ(sentFor(filterOf100To200({7, -8})), canonical(R"({
        "find": "ul_messages",
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7, -8]}},
        "limit": {"$numberLong": "9"},
        "sort": {"timestamp": -1}
    })"));
}

TEST_F(UplinkQuery, ByMessageTimeSendsTheTagsInTheirOrder) {
    auto filter = filterOf100To200({7});
    filter.tags = {"b"_q, "ä"_q, "b"_q};

    EXPECT_EQ(sentFor(filter), canonical(R"({
        "find": "ul_messages",
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7]},
                   "tag": {"$in": ["b", "ä", "b"]}},
        "limit": {"$numberLong": "9"},
        "sort": {"timestamp": -1}
    })"));
}

TEST_F(UplinkQuery, ByDetectionTimeSendsNoTags) {
    auto filter = filterOf100To200({7, 8});
    filter.by_time_detected = true;
    filter.tags = {"a"_q};

    EXPECT_EQ(sentFor(filter), canonical(R"({
        "find": "ul_messages",
        "filter": {"time_detected": {"$gte": {"$numberLong": "100"},
                                     "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [7, 8]}},
        "limit": {"$numberLong": "9"},
        "sort": {"time_detected": -1}
    })"));
}

TEST_F(UplinkQuery, WithoutDevicesSendsAnEmptyList) {
    EXPECT_EQ(sentFor(filterOf100To200({})), canonical(R"({
        "find": "ul_messages",
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": []}},
        "limit": {"$numberLong": "9"},
        "sort": {"timestamp": -1}
    })"));
}

TEST_F(UplinkQuery, KeepsTheOrderOfMoreThanTenDevices) {
    const std::list<int> devices = {20, 19, 18, 17, 16, 15, 14, 13, 12, 11, 10, 9};
    sentFor(filterOf100To200(devices));

    EXPECT_EQ(client.onlySent().part({"filter"}), canonical(R"({
        "filter": {"timestamp": {"$gte": {"$numberLong": "100"}, "$lte": {"$numberLong": "200"}},
                   "modem_id": {"$in": [20, 19, 18, 17, 16, 15, 14, 13, 12, 11, 10, 9]}}})"));
}

TEST_F(UplinkQuery, SendsTheLimitZeroAsItIs) {
    auto filter = filterOf100To200({7});
    filter.limit = 0;
    sentFor(filter);

    EXPECT_EQ(client.onlySent().part({"limit", "singleBatch"}),
              canonical(R"({"limit": {"$numberLong": "0"}})"));
}

TEST_F(UplinkQuery, SendsANegativeLimitAsItIs) {
    auto filter = filterOf100To200({7});
    filter.limit = -2;
    sentFor(filter);

    EXPECT_EQ(client.onlySent().part({"limit", "singleBatch"}),
              canonical(R"({"limit": {"$numberLong": "-2"}})"));
}

TEST_F(UplinkQuery, DropsTheSubSecondPartOfTheBounds) {
    auto filter = filterOf100To200({7});
    filter.begin = utc(100).addMSecs(1);
    filter.end = utc(200).addMSecs(999);

    EXPECT_EQ(sentFor(filter), sentFor(filterOf100To200({7})));
}

TEST_F(UplinkQuery, SendsBoundsBeyond32Bits) {
    auto filter = filterOf100To200({7});
    filter.begin = utc(-1);
    filter.end = utc(253'402'300'799); // the end of the year 9999
    sentFor(filter);

    EXPECT_EQ(client.onlySent().part({"filter"}), canonical(R"({
        "filter": {"timestamp": {"$gte": {"$numberLong": "-1"},
                                 "$lte": {"$numberLong": "253402300799"}},
                   "modem_id": {"$in": [7]}}})"));
}

TEST_F(UplinkQuery, SendsNullBoundsAsTheEpochOfTheHostsZone) {
    const local_time_zone zone{"UTC0"};
    auto filter = filterOf100To200({7});
    filter.begin = QDateTime();
    filter.end = QDateTime();
    sentFor(filter);

    EXPECT_EQ(client.onlySent().part({"filter"}), canonical(R"({
        "filter": {"timestamp": {"$gte": {"$numberLong": "0"}, "$lte": {"$numberLong": "0"}},
                   "modem_id": {"$in": [7]}}})"));
}

TEST_F(UplinkQuery, OfAFewMessagesIsOneRequest) {
    save({uplink{.id = 1}, uplink{.id = 2, .modem = 8}, uplink{.id = 3}});
    client.forget();
    repository.GetMessages(uplinksOf({7, 8}));

    EXPECT_THAT(client.sentNames(), ElementsAre("find"));
}

TEST_F(UplinkQuery, ByMessageTimeUsesTheIndexOfDeviceAndTime) {
    EXPECT_THAT(indexesUsedFor(filterOf100To200({7, 8})), ElementsAre("modem_id_1_timestamp_-1"));
}

TEST_F(UplinkQuery, ByTagUsesTheIndexOfDeviceTagAndTime) {
    auto filter = filterOf100To200({7, 8});
    filter.tags = {"1"_q, "2"_q};

    EXPECT_THAT(indexesUsedFor(filter), ElementsAre("modem_id_1_tag_1_timestamp_-1"));
}

TEST_F(UplinkQuery, ByDetectionTimeUsesTheIndexOfDeviceAndDetection) {
    auto filter = filterOf100To200({7, 8});
    filter.by_time_detected = true;

    EXPECT_THAT(indexesUsedFor(filter), ElementsAre("modem_id_1_time_detected_-1"));
}

/// Documents that no SaveMessage has written.
class MalformedUplink : public UplinkRepositoryTest {
protected:
    /// Saves one good message and changes it.
    void storeWith(const std::string& update) {
        repository.SaveMessage(uplink{.id = 1, .modem = 7});
        database.run(R"({"update": "ul_messages", "updates": [{"q": {}, "u": )" + update + "}]}");
        log.clear();
    }

    void expectQueryToFail() {
        EXPECT_THROW(repository.GetMessages(uplinksOf({7})), bsoncxx::v1::exception);
        EXPECT_THAT(log.lines(), IsEmpty());
    }
};

TEST_F(MalformedUplink, WithoutATagEndsTheQuery) {
    storeWith(R"({"$unset": {"tag": ""}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithoutContentEndsTheQuery) {
    storeWith(R"({"$unset": {"data": ""}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithANarrowTimeEndsTheQuery) {
    storeWith(R"({"$set": {"timestamp": {"$numberInt": "100"}}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithADeviceNumberThatIsADoubleEndsTheQuery) {
    storeWith(R"({"$set": {"modem_id": 7.0}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithATtlThatIsANumberEndsTheQuery) {
    storeWith(R"({"$set": {"ttl": {"$numberLong": "4102444800123"}}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithAnObjectIdForANumberEndsTheQuery) {
    database.insert(collection, R"({"_id": {"$oid": "0123456789abcdef01234567"}, "modem_id": 7,
                                    "timestamp": {"$numberLong": "100"}})");
    expectQueryToFail();
}

TEST_F(MalformedUplink, AmongGoodOnesLosesTheWholeResult) {
    storeWith(R"({"$unset": {"phy": ""}})");
    save({uplink{.id = 2, .at = 1'800'000'000}, uplink{.id = 3, .at = 100}});
    log.clear();
    expectQueryToFail();
}

TEST_F(MalformedUplink, WithTextThatIsNoUtf8ComesBackWithReplacementCharacters) {
    using damaged = damaged_answers<mongo::ULAPPMessageRepository>;
    save({uplink{.id = 1, .at = 1}, uplink{.id = 2, .at = 2, .tag = damaged::text()}});
    log.clear();
    damaged answers{database.name()};

    const auto found = answers.repository.GetMessages(uplinksOf({7}))->at(7);
    EXPECT_EQ(found.front().tag, "to be"_q + QString(7, QChar::ReplacementCharacter));
}

TEST_F(MalformedUplink, OutsideTheQueryDoesNoHarm) {
    storeWith(R"({"$unset": {"phy": ""}})");
    repository.SaveMessage(uplink{.id = 2, .modem = 8});

    EXPECT_EQ(idsFor(uplinksOf({8})), (ids_by_device{{8, {2}}}));
}

TEST_F(MalformedUplink, WithANumberThatIsNotHexadecimalComesBackAsZero) {
    std::string text = toJson(bson_utils::toBson(uplink{.id = 0xabc}.record()));
    text.replace(text.find("\"abc\""), 5, "\"xyz\"");
    database.insert(collection, text);

    EXPECT_EQ(idsFor(uplinksOf({7})), (ids_by_device{{7, {0}}}));
}

} // namespace
