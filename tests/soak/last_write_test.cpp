#include "tests/soak/last_write.h"

#include <gtest/gtest.h>

namespace {

using soak::LastWrite;

TEST(LastWrite, IsTheLastAcknowledgedOne) {
    LastWrite place;
    place.note(1, true);
    place.note(2, true);
    EXPECT_FALSE(place.mayHold(0));
    EXPECT_FALSE(place.mayHold(1));
    EXPECT_TRUE(place.mayHold(2));
}

TEST(LastWrite, MayBeALaterOneThatThrew) {
    LastWrite place;
    place.note(1, true);
    place.note(2, false);
    place.note(3, false);
    EXPECT_TRUE(place.mayHold(2));
}

TEST(LastWrite, DoesNotChangeBetweenTwoReadings) {
    LastWrite place;
    place.note(1, true);
    place.note(2, false);
    ASSERT_TRUE(place.mayHold(1));
    EXPECT_FALSE(place.mayHold(2));
}

TEST(LastWrite, IsNothingUntilACallReturns) {
    LastWrite place;
    place.note(1, false);
    EXPECT_TRUE(place.mayHold(0));
}

} // namespace
