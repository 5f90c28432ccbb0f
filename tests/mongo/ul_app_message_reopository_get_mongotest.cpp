#include "model/bson_utils.h"
#include "tests/mongo/uplink_repository_fixture.h"
#include "tests/support/record_equality.h"

#include <limits>

using namespace records;
using namespace test_support;
using testing::IsEmpty;

namespace {

class UplinkRepository : public UplinkRepositoryTest {
protected:
    /// Messages of one device, numbered as they are dated.
    void saveAt(std::initializer_list<qint64> times, int modem = 7) {
        for (const qint64 time : times) {
            repository.SaveMessage(uplink{.id = static_cast<quint64>(time),
                                          .modem = modem,
                                          .at = time,
                                          .detected = 1'000'000 - time});
        }
    }

    static model::filter_roll between(const QDateTime& begin, const QDateTime& end) {
        auto filter = uplinksOf({7});
        filter.begin = begin;
        filter.end = end;
        return filter;
    }
};

TEST_F(UplinkRepository, AStoredMessageComesBackEqual) {
    model::message message = uplink{};
    repository.SaveMessage(message);
    const auto found = repository.GetMessages(uplinksOf({7}));

    message.extra_text = ""_q;
    message.extra_value1 = 0;
    message.extra_value2 = 0;
    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_EQ(differences(found->at(7).front(), message, date_times::byInstant), "");
}

TEST_F(UplinkRepository, ALargePayloadComesBackEqual) {
    model::message message = uplink{};
    message.payload = QByteArray(7'500'000, '\x5a');
    message.payload[7'499'999] = '\x01';
    repository.SaveMessage(message);
    const auto found = repository.GetMessages(uplinksOf({7}));

    ASSERT_EQ(found->at(7).size(), 1u);
    EXPECT_TRUE(found->at(7).front().payload == message.payload);
}

TEST_F(UplinkRepository, TextAndContentInAnyScriptComeBackEqual) {
    model::message message = uplink{.tag = "счётчик 電力 🔌 \0 \n\""_q};
    message.data = QJsonDocument{QJsonObject{{"unit"_q, "м³"_q}}};
    repository.SaveMessage(message);
    const auto found = repository.GetMessages(uplinksOf({7}));

    EXPECT_EQ(found->at(7).front().tag, message.tag);
    EXPECT_EQ(found->at(7).front().data, message.data);
}

TEST_F(UplinkRepository, TimesComeBackAsLocalTimeInWholeSeconds) {
    model::message message = uplink{};
    message.timestamp = QDateTime::fromMSecsSinceEpoch(1'700'000'000'999, Qt::UTC);
    repository.SaveMessage(message);
    const auto found = repository.GetMessages(uplinksOf({7}));

    EXPECT_EQ(found->at(7).front().timestamp.toMSecsSinceEpoch(), 1'700'000'000'000);
    EXPECT_EQ(found->at(7).front().timestamp.timeSpec(), Qt::LocalTime);
}

TEST_F(UplinkRepository, TheLargestNumberComesBackEqual) {
    repository.SaveMessage(uplink{.id = std::numeric_limits<quint64>::max()});

    EXPECT_EQ(idsFor(uplinksOf({7})), (ids_by_device{{7, {std::numeric_limits<quint64>::max()}}}));
}

TEST_F(UplinkRepository, BothBoundsOfThePeriodAreInclusive) {
    saveAt({99, 100, 150, 200, 201});

    EXPECT_EQ(idsFor(between(utc(100), utc(200))), (ids_by_device{{7, {200, 150, 100}}}));
}

TEST_F(UplinkRepository, APeriodOfOneSecondFindsThatSecond) {
    saveAt({99, 100, 101});

    EXPECT_EQ(idsFor(between(utc(100), utc(100))), (ids_by_device{{7, {100}}}));
}

TEST_F(UplinkRepository, TheSubSecondPartOfTheBoundsIsDropped) {
    saveAt({99, 100, 200, 201});

    EXPECT_EQ(idsFor(between(utc(100).addMSecs(999), utc(200).addMSecs(999))),
              (ids_by_device{{7, {200, 100}}}));
}

TEST_F(UplinkRepository, BoundsInLocalTimeMeanTheSameInstant) {
    saveAt({99, 100, 200, 201});

    EXPECT_EQ(idsFor(between(utc(100).toOffsetFromUtc(5 * 3600), utc(200).toLocalTime())),
              (ids_by_device{{7, {200, 100}}}));
}

TEST_F(UplinkRepository, APeriodThatEndsBeforeItBeginsFindsNothing) {
    saveAt({100, 150, 200});

    EXPECT_THAT(idsFor(between(utc(200), utc(100))), IsEmpty());
}

TEST_F(UplinkRepository, APeriodMayBeginBefore1970) {
    saveAt({0, 1});

    EXPECT_EQ(idsFor(between(utc(-5), utc(0))), (ids_by_device{{7, {0}}}));
}

TEST_F(UplinkRepository, MessagesWithoutATimeAreFoundAt4294967295) {
    model::message message = uplink{.id = 1};
    message.timestamp = QDateTime();
    repository.SaveMessage(message);

    EXPECT_EQ(idsFor(between(utc(4'294'967'295), utc(4'294'967'295))), (ids_by_device{{7, {1}}}));
}

TEST_F(UplinkRepository, EachDeviceHasItsNewestFirst) {
    saveAt({110, 130, 120}, 7);
    saveAt({125, 105, 115}, 8);

    EXPECT_EQ(idsFor(uplinksOf({7, 8})),
              (ids_by_device{{7, {130, 120, 110}}, {8, {125, 115, 105}}}));
}

TEST_F(UplinkRepository, ADeviceWithoutMessagesHasNoKey) {
    saveAt({100}, 7);

    EXPECT_EQ(idsFor(uplinksOf({6, 7, 8})), (ids_by_device{{7, {100}}}));
}

TEST_F(UplinkRepository, OnlyNamedDevicesAreFound) {
    saveAt({100}, 7);
    saveAt({101}, 8);

    EXPECT_EQ(idsFor(uplinksOf({8})), (ids_by_device{{8, {101}}}));
}

TEST_F(UplinkRepository, ADeviceNamedTwiceHasItsMessagesOnce) {
    saveAt({100, 101});

    EXPECT_EQ(idsFor(uplinksOf({7, 7})), (ids_by_device{{7, {101, 100}}}));
}

TEST_F(UplinkRepository, NegativeDeviceNumbersAreFound) {
    saveAt({100}, -7);

    EXPECT_EQ(idsFor(uplinksOf({-7})), (ids_by_device{{-7, {100}}}));
}

TEST_F(UplinkRepository, AnEmptyDeviceListGivesAnEmptyMap) {
    saveAt({100});
    const auto found = repository.GetMessages(uplinksOf({}));

    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->empty());
}

TEST_F(UplinkRepository, AStoreWithoutTheCollectionGivesAnEmptyMap) {
    const auto found = repository.GetMessages(uplinksOf({7}));

    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->empty());
}

TEST_F(UplinkRepository, ResultsAreNotSharedBetweenCalls) {
    saveAt({100});
    const auto first = repository.GetMessages(uplinksOf({7}));
    first->clear();

    EXPECT_EQ(repository.GetMessages(uplinksOf({7}))->size(), 1u);
}

TEST_F(UplinkRepository, LimitReturnsTheNewestOfOneDevice) {
    saveAt({100, 300, 200});
    auto filter = uplinksOf({7});
    filter.limit = 2;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {300, 200}}}));
}

TEST_F(UplinkRepository, LimitReturnsTheNewestOfAllDevices) {
    saveAt({100, 400}, 7);
    saveAt({300, 200}, 8);
    auto filter = uplinksOf({7, 8});
    filter.limit = 3;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {400}}, {8, {300, 200}}}));
}

TEST_F(UplinkRepository, LimitCountsOnlyWhatThePeriodSelects) {
    saveAt({100, 200, 300, 400});
    auto filter = between(utc(100), utc(300));
    filter.limit = 2;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {300, 200}}}));
}

TEST_F(UplinkRepository, LimitZeroReturnsAll) {
    saveAt({100, 200, 300});
    auto filter = uplinksOf({7});
    filter.limit = 0;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {300, 200, 100}}}));
}

TEST_F(UplinkRepository, LimitBeyondTheMatchesReturnsAll) {
    saveAt({100, 200, 300});
    auto filter = uplinksOf({7});
    filter.limit = std::numeric_limits<int>::max();

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {300, 200, 100}}}));
}

TEST_F(UplinkRepository, TagsSelectMessages) {
    save({uplink{.id = 1, .tag = "a"_q}, uplink{.id = 2, .tag = "b"_q},
          uplink{.id = 3, .at = 1'700'000'001, .tag = "c"_q}});
    auto filter = uplinksOf({7});
    filter.tags = {"a"_q, "c"_q};

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {3, 1}}}));
}

TEST_F(UplinkRepository, AnEmptyTagListSelectsAnyTag) {
    save({uplink{.id = 1, .at = 10, .tag = "a"_q}, uplink{.id = 2, .at = 20, .tag = ""_q}});

    EXPECT_EQ(idsFor(uplinksOf({7})), (ids_by_device{{7, {2, 1}}}));
}

TEST_F(UplinkRepository, AnEmptyTagSelectsMessagesWithAnEmptyTag) {
    save({uplink{.id = 1, .tag = "a"_q}, uplink{.id = 2, .tag = ""_q}});
    auto filter = uplinksOf({7});
    filter.tags = {QString()};

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {2}}}));
}

TEST_F(UplinkRepository, TagsMatchWholeAndCaseByCase) {
    save({uplink{.id = 1, .tag = "Data"_q}, uplink{.id = 2, .tag = "data2"_q}});
    auto filter = uplinksOf({7});
    filter.tags = {"data"_q};

    EXPECT_THAT(idsFor(filter), IsEmpty());
}

TEST_F(UplinkRepository, TagsInAnyScriptSelectMessages) {
    save({uplink{.id = 1, .tag = "счётчик 🔌"_q}, uplink{.id = 2, .tag = "{\"$ne\": \"\"}"_q}});
    auto filter = uplinksOf({7});
    filter.tags = {"счётчик 🔌"_q};

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {1}}}));
}

TEST_F(UplinkRepository, PeriodOfDetectionIgnoresTheMessageTime) {
    save({uplink{.id = 1, .at = 5'000, .detected = 100}, uplink{.id = 2, .at = 100, .detected = 99},
          uplink{.id = 3, .at = 6'000, .detected = 200},
          uplink{.id = 4, .at = 150, .detected = 201}});
    auto filter = between(utc(100), utc(200));
    filter.by_time_detected = true;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {3, 1}}}));
}

TEST_F(UplinkRepository, QueryByDetectionGivesTheLatestDetectedFirst) {
    saveAt({110, 130, 120}); // detected the other way round
    auto filter = uplinksOf({7});
    filter.by_time_detected = true;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {110, 120, 130}}}));
}

TEST_F(UplinkRepository, LimitOfAQueryByDetectionReturnsTheLatestDetected) {
    saveAt({110, 130, 120});
    auto filter = uplinksOf({7});
    filter.by_time_detected = true;
    filter.limit = 1;

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {110}}}));
}

// Deliberate: hosts that query by detection time expect every tag.
TEST_F(UplinkRepository, TagsAreIgnoredByTimeDetected) {
    save({uplink{.id = 1, .detected = 10, .tag = "a"_q},
          uplink{.id = 2, .detected = 20, .tag = "b"_q}});
    auto filter = uplinksOf({7});
    filter.by_time_detected = true;
    filter.tags = {"a"_q};

    EXPECT_EQ(idsFor(filter), (ids_by_device{{7, {2, 1}}}));
}

TEST_F(UplinkRepository, AThousandMessagesComeBackCompleteAndInOrder) {
    std::vector<bsoncxx::v1::document::value> documents;
    std::vector<quint64> newestFirst;
    for (int number = 0; number < 1'000; ++number) {
        // Stored in another order than that of time.
        const qint64 time = 1'000 + (number * 7) % 1'000;
        const uplink message{.id = static_cast<quint64>(time), .at = time};
        documents.push_back(bson_utils::toBson(message.record()));
        newestFirst.push_back(static_cast<quint64>(1'999 - number));
    }
    database.insertMany(collection, documents);

    EXPECT_EQ(idsFor(uplinksOf({7})), (ids_by_device{{7, newestFirst}}));
    EXPECT_EQ(client.sentNames().front(), "find");
    EXPECT_GT(client.sentNames().size(), 1u) << "the result came in one batch";
}

TEST_F(UplinkRepository, AMessageWithoutTtlComesBackWithANullTtl) {
    repository.SaveMessage(uplink{.id = 1});
    database.run(R"({"update": "ul_messages",
                     "updates": [{"q": {}, "u": {"$unset": {"ttl": ""}}}]})");
    const auto found = repository.GetMessages(uplinksOf({7}));

    EXPECT_TRUE(found->at(7).front().ttl.isNull());
}

TEST_F(UplinkRepository, FieldsOfAnotherWriterAreNotRead) {
    repository.SaveMessage(uplink{.id = 1});
    database.run(R"({"update": "ul_messages",
                     "updates": [{"q": {}, "u": {"$set": {"added_later": {"a": 1}}}}]})");

    EXPECT_EQ(idsFor(uplinksOf({7})), (ids_by_device{{7, {1}}}));
}

TEST_F(UplinkRepository, LogsTheDurationOfAQuery) {
    repository.GetMessages(uplinksOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Get UL messages executed in %1ms"));
}

TEST_F(UplinkRepository, LogsTheDurationOfAQueryWithoutDevices) {
    repository.GetMessages(uplinksOf({}));

    EXPECT_THAT(log.lines(), IsOneLine("Get UL messages executed in %1ms"));
}

} // namespace
