#include "host/fitted_rows.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using host::fittedRows;
using Columns = std::vector<host::Console::Column>;
using Rows = std::vector<QStringList>;
using namespace test_support::literals;

constexpr int anyWidth = std::numeric_limits<int>::max();

TEST(FittedRows, CutsLongTextsOnlyInColumnsThatAllowIt) {
    const Columns columns{{"A"_q}, {"B"_q, false, 6}};
    EXPECT_EQ(
        fittedRows(columns, {{"1234567890"_q, "1234567890"_q}, {"1"_q, "123456"_q}}, anyWidth),
        (Rows{{"1234567890"_q, "12345…"_q}, {"1"_q, "123456"_q}}));
}

TEST(FittedRows, TakesFromTheWidestUntilTheTableFits) {
    const Columns columns{{"A"_q}, {"B"_q, false, 30}, {"C"_q, false, 30}};
    const Rows rows{{"123"_q, QString(20, QLatin1Char('b')), QString(10, QLatin1Char('c'))}};
    // " 123 │ bbbb… │ cccc… " is as wide as this.
    EXPECT_EQ(fittedRows(columns, rows, 41), rows);
    EXPECT_EQ(fittedRows(columns, rows, 40).front().at(1), QString(18, QLatin1Char('b')) + "…"_q);
    EXPECT_EQ(fittedRows(columns, rows, 31).front().at(1), QString(9, QLatin1Char('b')) + "…"_q);
    EXPECT_EQ(fittedRows(columns, rows, 31).front().at(2), QString(10, QLatin1Char('c')));
}

TEST(FittedRows, LeavesFiveCharactersOfAText) {
    const Columns columns{{"A"_q, false, 30}};
    EXPECT_EQ(fittedRows(columns, {{"1234567890"_q}}, 1), (Rows{{"1234…"_q}}));
}

TEST(FittedRows, DoesNotCutACharacterInTwo) {
    const Columns columns{{"A"_q, false, 5}};
    EXPECT_EQ(fittedRows(columns, {{"123😀😀"_q}}, anyWidth), (Rows{{"123…"_q}}));
}

} // namespace
