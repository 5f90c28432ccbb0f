#include "model/bson/bson_error.h"
#include "model/legacy_readers.h"
#include "tests/model/legacy_text_readers.h"
#include "tests/model/random_bson.h"
#include "tests/support/record_equality.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>

/// The readers that ship against the plain ones, on random documents. The seed is fixed, or taken
/// from KELVRO_SEED; a failure prints it and the smallest document that shows it.

namespace {

using random_bson::document;
using random_bson::member;

const std::vector<member> dlMembers{{"_id", member::oid},      {"modem_id", member::int32},
                                    {"api_key", member::text}, {"data", member::object},
                                    {"status", member::int32}, {"timeout", member::int32},
                                    {"f_ack", member::int32},  {"payload", member::hex},
                                    {"ttl", member::date},     {"timestamp", member::int64}};

const std::vector<member> valueMembers{
    {"_id", member::oid},         {"modem_id", member::int32},
    {"message_id", member::text}, {"timestamp", member::int64},
    {"tag", member::text},        {"obis_code", member::text},
    {"val_type", member::int64},  {"extended_data", member::object},
    {"ttl", member::date},        {"value", member::any}};

const std::vector<member> eventMembers{
    {"_id", member::oid},         {"modem_id", member::int32},       {"timestamp", member::int64},
    {"message_id", member::text}, {"event_code", member::int32},     {"message", member::text},
    {"parameter", member::int32}, {"extended_data", member::object}, {"ttl", member::date}};

// What reading gave: the record, or that it threw.
template <typename Reader>
auto outcome(Reader read, const test_support::raw_bson::document_bytes& bytes) {
    using Record = decltype(read(bytes.view()));
    try {
        return std::optional<Record>{read(bytes.view())};
    } catch (const bson_utils::bson_error&) {
        return std::optional<Record>{};
    }
}

template <typename Shipped, typename Plain>
std::string disagreement(Shipped shipped, Plain plain, const document& document) {
    const auto bytes = random_bson::bytesOf(document);
    const auto actual = outcome(shipped, bytes);
    const auto expected = outcome(plain, bytes);
    if (actual.has_value() != expected.has_value()) {
        return actual ? "only the plain reader throws" : "only the shipped reader throws";
    }
    return actual ? test_support::differences(*actual, *expected) : std::string{};
}

template <typename Shipped, typename Plain>
void compare(Shipped shipped, Plain plain, const std::vector<member>& members) {
    const char* chosen = std::getenv("KELVRO_SEED");
    const std::uint64_t seed = chosen != nullptr ? std::strtoull(chosen, nullptr, 0) : 20190324;
    std::mt19937_64 random{seed};
    for (int i = 0; i < KELVRO_DOCUMENTS; ++i) {
        if (i > 0 && i % 100'000 == 0) {
            std::cout << i << " of " << KELVRO_DOCUMENTS << " documents agree" << std::endl;
        }
        const document document = random_bson::generate(random, members);
        if (disagreement(shipped, plain, document).empty()) {
            continue;
        }
        const auto smallest = random_bson::shrink(document, [&](const auto& smaller) {
            return !disagreement(shipped, plain, smaller).empty();
        });
        FAIL() << "seed " << seed << ", document " << i
               << ", smallest: " << testing::PrintToString(random_bson::bytesOf(smallest)) << '\n'
               << disagreement(shipped, plain, smallest);
    }
}

TEST(LegacyReadersDifferential, DownlinksReadAsThroughText) {
    compare(bson_utils::fromBsonDL, legacy_text::readDL, dlMembers);
}

TEST(LegacyReadersDifferential, ValuesReadAsThroughText) {
    compare(bson_utils::fromBsonValue, legacy_text::readValue, valueMembers);
}

TEST(LegacyReadersDifferential, EventsReadAsThroughText) {
    compare(bson_utils::fromBsonEvent, legacy_text::readEvent, eventMembers);
}

} // namespace
