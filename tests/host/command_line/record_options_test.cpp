#include "host/command_line/record_options.h"

#include "host/command_line/json_options.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonArray>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

class RecordOptions : public testing::Test {
protected:
    RecordOptions() {
        host::addObisCodes(app, codes, "Codes");
        host::addTexts(app, "--tag", tags, "Tags");
        host::addLimit(app, "--limit", limit, "How many");
        host::addHexBytes(app, "--payload", payload, "Bytes");
        host::addJsonObject(app, "--data", data, "Data");
    }

    CLI::App app;
    std::list<QString> codes;
    std::list<QString> tags;
    int limit = host::usualLimit;
    QByteArray payload;
    QJsonObject data;
};

TEST_F(RecordOptions, TakeCodesApartAtCommas) {
    app.parse("--obis 1-0:1.8.0,own:leak --obis 2");
    EXPECT_EQ(codes, (std::list{"1-0:1.8.0"_q, "own:leak"_q, "2"_q}));
}

TEST_F(RecordOptions, RefuseACodeThatCanBeNone) {
    EXPECT_THROW(app.parse("--obis '1-0 1.8.0'"), CLI::ValidationError);
    EXPECT_THROW(app.parse("--obis ''"), CLI::Error);
}

TEST_F(RecordOptions, KeepCommasInTags) {
    app.parse("--tag a,b --tag ä");
    EXPECT_EQ(tags, (std::list{"a,b"_q, "ä"_q}));
}

TEST_F(RecordOptions, TakeALimitThatLeavesRoomForOneMore) {
    app.parse("--limit 0");
    EXPECT_EQ(limit, 0);
    EXPECT_THROW(app.parse("--limit 2147483647"), CLI::ValidationError);
    EXPECT_THROW(app.parse("--limit -1"), CLI::ValidationError);
}

TEST_F(RecordOptions, ReadBytes) {
    app.parse("--payload 0aFF");
    EXPECT_EQ(payload, "\x0a\xff"_qba);
    EXPECT_THROW(app.parse("--payload abc"), CLI::ValidationError);
    EXPECT_THROW(app.parse("--payload 0x0a"), CLI::ValidationError);
}

TEST_F(RecordOptions, ReadAJsonObject) {
    app.parse(R"(--data '{"a": [1]}')");
    EXPECT_EQ(data, (QJsonObject{{"a"_q, QJsonArray{1}}}));
    EXPECT_THROW(app.parse("--data [1]"), CLI::ValidationError);
    EXPECT_THROW(app.parse("--data '{}, {}'"), CLI::ValidationError);
}

} // namespace
