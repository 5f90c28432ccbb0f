#include "host/watch/watch_view.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <ftxui/screen/screen.hpp>
#include <gmock/gmock.h>

namespace {

using namespace test_support::literals;
using host::Snapshot;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC); // 08:00:00

host::WatchState state() {
    host::WatchState state;
    state.devices = {1001};
    state.snapshot.emplace();
    state.snapshot->time = now;
    state.snapshot->lists[Snapshot::Uplinks] = {
        {{now, 1001, "water  evo868"_q}, {now.addSecs(-60), 1001, "heat  kamstrup"_q}}, 7};
    state.snapshot->lists[Snapshot::Events] = {{{now, 1001, QStringLiteral("1  LE\u001bAK")}}, 0};
    return state;
}

std::string screenOf(const host::WatchState& state, int width, int height) {
    auto screen =
        ftxui::Screen::Create(ftxui::Dimension::Fixed(width), ftxui::Dimension::Fixed(height));
    ftxui::Render(screen, host::drawWatch(state, width));
    return screen.ToString();
}

void pressAll(host::WatchState& state, const std::vector<std::string>& keys) {
    for (const auto& key : keys) {
        EXPECT_TRUE(host::press(state, key)) << key;
    }
}

TEST(WatchView, ShowsTheListThatIsChosen) {
    auto watch = state();
    EXPECT_THAT(host::linesOf(watch, 80), ElementsAre("2027-01-15 08:00:00  1001  water  evo868",
                                                      "2027-01-15 07:59:00  1001  heat  kamstrup"));
    pressAll(watch, {"3"});
    EXPECT_EQ(host::linesOf(watch, 80).size(), 1U);
    pressAll(watch, {"tab"});
    EXPECT_EQ(watch.shown, Snapshot::Uplinks);
    pressAll(watch, {"tab"});
    EXPECT_THAT(host::linesOf(watch, 80), IsEmpty());
}

TEST(WatchView, AlignsWhatStandsBehindTheDevices) {
    auto watch = state();
    watch.devices = {1001, 12345678};
    EXPECT_EQ(host::linesOf(watch, 40).front(), "08:00:00  1001      water  evo868");
}

TEST(WatchView, LeavesTheDateOutWhereItIsNarrow) {
    EXPECT_EQ(host::linesOf(state(), 40).front(), "08:00:00  1001  water  evo868");
}

TEST(WatchView, ShowsControlCharactersAsWhatTheyAre) {
    auto watch = state();
    pressAll(watch, {"3"});
    EXPECT_EQ(host::linesOf(watch, 40).front(), "08:00:00  1001  1  LE\\x1bAK");
}

TEST(WatchView, FiltersByText) {
    auto watch = state();
    pressAll(watch, {"/", "H", "E", "q", "backspace", "enter"});
    EXPECT_THAT(host::linesOf(watch, 40), ElementsAre("07:59:00  1001  heat  kamstrup"));
    pressAll(watch, {"escape"});
    EXPECT_EQ(host::linesOf(watch, 40).size(), 2U);
}

TEST(WatchView, TakesKeysForTextWhileTheFilterIsTyped) {
    auto watch = state();
    pressAll(watch, {"/", "p", "1", "ü", "backspace"});
    EXPECT_FALSE(watch.paused);
    EXPECT_EQ(watch.filter, "p1");
    pressAll(watch, {"escape"});
    EXPECT_EQ(watch.filter, "");
    EXPECT_FALSE(watch.typing);
}

TEST(WatchView, PausesAndGoesOn) {
    auto watch = state();
    pressAll(watch, {"p"});
    EXPECT_TRUE(watch.paused);
    EXPECT_THAT(screenOf(watch, 80, 24), HasSubstr("paused"));
    pressAll(watch, {" "});
    EXPECT_FALSE(watch.paused);
}

TEST(WatchView, DoesNotKnowOtherKeys) {
    auto watch = state();
    EXPECT_FALSE(host::press(watch, "x"));
    EXPECT_FALSE(host::press(watch, ""));
}

TEST(WatchView, FitsIntoFortyColumns) {
    const auto screen = screenOf(state(), 40, 12);
    for (const char* text :
         {"1 Uplinks 7", "2 Values 0", "3 Events 0", "q quit", "08:00:00, every"}) {
        EXPECT_THAT(screen, HasSubstr(text));
    }
}

TEST(WatchView, SaysWhatIsWrongAndKeepsWhatItHas) {
    auto watch = state();
    watch.fault = "asking mongodb://a/ failed: no answer"_q;
    const auto screen = screenOf(watch, 80, 24);
    EXPECT_THAT(screen, HasSubstr("trying again: asking mongodb://a/ failed: no answer"));
    EXPECT_THAT(screen, HasSubstr("water  evo868"));
}

TEST(WatchView, SaysThatNothingMatches) {
    auto watch = state();
    watch.filter = "nothing like this";
    EXPECT_THAT(screenOf(watch, 80, 24), HasSubstr("none with this text"));
}

TEST(RatePerMinute, CountsTheRecordsOfTheLastMinute) {
    const std::vector<host::WatchedRecord> records{
        {now, 1, {}}, {now.addSecs(-59), 1, {}}, {now.addSecs(-60), 1, {}}};
    EXPECT_EQ(host::ratePerMinute(records, 100, now), 2);
}

TEST(RatePerMinute, IsReckonedUpWhereMoreCameThanWereAskedFor) {
    const std::vector<host::WatchedRecord> records{
        {now, 1, {}}, {now.addSecs(-10), 1, {}}, {now.addSecs(-20), 1, {}}};
    EXPECT_EQ(host::ratePerMinute(records, 3, now), 9);
    EXPECT_EQ(host::ratePerMinute({{now, 1, {}}}, 1, now), 60);
}

} // namespace
