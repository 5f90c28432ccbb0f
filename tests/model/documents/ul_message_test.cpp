// A stored uplink document back to a message.

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <bsoncxx/v1/exception.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using bson_utils::fromBsonUL;
using bson_utils::toBson;
using namespace test_support;
using namespace test_support::literals;
using namespace test_support::raw_bson;

/// A document field by field, to be changed by a test before it is put together.
class uplink_document {
public:
    uplink_document& set(std::string_view key, const element_bytes& element) {
        find(key)->second = element;
        return *this;
    }

    uplink_document& remove(std::string_view key) {
        m_fields.erase(find(key));
        return *this;
    }

    uplink_document& insertFirst(const element_bytes& element) {
        m_fields.insert(m_fields.begin(), {"", element});
        return *this;
    }

    uplink_document& append(const element_bytes& element) {
        m_fields.push_back({"", element});
        return *this;
    }

    uplink_document& reverse() {
        std::ranges::reverse(m_fields);
        return *this;
    }

    document_bytes build() const {
        std::string elements;
        for (const auto& [key, element] : m_fields) {
            elements += element;
        }
        return doc(elements);
    }

private:
    using field = std::pair<std::string, element_bytes>;

    std::vector<field>::iterator find(std::string_view key) {
        const auto found = std::ranges::find(m_fields, key, &field::first);
        if (found == m_fields.end()) {
            throw std::invalid_argument("no such field");
        }
        return found;
    }

    std::vector<field> m_fields{
        {"_id", string("_id", "1badcafe")},
        {"modem_id", int32("modem_id", 1001)},
        {"station_id", int32("station_id", 2002)},
        {"phy", string("phy", "phy-868")},
        {"rssi", int32("rssi", -112)},
        {"snr", int32("snr", -7)},
        {"ttl", date("ttl", 1900000000123)},
        {"timestamp", int64("timestamp", 1700000001)},
        {"time_detected", int64("time_detected", 1700000002)},
        {"bs_timezone_offset", int32("bs_timezone_offset", 180)},
        {"tag", string("tag", "hourly")},
        {"hw_type", string("hw_type", "meter-3")},
        {"protocol", string("protocol", "proto-9")},
        {"extended_data", embedded("extended_data", doc(string("e", "x")))},
        {"data", embedded("data", doc(int32("n", 5)))},
        {"payload", string("payload", "01ab")},
        {"parse_status", string("parse_status", "ok")},
    };
};

/// What is read of that document: the sample without what the store does not keep.
model::message expectedMessage() {
    model::message message = sampleMessage();
    message.extra_text.clear();
    message.extra_value1 = 0;
    message.extra_value2 = 0;
    message.ttl = message.ttl.toLocalTime();
    message.timestamp = message.timestamp.toLocalTime();
    message.time_detected = message.time_detected.toLocalTime();
    return message;
}

model::message read(const uplink_document& document) {
    const document_bytes bytes = document.build();
    return fromBsonUL(bytes.view());
}

TEST(FromBsonUl, ReadsEveryField) {
    EXPECT_EQ(differences(read({}), expectedMessage()), "");
}

TEST(FromBsonUl, InvertsToBson) {
    EXPECT_EQ(differences(fromBsonUL(toBson(sampleMessage()).view()), expectedMessage()), "");
}

TEST(FromBsonUl, ResetsTheHostsOwnMembers) {
    const model::message message = fromBsonUL(toBson(sampleMessage()).view());
    EXPECT_EQ(message.extra_text, ""_q);
    EXPECT_EQ(message.extra_value1, 0);
    EXPECT_EQ(message.extra_value2, 0);
}

TEST(FromBsonUl, DoesNotReadTheHostsOwnMembersFromTheDocument) {
    uplink_document document;
    document.append(string("extra_text", "x")).append(int64("extra_value1", 1));
    EXPECT_EQ(differences(read(document), expectedMessage()), "");
}

TEST(FromBsonUl, ReadsFieldsInAnyOrder) {
    EXPECT_EQ(differences(read(uplink_document{}.reverse()), expectedMessage()), "");
}

TEST(FromBsonUl, IgnoresOtherFields) {
    uplink_document document;
    document.insertFirst(null("x")).append(minKey("modem_id_")).append(date("Tag", 1));
    EXPECT_EQ(differences(read(document), expectedMessage()), "");
}

TEST(FromBsonUl, TakesTheFirstOfARepeatedField) {
    uplink_document document;
    document.append(int32("modem_id", 9)).append(null("tag")).append(date("ttl", 5));
    EXPECT_EQ(differences(read(document), expectedMessage()), "");
    document.insertFirst(int32("modem_id", 7));
    EXPECT_EQ(read(document).modem_id, 7);
}

TEST(FromBsonUl, LeavesTheTtlNullWithoutThatField) {
    model::message expected = expectedMessage();
    expected.ttl = QDateTime{};
    EXPECT_EQ(differences(read(uplink_document{}.remove("ttl")), expected), "");
}

struct field_types {
    const char* field;
    std::vector<element_bytes> mistyped;

    friend void PrintTo(const field_types& parameter, std::ostream* out) {
        *out << parameter.field;
    }
};

std::vector<element_bytes> allBut(std::string_view key, unsigned char type) {
    std::vector<element_bytes> elements{
        number(key, 1.0),
        string(key, "1"),
        embedded(key, doc()),
        array(key, doc()),
        binary(key, "1"),
        undefined(key),
        oid(key, "twelve bytes"),
        boolean(key, true),
        date(key, 1),
        null(key),
        regex(key, "x", ""),
        dbPointer(key, "n", "twelve bytes"),
        code(key, "f"),
        symbol(key, "1"),
        codeWithScope(key, "f", doc()),
        int32(key, 1),
        timestamp(key, 1),
        int64(key, 1),
        decimal128(key, 1, 0x3040000000000000),
        minKey(key),
        maxKey(key),
    };
    std::erase_if(elements, [&](const element_bytes& element) {
        return static_cast<unsigned char>(element.front()) == type;
    });
    return elements;
}

class FromBsonUlField : public testing::TestWithParam<field_types> {};

TEST_P(FromBsonUlField, ThrowsOnEveryOtherType) {
    EXPECT_EQ(GetParam().mistyped.size(), 20U);
    for (const element_bytes& element : GetParam().mistyped) {
        const document_bytes bytes = uplink_document{}.set(GetParam().field, element).build();
        EXPECT_THROW(fromBsonUL(bytes.view()), bsoncxx::v1::exception)
            << "type " << static_cast<int>(element.front());
    }
}

TEST_P(FromBsonUlField, ThrowsWhenMissingUnlessItIsTheTtl) {
    const document_bytes bytes = uplink_document{}.remove(GetParam().field).build();
    if (std::string_view{GetParam().field} == "ttl") {
        EXPECT_NO_THROW(fromBsonUL(bytes.view()));
    } else {
        EXPECT_THROW(fromBsonUL(bytes.view()), bsoncxx::v1::exception);
    }
}

field_types typed(const char* field, unsigned char type) {
    return {field, allBut(field, type)};
}

INSTANTIATE_TEST_SUITE_P(
    AllSeventeen, FromBsonUlField,
    testing::Values(typed("_id", 0x02), typed("modem_id", 0x10), typed("station_id", 0x10),
                    typed("phy", 0x02), typed("rssi", 0x10), typed("snr", 0x10), typed("ttl", 0x09),
                    typed("timestamp", 0x12), typed("time_detected", 0x12),
                    typed("bs_timezone_offset", 0x10), typed("tag", 0x02), typed("hw_type", 0x02),
                    typed("protocol", 0x02), typed("extended_data", 0x03), typed("data", 0x03),
                    typed("payload", 0x02), typed("parse_status", 0x02)),
    [](const auto& test) { return std::string{test.param.field}; });

TEST(FromBsonUl, ThrowsOnAnEmptyDocument) {
    EXPECT_THROW(fromBsonUL(doc().view()), bsoncxx::v1::exception);
}

TEST(FromBsonUl, ThrowsOnDamagedBytesBehindTheFields) {
    document_bytes damaged = uplink_document{}.append(int32("x", 1)).build();
    damaged.bytes[damaged.bytes.size() - 8] = '\x55';
    EXPECT_THROW(fromBsonUL(damaged.view()), bsoncxx::v1::exception);
}

struct read_id {
    const char* name;
    const char* text;
    quint64 id;

    friend void PrintTo(const read_id& parameter, std::ostream* out) { *out << parameter.name; }
};

class FromBsonUlId : public testing::TestWithParam<read_id> {};

TEST_P(FromBsonUlId, IsReadAsHexadecimalOrZero) {
    EXPECT_EQ(read(uplink_document{}.set("_id", string("_id", GetParam().text))).unique_id,
              GetParam().id);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FromBsonUlId,
    testing::Values(read_id{"Zero", "0", 0}, read_id{"Lowercase", "ff", 255},
                    read_id{"Uppercase", "FF", 255}, read_id{"LeadingZeros", "00ff", 255},
                    read_id{"SixteenFs", "ffffffffffffffff", 0xffffffffffffffff},
                    read_id{"HighestBit", "8000000000000000", 0x8000000000000000},
                    read_id{"SeventeenDigits", "1ffffffffffffffff", 0}, read_id{"Empty", "", 0},
                    read_id{"NoDigits", "xyz", 0}, read_id{"OneOtherLetter", "fg", 0},
                    read_id{"InnerSpace", "f f", 0}, read_id{"Negative", "-1", 0},
                    read_id{"BeyondAscii", "\xc3\xa9", 0},
                    // Qt's number parser takes these, too.
                    read_id{"Prefixed", "0xff", 255}, read_id{"OuterSpaces", " ff ", 255},
                    read_id{"Signed", "+ff", 255}),
    [](const auto& test) { return std::string{test.param.name}; });

struct read_payload {
    const char* name;
    const char* text;
    QByteArray bytes;

    friend void PrintTo(const read_payload& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class FromBsonUlPayload : public testing::TestWithParam<read_payload> {};

TEST_P(FromBsonUlPayload, IsDecodedOverInvalidCharacters) {
    EXPECT_EQ(read(uplink_document{}.set("payload", string("payload", GetParam().text))).payload,
              GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FromBsonUlPayload,
    testing::Values(read_payload{"Empty", "", ""_qba},
                    read_payload{"Lowercase", "01ab", "\x01\xab"_qba},
                    read_payload{"Uppercase", "01AB", "\x01\xab"_qba},
                    read_payload{"Zeros", "00ff00", "\x00\xff\x00"_qba},
                    // Digits pair up from the end, so a single one stands at the front.
                    read_payload{"OddCount", "1ab", "\x01\xab"_qba},
                    read_payload{"OddCountOfLetters", "abc", "\x0a\xbc"_qba},
                    read_payload{"Separators", "0 1-a:b", "\x01\xab"_qba},
                    read_payload{"NoDigits", "xyz", ""_qba},
                    read_payload{"OtherLetters", "0xZ1", "\x01"_qba},
                    read_payload{"BeyondAscii",
                                 "\xc3\xa9\xe2\x82\xac"
                                 "1f",
                                 "\x1f"_qba}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(FromBsonUl, ReadsTextsAsUtf8) {
    uplink_document document;
    document.set("tag", string("tag", "\xd0\xba\xf0\x9f\x98\x80"));
    EXPECT_EQ(read(document).tag, "\xd0\xba\xf0\x9f\x98\x80"_q);
}

TEST(FromBsonUl, ReadsWhatJsonHasNoTypeForAsNull) {
    uplink_document document;
    document.set("data", embedded("data", doc(date("d", 5), oid("o", "twelve bytes"),
                                              binary("b", "x"), int64("i", 1099511627776),
                                              array("l", doc(date("0", 5), int32("1", 6))))));
    const QJsonValue none{QJsonValue::Null};
    EXPECT_EQ(read(document).data.object(), (QJsonObject{{"d"_q, none},
                                                         {"o"_q, none},
                                                         {"b"_q, none},
                                                         {"i"_q, 1099511627776.0},
                                                         {"l"_q, QJsonArray{none, 6}}}));
}

TEST(FromBsonUl, ReadsTheKeysOfDataAsLatin1) {
    uplink_document document;
    document.set("extended_data", embedded("extended_data", doc(int32("\xc3\xa9", 1))));
    EXPECT_EQ(read(document).extended_data.object(), (QJsonObject{{"\xc3\x83\xc2\xa9"_q, 1}}));
}

TEST(FromBsonUl, GivesEmptyObjectsForEmptyDocuments) {
    uplink_document document;
    document.set("data", embedded("data", doc()));
    const model::message message = read(document);
    EXPECT_TRUE(message.data.isObject());
    EXPECT_EQ(message.data.object(), QJsonObject{});
}

// The store keeps no difference between a document without content and one with an empty object.
TEST(FromBsonUl, GivesEmptyObjectsForWhatWasANullDocument) {
    model::message message = sampleMessage();
    message.data = QJsonDocument{};
    EXPECT_TRUE(fromBsonUL(toBson(message).view()).data.isObject());
}

TEST(FromBsonUl, GivesAnObjectOfIndexesForWhatWasAnArray) {
    model::message message = sampleMessage();
    message.data = QJsonDocument{QJsonArray{"x"_q, 2}};
    EXPECT_EQ(fromBsonUL(toBson(message).view()).data.object(),
              (QJsonObject{{"0"_q, "x"_q}, {"1"_q, 2}}));
}

} // namespace
