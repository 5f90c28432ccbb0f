// What hosts catch when a conversion is refused: the BSON library's own exception.

#include "model/bson/bson_error.h"
#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <string>

namespace {

using bson_utils::bson_errc;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using testing::HasSubstr;

// The code with which `convert` is refused; none if it is not.
template <typename Convert>
std::error_code refusal(const Convert& convert) {
    try {
        convert();
    } catch (const bsoncxx::v1::exception& error) {
        return error.code();
    }
    return {};
}

TEST(BsonError, TellsWhatWasRefused) {
    bson_utils::query_memory memory;
    const auto damaged = doc(string("tag", "\xFF"));

    EXPECT_EQ(refusal([] { bson_utils::toBson(QJsonObject{{"a\0b"_q, 1}}); }),
              bson_errc::unwritable);
    EXPECT_EQ(refusal([] {
                  bson_utils::toBson(
                      QJsonDocument{QJsonObject{{"a"_q, QJsonObject{{"$oid"_q, 5}}}}});
              }),
              bson_errc::json_rejected);
    EXPECT_EQ(refusal([&] { bson_utils::readDocument<model::dev_value>(damaged.view(), memory); }),
              bson_errc::malformed);
}

TEST(BsonError, HasACategoryOfItsOwn) {
    const std::error_code code = bson_errc::malformed;
    EXPECT_EQ(code.category(), bson_utils::bsonErrorCategory());
    EXPECT_STREQ(code.category().name(), "kelvrostorage.bson");
    EXPECT_NE(code,
              std::error_code(static_cast<int>(bson_errc::malformed), std::generic_category()));
}

TEST(BsonError, SaysWhyAndWhat) {
    try {
        bson_utils::refuse(bson_errc::unwritable, "the key \"k\"");
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the key \"k\": cannot be written as BSON");
    }
    EXPECT_EQ(std::error_code{bson_errc::json_rejected}.message(),
              "JSON text that cannot become BSON");
    EXPECT_EQ(std::error_code{bson_errc::malformed}.message(), "damaged BSON");
    EXPECT_EQ(bson_utils::bsonErrorCategory().message(99), "unknown error");
}

} // namespace
