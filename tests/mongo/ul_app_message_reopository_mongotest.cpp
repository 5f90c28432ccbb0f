#include "mongo/ul_app_message_reopository.h"

#include "tests/mongo/uplink_repository_fixture.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

#include <limits>

using namespace records;
using namespace test_support;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class UplinkRepositorySave : public UplinkRepositoryTest {};
class UplinkRepositoryDelete : public UplinkRepositoryTest {};
class UplinkRepositoryDeviceInfo : public UplinkRepositoryTest {};

TEST_F(UplinkRepositorySave, StoresEveryMemberInItsFieldInTheFieldsOrder) {
    repository.SaveMessage(uplink{.id = 0xabc});

    EXPECT_THAT(database.documents(collection), ElementsAre(canonical(R"({
        "_id": "abc",
        "modem_id": 7,
        "station_id": 30,
        "phy": "dbpsk",
        "rssi": -97,
        "snr": 21,
        "ttl": {"$date": {"$numberLong": "4102444800123"}},
        "timestamp": {"$numberLong": "1700000000"},
        "time_detected": {"$numberLong": "1699999990"},
        "bs_timezone_offset": 3,
        "tag": "readings",
        "hw_type": "meter-3",
        "protocol": "wm-bus",
        "extended_data": {"count": 5},
        "data": {"energy": {"total": 12.5}, "flags": [1, true, "x"]},
        "payload": "01ab00ff",
        "parse_status": "ok"
    })")));
}

TEST_F(UplinkRepositorySave, StoresEveryFieldOfAnEmptyRecord) {
    model::message message;
    message.ttl = in2100();
    message.timestamp = utc(0);
    message.time_detected = utc(0);
    repository.SaveMessage(message);

    EXPECT_THAT(database.documents(collection), ElementsAre(canonical(R"({
        "_id": "0", "modem_id": 0, "station_id": 0, "phy": "", "rssi": 0, "snr": 0,
        "ttl": {"$date": {"$numberLong": "4102444800123"}},
        "timestamp": {"$numberLong": "0"}, "time_detected": {"$numberLong": "0"},
        "bs_timezone_offset": 0, "tag": "", "hw_type": "", "protocol": "",
        "extended_data": {}, "data": {}, "payload": "", "parse_status": ""
    })")));
}

TEST_F(UplinkRepositorySave, StoresTheLargestNumberAsSixteenHexadecimalDigits) {
    repository.SaveMessage(uplink{.id = std::numeric_limits<quint64>::max()});

    EXPECT_EQ(database.count(collection, R"({"_id": "ffffffffffffffff"})"), 1);
}

TEST_F(UplinkRepositorySave, StoresNullTimesAs4294967295) {
    model::message message = uplink{};
    message.timestamp = QDateTime();
    message.time_detected = QDateTime();
    repository.SaveMessage(message);

    EXPECT_EQ(database.count(collection, R"({"timestamp": {"$numberLong": "4294967295"},
                                             "time_detected": {"$numberLong": "4294967295"}})"),
              1);
}

TEST_F(UplinkRepositorySave, StoresTextAsUtf8) {
    model::message message = uplink{.tag = "счётчик 電力 🔌"_q};
    message.hw_type = "zero\0inside"_q;
    repository.SaveMessage(message);

    EXPECT_EQ(database.count(collection, R"({"tag": "счётчик 電力 🔌",
                                             "hw_type": "zero\u0000inside"})"),
              1);
}

TEST_F(UplinkRepositorySave, StoresTextThatLooksLikeAnOperatorAsText) {
    repository.SaveMessage(uplink{.tag = R"({"$gt": ""})"_q});

    EXPECT_EQ(database.count(collection, R"({"tag": "{\"$gt\": \"\"}"})"), 1);
}

TEST_F(UplinkRepositorySave, StoresNegativeDeviceNumbers) {
    save({uplink{.id = 1, .modem = -1}, uplink{.id = 2, .modem = std::numeric_limits<int>::min()}});

    EXPECT_EQ(database.count(collection, R"({"modem_id": -1})"), 1);
    EXPECT_EQ(database.count(collection, R"({"modem_id": -2147483648})"), 1);
}

TEST_F(UplinkRepositorySave, StoresFifteenMegabytesOfHexadecimalPayload) {
    model::message message = uplink{};
    message.payload = QByteArray(7'500'000, '\x5a');
    repository.SaveMessage(message);

    const auto stored = database.document(collection);
    const auto payload = static_cast<std::string>(stored["payload"].get_string().value);
    EXPECT_EQ(payload.size(), 15'000'000u);
    EXPECT_EQ(payload.find_first_not_of("5a"), std::string::npos);
}

TEST_F(UplinkRepositorySave, RefusesAMessageOfMoreThanSixteenMegabytes) {
    model::message message = uplink{};
    message.payload = QByteArray(9'000'000, '\x5a');

    EXPECT_THROW(repository.SaveMessage(message), mongocxx::v1::exception);
    EXPECT_EQ(database.count(collection), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UplinkRepositorySave, RefusesASecondMessageWithTheSameNumberAndKeepsTheFirst) {
    repository.SaveMessage(uplink{.id = 5, .tag = "first"_q});
    const auto before = database.documents(collection);
    log.clear();

    EXPECT_THROW(repository.SaveMessage(uplink{.id = 5, .modem = 8, .tag = "second"_q}),
                 mongocxx::v1::exception);
    EXPECT_EQ(database.documents(collection), before);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UplinkRepositorySave, NamesTheDuplicateKeyInItsException) {
    repository.SaveMessage(uplink{.id = 5});
    try {
        repository.SaveMessage(uplink{.id = 5});
        FAIL() << "the second message was stored";
    } catch (const mongocxx::v1::exception& error) {
        EXPECT_EQ(error.code().value(), 11000) << error.what();
    }
}

TEST_F(UplinkRepositorySave, GoesOnAfterARefusedMessage) {
    repository.SaveMessage(uplink{.id = 5});
    EXPECT_THROW(repository.SaveMessage(uplink{.id = 5}), mongocxx::v1::exception);
    repository.SaveMessage(uplink{.id = 6});

    EXPECT_EQ(database.count(collection), 2);
}

TEST_F(UplinkRepositorySave, AsksTheServerNothingForContentThatHasNoBsonForm) {
    model::message message = uplink{};
    message.data = QJsonDocument::fromJson(R"({"id": {"$oid": "no ObjectId"}})");

    EXPECT_THROW(repository.SaveMessage(message), bsoncxx::v1::exception);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UplinkRepositorySave, IsOneRequestWithoutOptions) {
    repository.SaveMessage(uplink{});

    EXPECT_EQ(client.onlySent().asked(),
              canonical(R"({"insert": "ul_messages", "ordered": true, "documents": [)" +
                        database.documents(collection).front() + "]}"));
}

TEST_F(UplinkRepositorySave, LogsItsDuration) {
    repository.SaveMessage(uplink{});

    EXPECT_THAT(log.lines(), IsOneLine("Save UL message executed in %1ms"));
}

// Deliberate: hosts delete whole devices with a filter that they also query with.
TEST_F(UplinkRepositoryDelete, DeletesEveryMessageOfADeviceWhateverThePeriod) {
    save({uplink{.id = 1, .at = 1'000}, uplink{.id = 2, .at = 5'000}, uplink{.id = 3, .at = 99}});
    auto filter = uplinksOf({7});
    filter.begin = utc(4'000);
    filter.end = utc(7'600);
    repository.DeleteMessages(filter);

    EXPECT_EQ(database.count(collection), 0);
}

TEST_F(UplinkRepositoryDelete, ReadsNeitherTagsNorLimitNorFlag) {
    save({uplink{.id = 1}, uplink{.id = 2}, uplink{.id = 3}});
    auto filter = uplinksOf({7});
    filter.tags = {"another"_q};
    filter.limit = 1;
    filter.by_time_detected = true;
    repository.DeleteMessages(filter);

    EXPECT_EQ(database.count(collection), 0);
}

TEST_F(UplinkRepositoryDelete, DeletesAllNamedDevicesAndKeepsTheOthers) {
    save({uplink{.id = 1, .modem = 3}, uplink{.id = 2, .modem = 4}, uplink{.id = 3, .modem = 5}});
    repository.DeleteMessages(uplinksOf({3, 5}));

    EXPECT_EQ(database.count(collection, R"({"modem_id": 4})"), 1);
    EXPECT_EQ(database.count(collection), 1);
}

TEST_F(UplinkRepositoryDelete, DeletesNothingForAnUnknownDevice) {
    repository.SaveMessage(uplink{.modem = 7});
    repository.DeleteMessages(uplinksOf({8}));

    EXPECT_EQ(database.count(collection), 1);
}

TEST_F(UplinkRepositoryDelete, AsksTheServerNothingWithoutADeviceButLogs) {
    repository.SaveMessage(uplink{});
    client.forget();
    log.clear();
    repository.DeleteMessages(uplinksOf({}));

    EXPECT_EQ(database.count(collection), 1);
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsOneLine("Delete UL message executed in %1ms"));
}

TEST_F(UplinkRepositoryDelete, SendsTheDevicesAloneAsItsFilter) {
    auto filter = uplinksOf({5, -3, 5});
    filter.tags = {"readings"_q};
    repository.DeleteMessages(filter);

    EXPECT_EQ(client.onlySent().asked(), canonical(R"({
        "delete": "ul_messages", "ordered": true,
        "deletes": [{"q": {"modem_id": {"$in": [5, -3, 5]}}, "limit": 0}]
    })"));
}

TEST_F(UplinkRepositoryDelete, LogsItsDuration) {
    repository.DeleteMessages(uplinksOf({7}));

    EXPECT_THAT(log.lines(), IsOneLine("Delete UL message executed in %1ms"));
}

TEST_F(UplinkRepositoryDeviceInfo, IsTwoEmptyTextsAlsoForAKnownDevice) {
    repository.SaveMessage(uplink{.modem = 7});
    client.forget();
    log.clear();

    EXPECT_EQ(repository.GetDeviceProtocolHWType(7), std::make_pair(QString(), QString()));
    EXPECT_THAT(client.sentNames(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableUplinkRepository, SaveThrowsTheDriversExceptionAndLogsNothing) {
    EXPECT_THROW(repository.SaveMessage(uplink{}), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableUplinkRepository, GetThrowsTheDriversExceptionAndLogsNothing) {
    EXPECT_THROW(repository.GetMessages(uplinksOf({7})), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableUplinkRepository, DeleteThrowsTheDriversExceptionAndLogsNothing) {
    EXPECT_THROW(repository.DeleteMessages(uplinksOf({7})), mongocxx::v1::exception);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UnreachableUplinkRepository, DeleteWithoutADeviceSucceedsAndLogs) {
    repository.DeleteMessages(uplinksOf({}));
    EXPECT_THAT(log.lines(), IsOneLine("Delete UL message executed in %1ms"));
}

TEST_F(UnreachableUplinkRepository, TellsTwoEmptyTextsAboutADevice) {
    EXPECT_EQ(repository.GetDeviceProtocolHWType(7), std::make_pair(QString(), QString()));
}

} // namespace
