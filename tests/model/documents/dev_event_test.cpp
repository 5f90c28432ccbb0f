// A stored event back to its record.

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

model::dev_event read(const bsoncxx::v1::document::view& document) {
    bson_utils::query_memory memory;
    return bson_utils::readDocument<model::dev_event>(document, memory);
}

TEST(EventReader, ReadsEveryMemberOfAStoredEvent) {
    const auto stored =
        doc(int32("modem_id", 5), int64("timestamp", 1553436321), string("message_id", "m1"),
            int32("event_code", 7), string("message", "PERMANENT_ERROR"), int32("parameter", -3),
            embedded("extended_data", doc(boolean("sabotage", true))), date("ttl", 1553436321999));

    const model::dev_event event = read(stored.view());

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
    EXPECT_EQ(test_support::differences(read(doc().view()), empty), "");

    const auto mistyped =
        doc(string("modem_id", "5"), string("timestamp", "5"), int32("message_id", 1),
            boolean("event_code", true), int32("message", 1), number("parameter", 1.5),
            string("extended_data", "{}"), int64("ttl", 5));
    EXPECT_EQ(test_support::differences(read(mistyped.view()), empty), "");
}

} // namespace
