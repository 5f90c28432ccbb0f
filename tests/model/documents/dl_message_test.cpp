// A stored downlink command back to its record.

#include "model/bson_utils.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"

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

model::dl_message read(const bsoncxx::v1::document::view& document) {
    bson_utils::query_memory memory;
    return bson_utils::readDocument<model::dl_message>(document, memory);
}

TEST(DownlinkReader, ReadsEveryMemberOfAStoredCommand) {
    const auto stored =
        doc(oid("_id", "\x5f\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\xff"), int32("modem_id", 17),
            string("api_key", "key"), embedded("data", doc(number("n", 5.0))), int32("status", 1),
            int32("timeout", 30), int32("f_ack", 1), string("payload", "0a0B"),
            date("ttl", 1553436321123), int64("timestamp", 1553436321));

    const model::dl_message message = read(stored.view());

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

    EXPECT_EQ(test_support::differences(read(doc().view()), empty), "");
}

TEST(DownlinkReader, TakesTheIdOnlyFromAnObjectIdOrItsJsonForm) {
    EXPECT_EQ(read(doc(string("_id", "0123456789abcdef01234567")).view()).db_id, QString());
    EXPECT_EQ(read(doc(embedded("_id", doc(string("$oid", "x")))).view()).db_id, q("x"));
}

TEST(DownlinkReader, SkipsWhatIsNotHexadecimalInThePayload) {
    EXPECT_EQ(read(doc(string("payload", "0-a zz 1")).view()).payload, QByteArray::fromHex("0a1"));
}

} // namespace
