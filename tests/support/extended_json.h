#pragma once

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

#include <string>
#include <string_view>

namespace test_support {

/// Documents as MongoDB's extended JSON, so that a test shows what it stores and what it expects.
///
/// Written by hand, 5 is an int32, 5.0 a double and {"$numberLong": "5"} an int64; {"$oid": …} and
/// {"$date": {"$numberLong": …}} are what they say. Both functions use libbson alone, none of the
/// conversions under test. They throw std::runtime_error with libbson's words.

bsoncxx::v1::document::value fromJson(std::string_view extendedJson);

/// Canonical form: every type is spelled out and the fields keep their order, so two documents have
/// the same text only if they have the same bytes.
std::string toJson(const bsoncxx::v1::document::view& document);

/// The canonical form of a text, to compare with what toJson gives.
std::string canonical(std::string_view extendedJson);

} // namespace test_support
