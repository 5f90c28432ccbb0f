#pragma once

#include "fuzz/support/bson_of_choices.h"
#include "fuzz/support/target.h"
#include "model/bson_utils.h"
#include "model/documents/device_object.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>

#include <optional>
#include <string>
#include <utility>

namespace fuzz {

inline std::string jsonOf(const QJsonDocument& json) {
    return json.toJson(QJsonDocument::Compact).toStdString();
}

/// One line for each member that differs; of contents also what only their text shows.
template <typename Record>
std::string difference(const Record& direct, const Record& plain) {
    std::string lines = test_support::differences(direct, plain);
    host::forEachMember(direct, plain,
                        [&](std::string_view name, const auto& first, const auto& second) {
                            using Member = std::decay_t<decltype(first)>;
                            if constexpr (std::is_same_v<Member, QJsonDocument> ||
                                          std::is_same_v<Member, QJsonObject>) {
                                if (jsonOf(QJsonDocument{first}) != jsonOf(QJsonDocument{second})) {
                                    lines += name;
                                }
                            }
                        });
    return lines;
}

inline std::string difference(const bson_utils::device_object& direct,
                              const bson_utils::device_object& plain) {
    const bool same = direct.modem_id == plain.modem_id &&
                      jsonOf(QJsonDocument{direct.state}) == jsonOf(QJsonDocument{plain.state});
    return same ? "" : jsonOf(QJsonDocument{direct.state});
}

template <typename Record>
std::optional<Record> readPlainOrRefuse(const bsoncxx::v1::document::view& document) {
    try {
        return bson_utils::readPlain<Record>(document);
    } catch (const bsoncxx::v1::exception&) {
        return std::nullopt;
    }
}

/// The direct reader gives nothing, or what the plain one gives.
template <typename Record>
void requireAgreement(const test_support::raw_bson::document_bytes& document, std::uint32_t times,
                      bson_utils::query_memory& memory) {
    const auto plain = readPlainOrRefuse<Record>(document.view());
    for (; times > 0; --times) {
        const auto direct = bson_utils::readOrdinary<Record>(document.view(), memory);
        if (direct) {
            require(plain.has_value(), "the direct reader reads what the plain one refuses");
            const std::string lines = difference(*direct, *plain);
            require(lines.empty(), "the direct reader reads what the plain one reads", lines);
        }
    }
}

/// The documents that an input stands for, as those of one query.
template <typename Record>
void compareReaders(std::string_view input,
                    const std::vector<test_support::random_bson::member>& members) {
    bson_utils::query_memory memory;
    for (similar_documents documents{input, members}; documents.next();) {
        requireAgreement<Record>(documents.document(), documents.times(), memory);
    }
}

} // namespace fuzz
