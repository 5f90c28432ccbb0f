// The durable copy of a device's state or queues.

#include "model/documents/device_object.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

namespace {

using bson_utils::device_object;
using namespace test_support::literals;
using namespace test_support::raw_bson;

QJsonObject stateOf(const document_bytes& document) {
    bson_utils::query_memory memory;
    return bson_utils::readDocument<device_object>(document.view(), memory).state;
}

TEST(DeviceObject, IsStoredUnderItsNumberWithEveryNumberADouble) {
    const device_object object{.modem_id = -7,
                               .state = {{"n"_q, 5}, {"none"_q, QJsonValue{QJsonValue::Null}}}};
    EXPECT_EQ(rawBson(bson_utils::toBson(object)),
              doc(int32("_id", -7), embedded("state", doc(number("n", 5.0)))));
}

TEST(DeviceObject, ComesBackFromWhatWasStored) {
    const QJsonObject state{{"n"_q, 5.5}, {"list"_q, QJsonArray{true, "x"_q}}};
    const auto stored = bson_utils::toBson(device_object{.modem_id = 7, .state = state});
    bson_utils::query_memory memory;
    const auto read = bson_utils::readDocument<device_object>(stored, memory);
    EXPECT_EQ(read.modem_id, 7);
    EXPECT_EQ(read.state, state);
}

TEST(DeviceObject, IsEmptyWithoutADocumentForAState) {
    EXPECT_EQ(stateOf(doc(int32("_id", 7), int32("state", 5))), QJsonObject());
    EXPECT_EQ(stateOf(doc(int32("_id", 7))), QJsonObject());
}

} // namespace
