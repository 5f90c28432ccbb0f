// The conversions on random content, against plain versions that write the bytes by hand.

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/random_json.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using bson_utils::fromBsonArr;
using bson_utils::fromBsonJobj;
using bson_utils::fromBsonUL;
using bson_utils::toBson;
using namespace test_support;
using namespace test_support::raw_bson;
using test_support::raw_bson::null;
using test_support::raw_bson::number;

constexpr std::uint32_t seeds = 1500;

enum class numbers { asDoubles, asTextSays };
enum class nulls { dropped, kept };

template <numbers Numbers, nulls Nulls>
struct plain_writer {
    static element_bytes element(const std::string& key, const QJsonValue& value) {
        switch (value.type()) {
        case QJsonValue::Bool:
            return boolean(key, value.toBool());
        case QJsonValue::Double:
            return typedNumber(key, value.toDouble());
        case QJsonValue::String:
            return string(key, value.toString().toStdString());
        case QJsonValue::Array:
            return array(key, document(value.toArray()));
        case QJsonValue::Object:
            return embedded(key, document(value.toObject()));
        default:
            return Nulls == nulls::kept ? null(key) : element_bytes{};
        }
    }

    static element_bytes typedNumber(const std::string& key, double value) {
        if (Numbers == numbers::asDoubles || std::floor(value) != value) {
            return number(key, value);
        }
        if (value >= std::numeric_limits<std::int32_t>::min() &&
            value <= std::numeric_limits<std::int32_t>::max()) {
            return int32(key, static_cast<std::int32_t>(value));
        }
        return int64(key, static_cast<std::int64_t>(value));
    }

    static document_bytes document(const QJsonObject& json) {
        std::string elements;
        for (const QString& key : json.keys()) {
            elements += element(key.toStdString(), json.value(key));
        }
        return doc(elements);
    }

    static document_bytes document(const QJsonArray& json) {
        std::string elements;
        int index = 0;
        for (const QJsonValue& value : json) {
            const element_bytes written = element(std::to_string(index), value);
            elements += written;
            index += written.empty() ? 0 : 1;
        }
        return doc(elements);
    }
};

using object_writer = plain_writer<numbers::asDoubles, nulls::dropped>;
using text_writer = plain_writer<numbers::asTextSays, nulls::kept>;

QJsonValue withoutNulls(const QJsonValue& value);

QJsonArray withoutNulls(const QJsonArray& json) {
    QJsonArray rest;
    for (const QJsonValue& value : json) {
        if (!value.isNull()) {
            rest.append(withoutNulls(value));
        }
    }
    return rest;
}

QJsonObject withoutNulls(const QJsonObject& json) {
    QJsonObject rest;
    for (auto member = json.begin(); member != json.end(); ++member) {
        if (!member.value().isNull()) {
            rest.insert(member.key(), withoutNulls(QJsonValue{member.value()}));
        }
    }
    return rest;
}

QJsonValue withoutNulls(const QJsonValue& value) {
    if (value.isArray()) {
        return withoutNulls(value.toArray());
    }
    return value.isObject() ? QJsonValue{withoutNulls(value.toObject())} : value;
}

TEST(RandomJson, IsWrittenAsByHandFromObjects) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonObject json = random_content{seed}.object(4);
        ASSERT_EQ(rawBson(toBson(json)), object_writer::document(json)) << "seed " << seed;
    }
}

TEST(RandomJson, IsWrittenAsByHandFromArrays) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonArray json = random_content{seed}.array(4);
        ASSERT_EQ(rawBson(toBson(json)), object_writer::document(json)) << "seed " << seed;
    }
}

TEST(RandomJson, IsWrittenAsByHandFromDocuments) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonObject json = random_content{seed}.object(4);
        ASSERT_EQ(rawBson(toBson(QJsonDocument{json})), text_writer::document(json))
            << "seed " << seed;
    }
}

TEST(RandomJson, ComesBackWithoutItsNullsFromTheObjectPath) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonObject json = random_content{seed}.object(4);
        ASSERT_EQ(fromBsonJobj(toBson(json).view()), withoutNulls(json)) << "seed " << seed;
    }
}

TEST(RandomJson, ComesBackWithoutItsNullsFromTheArrayPath) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonArray json = random_content{seed}.array(4);
        ASSERT_EQ(fromBsonArr(toBson(json).view()), withoutNulls(json)) << "seed " << seed;
    }
}

TEST(RandomJson, ComesBackWholeFromTheDocumentPath) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const QJsonObject json = random_content{seed}.object(4);
        ASSERT_EQ(fromBsonJobj(toBson(QJsonDocument{json}).view()), json) << "seed " << seed;
    }
}

model::message randomMessage(random_content& random) {
    model::message message;
    message.extra_text = random.text();
    message.extra_value1 = random.anyInt();
    message.extra_value2 = random.anyInt();
    message.modem_id = random.anyInt();
    message.station_id = random.anyInt();
    message.ttl = utcMsecs(qint64{random.anyInt()} * 1000 + random.below(1000));
    message.timestamp = utcSecs(random.below(4294967295));
    message.time_detected = utcSecs(random.below(4294967295));
    message.bs_timezone_offset = random.anyInt();
    message.phy = random.text();
    message.snr = random.anyInt();
    message.rssi = random.anyInt();
    message.tag = random.text();
    message.unique_id = random.anyUnsigned64();
    message.data = QJsonDocument{random.object(3)};
    message.extended_data = QJsonDocument{random.object(3)};
    message.parse_status = random.text();
    message.hw_type = random.text();
    message.protocol = random.text();
    message.payload = random.bytes();
    return message;
}

TEST(RandomMessage, ComesBackFromItsDocument) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        random_content random{seed};
        const model::message written = randomMessage(random);
        model::message expected = written;
        expected.extra_text.clear();
        expected.extra_value1 = 0;
        expected.extra_value2 = 0;
        ASSERT_EQ(differences(fromBsonUL(toBson(written).view()), expected, date_times::byInstant),
                  "")
            << "seed " << seed;
    }
}

TEST(RandomMessage, IsWrittenAsByHand) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        random_content random{seed};
        const model::message message = randomMessage(random);
        const auto secs = [](const QDateTime& time) { return time.toSecsSinceEpoch(); };
        const document_bytes expected =
            doc(string("_id", QString::number(message.unique_id, 16).toStdString()),
                int32("modem_id", message.modem_id), int32("station_id", message.station_id),
                string("phy", message.phy.toStdString()), int32("rssi", message.rssi),
                int32("snr", message.snr), date("ttl", message.ttl.toMSecsSinceEpoch()),
                int64("timestamp", secs(message.timestamp)),
                int64("time_detected", secs(message.time_detected)),
                int32("bs_timezone_offset", message.bs_timezone_offset),
                string("tag", message.tag.toStdString()),
                string("hw_type", message.hw_type.toStdString()),
                string("protocol", message.protocol.toStdString()),
                embedded("extended_data", text_writer::document(message.extended_data.object())),
                embedded("data", text_writer::document(message.data.object())),
                string("payload", message.payload.toHex().toStdString()),
                string("parse_status", message.parse_status.toStdString()));
        ASSERT_EQ(rawBson(toBson(message)), expected) << "seed " << seed;
    }
}

TEST(RandomCommand, IsWrittenAsByHand) {
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        random_content random{seed};
        model::dl_message command;
        command.f_ack = random.anyInt();
        command.modem_id = random.anyInt();
        command.timeout = random.anyInt();
        command.ttl = utcMsecs(random.anyInt());
        command.timestamp = utcSecs(random.below(4294967295));
        command.api_key = random.text();
        command.status = static_cast<model::dl_message::dl_status>(random.below(4));
        command.data = random.object(3);
        command.payload = random.bytes();
        const document_bytes expected = doc(
            int32("modem_id", command.modem_id), string("api_key", command.api_key.toStdString()),
            embedded("data", object_writer::document(command.data)),
            int32("status", static_cast<int>(command.status)), int32("timeout", command.timeout),
            int32("f_ack", command.f_ack), string("payload", command.payload.toHex().toStdString()),
            date("ttl", command.ttl.toMSecsSinceEpoch()),
            int64("timestamp", command.timestamp.toSecsSinceEpoch()));
        ASSERT_EQ(rawBson(toBson(command)), expected) << "seed " << seed;
    }
}

} // namespace
