#include "host/output/record_output.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonObject>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using host::OutputForm;
using namespace test_support::literals;

class RecordOutput : public testing::Test {
protected:
    std::string shown(OutputForm form, const std::vector<QJsonArray>& records) {
        host::RecordOutput output(
            console, form, {{"modem_id"_q, "Device"_q, true}, {"tag"_q, "Tag"_q}, {"data"_q, {}}});
        for (const auto& record : records) {
            output.add(record);
        }
        output.finish();
        return stream.str();
    }

    const QJsonArray ordinary{1001, "hourly"_q, QJsonObject{{"volume"_q, 2.5}}};
    std::ostringstream stream;
    host::Console console{stream, host::Console::Kind::Plain};
};

TEST_F(RecordOutput, ShowsTheFieldsWithATitleInATable) {
    EXPECT_EQ(shown(OutputForm::Table, {ordinary}), " Device │ Tag\n"
                                                    "────────┼────────\n"
                                                    "   1001 │ hourly\n");
}

TEST_F(RecordOutput, ShowsNoTableOfNothing) {
    EXPECT_EQ(shown(OutputForm::Table, {}), "");
}

TEST_F(RecordOutput, ShowsAnObjectALineInJson) {
    EXPECT_EQ(shown(OutputForm::JsonLines, {ordinary, {1002, QJsonValue(), QJsonArray{1}}}),
              R"({"data":{"volume":2.5},"modem_id":1001,"tag":"hourly"})"
              "\n"
              R"({"data":[1],"modem_id":1002,"tag":null})"
              "\n");
}

TEST_F(RecordOutput, ShowsTheNamesFirstInCsv) {
    EXPECT_EQ(shown(OutputForm::Csv, {}), "modem_id,tag,data\r\n");
}

TEST_F(RecordOutput, QuotesInCsvWhatWouldBreakALine) {
    EXPECT_EQ(shown(OutputForm::Csv, {ordinary,
                                      {1, "a,b"_q, QJsonValue()},
                                      {2, "two\r\nlines"_q, 0.1},
                                      {3, "say \"no\""_q, true}}),
              "modem_id,tag,data\r\n"
              "1001,hourly,\"{\"\"volume\"\":2.5}\"\r\n"
              "1,\"a,b\",\r\n"
              "2,\"two\r\nlines\",0.1\r\n"
              "3,\"say \"\"no\"\"\",true\r\n");
}

TEST(TimeCell, IsInUtcUnlessLocalTimeIsWanted) {
    const QDateTime time({2026, 11, 22}, {10, 0}, Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(host::timeCell(time, false), QJsonValue("2026-11-22T09:00:00Z"_q));
    const auto local = time.toLocalTime();
    EXPECT_EQ(host::timeCell(time, true),
              QJsonValue(local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate)));
}

TEST(TimeCell, HasMillisecondsIfTheTimeHas) {
    EXPECT_EQ(host::timeCell(QDateTime::fromMSecsSinceEpoch(1'500, Qt::UTC), false),
              QJsonValue("1970-01-01T00:00:01.500Z"_q));
}

TEST(TimeCell, IsNullForNoTime) {
    EXPECT_TRUE(host::timeCell({}, false).isNull());
}

} // namespace
