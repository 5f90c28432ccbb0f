#pragma once

#include "fuzz/support/target.h"
#include "model/bson/json_document.h"
#include "model/bson/json_text.h"
#include "model/bson/json_values.h"
#include "model/json/compact_json.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <optional>

namespace fuzz {

inline std::optional<std::string> textWayOrRefusal(const QJsonDocument& json) {
    try {
        return test_support::raw_bson::rawBson(bson_utils::writeText(json)).bytes;
    } catch (const bsoncxx::v1::exception&) {
        return std::nullopt;
    }
}

/// Everything that the driver writes of a JSON object, in each of its ways.
inline void writeEachWay(const QJsonObject& object) {
    const QByteArray text = model_convertors::compactJson(object);
    require(text == model_convertors::plainJson(object), "compact JSON is that of Qt",
            text.toStdString());

    const QJsonDocument document{object};
    if (const auto ordinary = bson_utils::writeOrdinary(document)) {
        const auto plain = textWayOrRefusal(document);
        require(plain && test_support::raw_bson::rawBson(*ordinary).bytes == *plain,
                "BSON without the text is that by way of it", text.toStdString());
    }
    try {
        const auto bson = bson_utils::toBson(object);
        const QJsonObject inserted = bson_utils::insertedObject(bson.view());
        const auto ordinary = bson_utils::ordinaryObject(bson.view());
        require(!ordinary || *ordinary == inserted, "what was stored reads alike in each way",
                text.toStdString());
        bson_utils::legacyObject(bson.view());
    } catch (const bsoncxx::v1::exception&) {
        // a key with a zero character
    }
}

} // namespace fuzz
