#include "host/input/mongo_url.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test_support::literals;
using host::mongoUrlFault;

/// The character that is blamed; empty if none is.
std::string blamedIn(const char* url) {
    const auto fault = mongoUrlFault(QString::fromUtf8(url));
    const auto start = "has an unescaped "_q;
    return fault.startsWith(start) ? fault.mid(start.size(), 1).toStdString() : std::string();
}

TEST(MongoUrl, IsFitWithoutAUser) {
    for (const auto* const url :
         {"mongodb://h", "mongodb://h/", "mongodb://h:27017,[::1]:27018/db?tls=true",
          "mongodb://[::1]/", "mongodb://%2Ftmp%2Fmongodb.sock/", "mongodb+srv://h.example/db",
          "mongodb://h/?appName=a@b", "mongodb://h?appName=a:b/c@d", ""}) {
        EXPECT_EQ(mongoUrlFault(QString::fromUtf8(url)), QString()) << url;
    }
}

TEST(MongoUrl, IsFitWithEscapedUserAndPassword) {
    for (const auto* const url :
         {"mongodb://user@h/", "mongodb://user:@h/", "mongodb://user:pass@h:1,i:2/db?x=y",
          "mongodb://us%40er:p%3a%2F%3F%23%5B%5D%25@h/", "mongodb+srv://u:p!$&'()*+,;=-._~@h/",
          "mongodb://u:p@h/?authMechanismProperties=SERVICE_NAME:x@y"}) {
        EXPECT_EQ(mongoUrlFault(QString::fromUtf8(url)), QString()) << url;
    }
}

TEST(MongoUrl, IsUnfitWithAnUnescapedCharacterInThePassword) {
    EXPECT_EQ(blamedIn("mongodb://u:se@cret@h/"), "@");
    EXPECT_EQ(blamedIn("mongodb://u:se:cret@h/"), ":");
    EXPECT_EQ(blamedIn("mongodb://u:se/cret@h/"), "/");
    EXPECT_EQ(blamedIn("mongodb://u:se?cret@h/?x=y"), "?");
    EXPECT_EQ(blamedIn("mongodb://u:se#cret@h/"), "#");
    EXPECT_EQ(blamedIn("mongodb://u:se[cret@h/"), "[");
    EXPECT_EQ(blamedIn("mongodb://u:se]cret@h/"), "]");
    EXPECT_EQ(blamedIn("mongodb://u:100%@h/"), "%");
    EXPECT_EQ(blamedIn("mongodb://u:se%cret@h/"), "%");
}

TEST(MongoUrl, IsUnfitWithAnUnescapedCharacterInTheUserName) {
    EXPECT_EQ(blamedIn("mongodb://me@example:secret@h/"), "@");
    EXPECT_EQ(blamedIn("mongodb://example/me:secret@h/"), "/");
    EXPECT_EQ(blamedIn("mongodb+srv://me@example@h/"), "@");
}

TEST(MongoUrl, IsUnfitWhenOneCharacterHidesAnother) {
    EXPECT_EQ(blamedIn("mongodb://u:s@e/cret@h/db"), "/");
    EXPECT_EQ(blamedIn("mongodb://u:s/e?cret@h/db?x=y"), "/");
}

// A password that nobody's @ follows looks like a port, and the library would repeat it.
TEST(MongoUrl, IsUnfitWithAPortThatIsNoNumber) {
    for (const auto* const url : {"mongodb://user:secret", "mongodb://h:1,user:secret/",
                                  "mongodb://u:se?cret=x@h/", "mongodb://u:p@h:1:2/"}) {
        EXPECT_EQ(mongoUrlFault(QString::fromUtf8(url)), "has a port that is no number"_q) << url;
    }
}

TEST(MongoUrl, IsNotRepeatedByWhatIsSaidOfIt) {
    const auto fault = mongoUrlFault("mongodb://u:se@cret@h/"_q);
    EXPECT_EQ(fault, "has an unescaped @ in the user name or password; there, write % as %25, @ as "
                     "%40, : as %3A, / as %2F, ? as %3F, # as %23, [ as %5B and ] as %5D"_q);
}

} // namespace
