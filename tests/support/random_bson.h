#pragma once

#include "tests/support/raw_bson.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

/// Random BSON documents for comparing a fast reader with a slow one: mostly what a store holds,
/// and every strange thing that other writers may have put there.
namespace test_support::random_bson {

/// One element as a tree, so that a failing document can be made smaller.
struct element {
    std::string key;
    /// Type, key and value of an element without children.
    std::string bytes;
    /// 0x03 or 0x04 if the element is a document or an array of `children`.
    unsigned char nesting = 0;
    std::vector<element> children;
};

using document = std::vector<element>;

test_support::raw_bson::document_bytes bytesOf(const document& document);

/// A member that the reader under test looks at, with the type that its writer stores.
struct member {
    std::string key;
    enum kind { int32, int64, text, hex, date, object, oid, any } kind;
};

/// A document with most of `members`, some of them strange, and a few others.
document generate(std::mt19937_64& random, const std::vector<member>& members);

/// All of `members` in their order and nothing else, as the driver writes them; only now and then
/// is a text or a nested content out of the ordinary.
document generateOrdinary(std::mt19937_64& random, const std::vector<member>& members);

/// A document of the same make as `of`: in its nested documents the same keys with other values,
/// and only now and then something else. Its other members are those of generateOrdinary.
document generateSimilar(std::mt19937_64& random, const std::vector<member>& members,
                         const document& of);

/// The smallest document, by leaving out one element after the other, for which `fails` still
/// holds.
document shrink(document failing, const std::function<bool(const document&)>& fails);

} // namespace test_support::random_bson
