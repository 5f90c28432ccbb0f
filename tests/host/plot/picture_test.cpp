#include "host/plot/picture.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

host::Picture picture() {
    return {.title = "t"_q,
            .time = {.label = "Time"_q,
                     .format = "'%H:%M'"_q,
                     .begin = 100,
                     .end = 200,
                     .offsetSecs = 3600,
                     .ticSecs = 10,
                     .firstTic = 3700},
            .values = {{"v"_q, false}},
            .drawings = {{{}, "1 2\n"_q, "using 1:2"_q, 0}}};
}

QString script(const host::Picture& picture) {
    return host::plotScript(picture, "dumb"_q);
}

TEST(PlotScript, HasTheDataWithin) {
    EXPECT_TRUE(script(picture()).startsWith("$data0 << END_OF_DATA\n1 2\nEND_OF_DATA\n"_q));
}

TEST(PlotScript, KeepsQuotesInNamesFromEndingTheText) {
    auto named = picture();
    named.title = "a'b\nc"_q;
    EXPECT_TRUE(script(named).contains("set title 'a''bc'\n"_q));
}

TEST(PlotScript, GivesTheAxisTimesOfItsZone) {
    EXPECT_TRUE(script(picture()).contains("set xtics 3700, 10 time\n"
                                           "set xrange [3700:3800]\n"_q));
}

TEST(PlotScript, HasALegendForWhatIsNamed) {
    auto named = picture();
    EXPECT_TRUE(script(named).contains("set key off\n"_q));
    named.drawings.front().name = "curve"_q;
    EXPECT_FALSE(script(named).contains("set key off\n"_q));
    EXPECT_TRUE(script(named).contains("title 'curve'"_q));
}

TEST(PlotScript, DrawsOnTheAxisAtTheRight) {
    auto two = picture();
    two.values.push_back({"right"_q, true});
    two.drawings.push_back({{}, "1 3\n"_q, "using 1:2"_q, 1});
    EXPECT_TRUE(script(two).contains("set y2label 'right'\n"_q));
    EXPECT_TRUE(script(two).contains("set y2range [0:*]\n"_q));
    EXPECT_TRUE(script(two).contains("$data1 using 1:2 axes x1y2 notitle\n"_q));
}

TEST(PlotScript, DrawsWithTheTerminal) {
    EXPECT_TRUE(script(picture()).contains("set terminal dumb noenhanced\nplot"_q));
}

} // namespace
