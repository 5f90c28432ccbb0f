#pragma once

#include "tests/support/raw_bson.h"

#include <bson/bson.h>
#include <bsoncxx/v1/document/value.hpp>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Documents that the driver did not write: those of a record with every BSON type in every
/// member, and damaged in every way that BSON itself allows.
namespace strange_documents {

namespace raw = test_support::raw_bson;

struct element {
    std::string key;
    /// Type, key and value.
    std::string bytes;
};

using elements = std::vector<element>;

inline elements elementsOf(const bsoncxx::v1::document::view& document) {
    elements found;
    bson_iter_t iterator;
    bson_iter_init_from_data(&iterator, document.data(), document.size());
    while (bson_iter_next(&iterator)) {
        found.push_back({bson_iter_key(&iterator),
                         {reinterpret_cast<const char*>(document.data()) + iterator.off,
                          iterator.next_off - iterator.off}});
    }
    return found;
}

inline raw::document_bytes bytesOf(const elements& elements) {
    std::string content;
    for (const element& element : elements) {
        content += element.bytes;
    }
    return raw::doc(content);
}

/// `levels` of documents, one in the other.
inline raw::document_bytes nested(int levels) {
    raw::document_bytes document = raw::doc(raw::int32("n", 1));
    for (; levels > 1; --levels) {
        document = raw::doc(raw::embedded("o", document));
    }
    return document;
}

/// Each type of BSON, and the values of each at which readers stumble.
inline std::vector<std::string> valuesOf(const std::string& key) {
    using int32 = std::numeric_limits<std::int32_t>;
    using int64 = std::numeric_limits<std::int64_t>;
    using real = std::numeric_limits<double>;
    const auto content = raw::doc(raw::string("a", "x"), raw::null("a"));
    return {
        raw::number(key, 2.5),
        raw::number(key, -0.0),
        raw::number(key, real::quiet_NaN()),
        raw::number(key, real::infinity()),
        raw::number(key, real::denorm_min()),
        raw::number(key, real::max()),
        raw::string(key, ""),
        raw::string(key, "text"),
        raw::string(key, "\xEF\xBB\xBF\xF0\x9F\x98\x80"),
        raw::string(key, std::string(20'000, 'x')),
        raw::embedded(key, raw::doc()),
        raw::embedded(key, content),
        raw::embedded(key, nested(90)),
        raw::array(key, raw::doc()),
        raw::array(key, raw::doc(raw::embedded("0", content), raw::null("1"))),
        raw::binary(key, "bytes"),
        raw::binary(key, "sixteen bytes ..", 4),
        raw::oid(key, "twelve bytes"),
        raw::boolean(key, true),
        raw::date(key, 1),
        raw::date(key, int64::min()),
        raw::date(key, int64::max()),
        raw::null(key),
        raw::regex(key, "^a", "i"),
        raw::code(key, "f()"),
        raw::codeWithScope(key, "f()", raw::doc(raw::int32("x", 1))),
        raw::symbol(key, "text"),
        raw::undefined(key),
        raw::dbPointer(key, "db.name", "twelve bytes"),
        raw::int32(key, int32::min()),
        raw::timestamp(key, 5),
        raw::int64(key, int64::min()),
        raw::int64(key, int64::max()),
        raw::decimal128(key, 5, 0x3040000000000000),
        raw::minKey(key),
        raw::maxKey(key),
    };
}

/// All of them; `keep` is left as it is, for a query to find the documents by.
inline std::vector<elements> variantsOf(const elements& sound, std::string_view keep) {
    std::vector<elements> variants;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const std::string& key = sound[i].key;
        if (key == keep) {
            continue;
        }
        for (const std::string& bytes : valuesOf(key)) {
            variants.push_back(sound);
            variants.back()[i].bytes = bytes;
        }
        variants.push_back(sound); // left out
        variants.back().erase(variants.back().begin() + static_cast<std::ptrdiff_t>(i));
        variants.push_back(sound); // twice, the second one of another type
        variants.back().push_back({key, raw::null(key)});
    }
    variants.push_back(sound);
    std::ranges::reverse(variants.back());
    for (const char* key : {"", "$date", "a.b", "more"}) {
        variants.push_back(sound);
        variants.back().insert(variants.back().begin() + 1, {key, raw::int32(key, 1)});
    }
    return variants;
}

} // namespace strange_documents
