// The direct reader of each record against the plain one, on random documents, many of them through
// the memory of one query. The seed is fixed, or taken from KELVRO_SEED; a failure prints it and
// the smallest document that shows it.

#include "model/bson_utils.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_bson.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_equality.h"
#include "tests/support/stored_members.h"

#include <bsoncxx/v1/exception.hpp>

#include <gtest/gtest.h>

#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using bson_utils::device_object;
using bson_utils::query_memory;
using namespace test_support;
using random_bson::document;
using test_support::raw_bson::document_bytes;

// Text tells whole numbers from others and orders nothing.
std::string textOf(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

template <typename Record>
std::string difference(const Record& direct, const Record& plain) {
    return differences(direct, plain);
}

std::string difference(const device_object& direct, const device_object& plain) {
    return direct.modem_id == plain.modem_id && textOf(direct.state) == textOf(plain.state)
               ? ""
               : textOf(direct.state) + " but plainly " + textOf(plain.state);
}

/// Empty if the direct reader gives nothing or what the plain one gives.
template <typename Record>
std::string disagreement(const document_bytes& bytes, query_memory& memory) {
    const auto direct = bson_utils::readOrdinary<Record>(bytes.view(), memory);
    if (!direct) {
        return {};
    }
    try {
        return difference(*direct, bson_utils::readPlain<Record>(bytes.view()));
    } catch (const bsoncxx::v1::exception& error) {
        return std::string{"only the plain reader throws: "} + error.what();
    }
}

template <typename Record>
std::string disagreement(const document& document, query_memory& memory) {
    return disagreement<Record>(random_bson::bytesOf(document), memory);
}

template <typename Record>
bool isOrdinary(const document& document, query_memory& memory) {
    return bson_utils::readOrdinary<Record>(random_bson::bytesOf(document).view(), memory)
        .has_value();
}

template <typename Record>
class Readers : public testing::Test {
protected:
    static std::uint32_t seed() { return randomSeed(20190324); }

    void expectAgreement(const document& document, int number) {
        if (disagreement<Record>(document, memory).empty()) {
            return;
        }
        const auto smallest = random_bson::shrink(document, [this](const auto& smaller) {
            return !disagreement<Record>(smaller, memory).empty();
        });
        FAIL() << "seed " << seed() << ", document " << number
               << ", smallest: " << testing::PrintToString(random_bson::bytesOf(smallest)) << '\n'
               << disagreement<Record>(smallest, memory);
    }

    std::mt19937_64 random{seed()};
    query_memory memory;
};

using records = testing::Types<model::message, model::dl_message, model::dev_value,
                               model::dev_event, device_object>;

struct record_name {
    template <typename Record>
    static std::string GetName(int) {
        return std::is_same_v<Record, model::message>      ? "Uplink"
               : std::is_same_v<Record, model::dl_message> ? "Downlink"
               : std::is_same_v<Record, model::dev_value>  ? "Value"
               : std::is_same_v<Record, model::dev_event>  ? "Event"
                                                           : "DeviceObject";
    }
};

TYPED_TEST_SUITE(Readers, records, record_name);

TYPED_TEST(Readers, AgreeOnOrdinaryDocumentsAndReadThemDirectly) {
    int direct = 0;
    for (int i = 0; i < KELVRO_DOCUMENTS; ++i) {
        const document document =
            random_bson::generateOrdinary(this->random, storedMembers<TypeParam>);
        this->expectAgreement(document, i);
        ASSERT_FALSE(this->HasFailure());
        direct += isOrdinary<TypeParam>(document, this->memory) ? 1 : 0;
    }
    EXPECT_GT(direct, KELVRO_DOCUMENTS / 10 * 7);
    EXPECT_LT(direct, KELVRO_DOCUMENTS);
}

// As a query does: the devices of a few makes in turn, each with its own members again and again.
TYPED_TEST(Readers, AgreeOnTheSimilarDocumentsOfOneQuery) {
    constexpr int documentsOfAQuery = 500;
    std::vector<document> makes;
    for (int i = 0; i < KELVRO_DOCUMENTS; ++i) {
        if (i % documentsOfAQuery == 0) {
            this->memory = {};
            makes.clear();
            for (int make = 0; make < 1 + i / documentsOfAQuery % 9; ++make) {
                makes.push_back(
                    random_bson::generateOrdinary(this->random, storedMembers<TypeParam>));
            }
        }
        const auto& make = makes[this->random() % makes.size()];
        this->expectAgreement(
            random_bson::generateSimilar(this->random, storedMembers<TypeParam>, make), i);
        ASSERT_FALSE(this->HasFailure());
    }
}

// The length at the start and the zero at the end are the library's to check.
TYPED_TEST(Readers, AgreeOnDamagedDocuments) {
    for (int i = 0; i < KELVRO_DOCUMENTS; ++i) {
        auto bytes = random_bson::bytesOf(
            random_bson::generateOrdinary(this->random, storedMembers<TypeParam>));
        const std::size_t at = 4 + this->random() % (bytes.bytes.size() - 5);
        bytes.bytes[at] = static_cast<char>(bytes.bytes[at] ^ (1 << this->random() % 8));
        ASSERT_EQ(disagreement<TypeParam>(bytes, this->memory), "")
            << "seed " << this->seed() << ", document " << i << ", byte " << at << ": "
            << testing::PrintToString(bytes);
    }
}

TYPED_TEST(Readers, AgreeOnStrangeDocuments) {
    for (int i = 0; i < KELVRO_DOCUMENTS; ++i) {
        if (i > 0 && i % 100'000 == 0) {
            std::cout << i << " of " << KELVRO_DOCUMENTS << " documents agree" << std::endl;
        }
        this->expectAgreement(random_bson::generate(this->random, storedMembers<TypeParam>), i);
        ASSERT_FALSE(this->HasFailure());
    }
}

} // namespace
