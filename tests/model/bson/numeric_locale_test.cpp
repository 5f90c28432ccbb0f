// Every conversion in a process whose numbers have a decimal comma. Each content is such that its
// document goes the plain way, through the C library's conversions of numbers.

#include "model/bson/numeric_locale.h"
#include "model/bson/json_document.h"
#include "model/bson/json_text.h"
#include "model/bson_utils.h"
#include "model/documents/device_object.h"
#include "model/model_convertors.h"
#include "tests/support/decimal_comma.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace test_support;
using namespace test_support::literals;
using namespace test_support::raw_bson;

QJsonDocument parsed(const char* text) {
    return QJsonDocument::fromJson(text);
}

struct content {
    const char* name;
    const char* json;
    document_bytes document;

    friend void PrintTo(const content& parameter, std::ostream* out) { *out << parameter.json; }
};

class DecimalComma : public testing::TestWithParam<content> {
protected:
    decimal_comma locale;
};

TEST_P(DecimalComma, KeepsTheFractionsOfADocument) {
    EXPECT_EQ(rawBson(bson_utils::toBson(parsed(GetParam().json))), GetParam().document);
}

TEST_P(DecimalComma, KeepsTheFractionsOfEveryRecordThatIsWritten) {
    const auto nested = [](const bsoncxx::v1::document::value& document, const char* key) {
        const auto value = document.view()[key].get_document().value;
        return std::string{reinterpret_cast<const char*>(value.data()), value.size()};
    };
    model::message message = sampleMessage();
    message.data = message.extended_data = parsed(GetParam().json);
    model::dev_value value = sampleValue();
    value.extended_data = message.data;
    model::dev_event event = sampleEvent();
    event.extended_data = message.data;

    EXPECT_EQ(nested(bson_utils::toBson(message), "data"), GetParam().document.bytes);
    EXPECT_EQ(nested(bson_utils::toBson(message), "extended_data"), GetParam().document.bytes);
    EXPECT_EQ(nested(bson_utils::toBson(value), "extended_data"), GetParam().document.bytes);
    EXPECT_EQ(nested(bson_utils::toBson(event), "extended_data"), GetParam().document.bytes);
}

TEST_P(DecimalComma, KeepsTheFractionsOfADocumentThatIsRead) {
    const QJsonObject json = bson_utils::legacyObject(GetParam().document.view());
    EXPECT_EQ(json.value(json.contains("t"_q) ? "t"_q : "0"_q).toDouble(), 2.5);
}

INSTANTIATE_TEST_SUITE_P(
    Contents, DecimalComma,
    testing::Values(content{"BesideAnEmoji", R"({"n": "😀", "t": 2.5})",
                            doc(string("n", "😀"), number("t", 2.5))},
                    content{"BesideADate", R"({"t": 2.5, "when": {"$date": 5}})",
                            doc(number("t", 2.5), date("when", 5))},
                    content{"InAnArray", "[2.5]", doc(number("0", 2.5))},
                    // Qt prints a whole number of more than 53 bits as the double next to it.
                    content{"BesideAWideNumber", R"({"id": 9007199254740993, "t": 2.5})",
                            doc(int64("id", 9007199254740992), number("t", 2.5))},
                    content{"Ordinary", R"({"t": 2.5})", doc(number("t", 2.5))}),
    [](const auto& test) { return std::string{test.param.name}; });

template <typename Record>
Record read(const document_bytes& document) {
    bson_utils::query_memory memory;
    return bson_utils::readDocument<Record>(document.view(), memory);
}

// Not as this driver writes it, so it is read through text.
const auto strangeContent = doc(date("when", 5), number("t", 2.5));

TEST(DecimalCommaReaders, KeepTheFractionsOfEveryRecord) {
    const decimal_comma locale;
    EXPECT_EQ(read<model::dev_value>(doc(number("value", 2.5))).value.toDouble(), 2.5);
    for (const QJsonObject& json :
         {read<model::dev_value>(doc(embedded("extended_data", strangeContent)))
              .extended_data.object(),
          read<model::dev_event>(doc(embedded("extended_data", strangeContent)))
              .extended_data.object(),
          read<model::dl_message>(doc(embedded("data", strangeContent))).data,
          read<bson_utils::device_object>(doc(int32("_id", 7), embedded("state", strangeContent)))
              .state,
          bson_utils::fromBsonJobj(strangeContent.view())}) {
        EXPECT_EQ(json.value("t"_q).toDouble(), 2.5);
    }
}

TEST(DecimalCommaReaders, KeepTheFractionsOfOrdinaryDocuments) {
    const decimal_comma locale;
    const auto fraction = doc(number("t", 2.5));
    EXPECT_EQ(bson_utils::fromBsonJobj(fraction.view()).value("t"_q).toDouble(), 2.5);
    const auto state =
        read<bson_utils::device_object>(doc(int32("_id", 7), embedded("state", fraction)));
    EXPECT_EQ(state.state.value("t"_q).toDouble(), 2.5);
}

TEST(DecimalCommaJson, KeepsTheFractionsOfQueues) {
    const decimal_comma locale;
    model::dl_queues queues;
    queues.dl["q1"_q].elements["e7"_q].data = {{"t"_q, 2.5}};
    const QByteArray text =
        QJsonDocument{model_convertors::toJson(queues)}.toJson(QJsonDocument::Compact);

    EXPECT_TRUE(text.contains("\"t\":2.5")) << text.toStdString();
    const auto back =
        model_convertors::fromJson<model::dl_queues>(QJsonDocument::fromJson(text).object());
    EXPECT_EQ(differences(back, queues), "");
}

TEST(NumericLocale, GivesTheThreadItsLocaleBack) {
    const decimal_comma locale;
    {
        const bson_utils::numeric_locale decimalPoint;
        EXPECT_EQ(std::strtod("2.5", nullptr), 2.5);
    }
    EXPECT_EQ(std::strtod("2,5", nullptr), 2.5);
}

} // namespace
