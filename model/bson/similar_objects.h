#pragma once

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

/// Makes the JSON objects of one query's nested documents, where ordinaryObject (json_text.h) is
/// the plain way that defines them.
///
/// The devices of one make send the same members again and again with other values. Such an object
/// is a copy of an earlier one, with which it shares the keys, and only the values that differ are
/// replaced: a fraction of the time that Qt's parser takes. Small documents are often wholly alike
/// and share one object. How much is remembered is bounded, and it is given up where the documents
/// are not alike.
class similar_objects {
public:
    /// What ordinaryObject(document) gives.
    std::optional<QJsonObject> object(const bsoncxx::v1::document::view& document);

private:
    struct member {
        std::string_view key;
        std::string_view value;
        std::uint8_t type;
        /// Among the members of the object, which Qt sorts.
        int place;
    };

    struct known_document {
        std::vector<std::uint8_t> bytes;
        QJsonObject object;
        /// In the order of the document; they refer to its bytes.
        std::vector<member> members;
    };

    struct small_document {
        std::string bytes;
        QJsonObject object;
    };

    /// A member of which the value is not that of the known document.
    struct difference {
        int place;
        QJsonValue value;
    };

    std::optional<QJsonObject> shared(const bsoncxx::v1::document::view& document);
    std::optional<QJsonObject> similar(const bsoncxx::v1::document::view& document);
    QJsonObject copied(const known_document& known) const;
    bool compare(const known_document& known, const bsoncxx::v1::document::view& document);
    bool textsDiffer() const;
    std::uint8_t remember(const bsoncxx::v1::document::view& document, const QJsonObject& object);

    std::size_t m_made = 0;
    std::size_t m_similar = 0;
    std::size_t m_missed = 0;
    std::size_t m_smallShared = 0;
    std::size_t m_smallMissed = 0;
    std::vector<known_document> m_known;
    /// Where in m_known a document of such a size, modulo the number of these, was last found.
    std::vector<std::uint8_t> m_latest;
    /// Each at the place that its hash gives.
    std::vector<small_document> m_small;
    /// Of the latest comparison; kept for its storage.
    std::vector<difference> m_differences;
};

} // namespace bson_utils
