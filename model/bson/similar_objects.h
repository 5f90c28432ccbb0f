#pragma once

#include "model/bson/element_walk.h"

#include <bsoncxx/v1/document/view.hpp>

#include <QJsonObject>
#include <QJsonValue>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bson_utils {

/// Makes the JSON objects of the nested documents of one query; ordinaryObject (json_text.h) is the
/// plain way that defines them.
///
/// The devices of one make send the same members again and again, with other values. Such an object
/// is a copy of an earlier one, with which it shares the keys, where only the values that differ
/// are replaced; that takes a fraction of the time of Qt's parser. Small documents are often alike
/// altogether, and share one object.
///
/// What is remembered is bounded (some 64 documents of up to 16 KiB), nothing is remembered of the
/// first few documents nor of those that are not ordered by their keys, as this driver writes them,
/// and the search is given up where the documents are not alike. Keeps no reference to a document.
/// One thread at a time; the objects themselves may go to any.
class similar_objects {
public:
    /// Nothing, or what every way of reading the document gives. Not nothing where ordinaryObject
    /// gives something.
    std::optional<QJsonObject> object(const bsoncxx::v1::document::view& document);

private:
    struct member {
        std::string_view key;
        /// The bytes of the value.
        std::string_view value;
        std::uint8_t type;
    };

    struct known_document {
        std::vector<std::uint8_t> bytes;
        QJsonObject object;
        /// In the order of their keys, as in the object; they refer to the bytes.
        std::vector<member> members;
    };

    struct small_document {
        std::string bytes;
        QJsonObject object;
    };

    /// What the document has in place of a known one's value.
    struct replacement {
        /// Among the members, from 0.
        int place = 0;
        element_walk element;
    };

    struct success {
        std::size_t found = 0;
        std::size_t missed = 0;

        bool pays() const;
    };

    std::optional<QJsonObject> shared(const bsoncxx::v1::document::view& document);
    std::optional<QJsonObject> similar(const bsoncxx::v1::document::view& document);
    std::optional<QJsonValue> valueOf(const element_walk& element);
    std::optional<QJsonValue> listOf(const bsoncxx::v1::document::view& array);
    std::optional<QJsonObject> remembered(const bsoncxx::v1::document::view& document,
                                          std::uint8_t& place);
    std::optional<QJsonObject> copied(const known_document& known,
                                      const bsoncxx::v1::document::view& document);
    bool compare(const known_document& known, const bsoncxx::v1::document::view& document);
    bool isReplaceable(const element_walk& element) const;
    bool textsDiffer() const;
    static bool readMembers(known_document& known);

    std::size_t m_made = 0;
    success m_sharing;
    success m_copying;
    std::vector<known_document> m_known;
    /// For each size of a document, modulo their number: where in m_known the latest one was found.
    std::vector<std::uint8_t> m_latest;
    /// Each where the hash of its bytes says.
    std::vector<small_document> m_small;
    /// Of the latest comparison, from m_first on; before them those of the documents around it.
    std::vector<replacement> m_replacements;
    std::size_t m_first = 0;
    int m_depth = 0;
};

} // namespace bson_utils
