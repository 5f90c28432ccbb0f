#include "host/check/accounting.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using host::Accounting;
using namespace test_support::literals;

Accounting allEqual() {
    Accounting accounting;
    accounting.read = 51;
    accounting.stored = 51;
    accounting.equal = 51;
    return accounting;
}

TEST(Accounting, IsOneLine) {
    EXPECT_EQ(accountingLine(allEqual()), "51 read, 51 stored, 51 read back equal, 0 lost"_q);
}

TEST(Accounting, NamesRejectedDifferentAndUnexpectedRecordsOnlyWhereThereAreAny) {
    auto accounting = allEqual();
    accounting.read = 56;
    accounting.rejected = 3;
    accounting.stored = 53;
    accounting.different = 2;
    accounting.unexpected = 1;
    EXPECT_EQ(
        accountingLine(accounting),
        "56 read, 3 rejected, 53 stored, 51 read back equal, 0 lost, 2 different, 1 unexpected"_q);
}

TEST(Accounting, IsCompleteWhenEveryRecordCameBackEqual) {
    EXPECT_TRUE(isComplete(allEqual()));
}

TEST(Accounting, IsCompleteWithRejectedLines) {
    auto accounting = allEqual();
    accounting.read = 52;
    accounting.rejected = 1;
    EXPECT_TRUE(isComplete(accounting));
}

TEST(Accounting, IsIncompleteWhenARecordWasNotStored) {
    auto accounting = allEqual();
    accounting.read = 52;
    EXPECT_FALSE(isComplete(accounting));
}

TEST(Accounting, IsIncompleteWhenARecordIsLost) {
    auto accounting = allEqual();
    accounting.equal = 50;
    accounting.lost = 1;
    EXPECT_FALSE(isComplete(accounting));
}

TEST(Accounting, IsIncompleteWhenARecordDiffers) {
    auto accounting = allEqual();
    accounting.equal = 50;
    accounting.different = 1;
    EXPECT_FALSE(isComplete(accounting));
}

TEST(Accounting, IsIncompleteWhenARecordCameUnasked) {
    auto accounting = allEqual();
    accounting.unexpected = 1;
    EXPECT_FALSE(isComplete(accounting));
}

} // namespace
