#include "host/input/mongo_timeouts.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

const QString all = "serverSelectionTryOnce=false&serverSelectionTimeoutMS=10000&"
                    "connectTimeoutMS=3000&socketTimeoutMS=30000"_q;

TEST(MongoTimeouts, AreAddedToAUrlWithoutOptions) {
    EXPECT_EQ(host::withTimeouts("mongodb://h:1"_q), "mongodb://h:1/?"_q + all);
    EXPECT_EQ(host::withTimeouts("mongodb://h:1/"_q), "mongodb://h:1/?"_q + all);
    EXPECT_EQ(host::withTimeouts("mongodb://h:1/database?"_q), "mongodb://h:1/database?"_q + all);
}

TEST(MongoTimeouts, AreAddedToOtherOptions) {
    EXPECT_EQ(host::withTimeouts("mongodb://h/?tls=true"_q), "mongodb://h/?tls=true&"_q + all);
}

TEST(MongoTimeouts, LeaveThoseThatTheUrlNames) {
    EXPECT_EQ(
        host::withTimeouts("mongodb://h/?sockettimeoutms=1&serverSelectionTimeoutMS=2"_q),
        "mongodb://h/?sockettimeoutms=1&serverSelectionTimeoutMS=2&serverSelectionTryOnce=false&"
        "connectTimeoutMS=3000"_q);
}

} // namespace
