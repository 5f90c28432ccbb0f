#include "host/doctor/index_check.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::Severity;

host::ListedIndex listed(const QByteArray& index) {
    return host::listedIndex(host::documentFromJson(index).view());
}

const host::CollectionLayout& events() {
    return host::storeLayout().at(3);
}

std::vector<host::ListedIndex> soundIndexes() {
    return {listed(R"({"v": 2, "key": {"_id": 1}, "name": "_id_"})"),
            listed(R"({"v": 2, "key": {"modem_id": 1, "timestamp": -1}, "name": "a"})"),
            listed(R"({"v": 2, "key": {"modem_id": "hashed"}, "name": "b"})"),
            listed(R"({"v": 2, "key": {"ttl": 1}, "name": "c", "expireAfterSeconds": 60})")};
}

TEST(IndexCheck, HasNothingAgainstTheLayout) {
    const auto findings = host::indexFindings(events(), soundIndexes());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].severity, Severity::Ok);
}

TEST(IndexCheck, TakesWholeNumbersOfAnyTypeForTheSame) {
    auto indexes = soundIndexes();
    indexes[1] = listed(
        R"({"key": {"modem_id": {"$numberDouble": "1.0"}, "timestamp": {"$numberLong": "-1"}}, "name": "a"})");
    indexes[3] = listed(
        R"({"key": {"ttl": 1.0}, "name": "c", "expireAfterSeconds": {"$numberLong": "60"}})");
    EXPECT_EQ(host::indexFindings(events(), indexes)[0].severity, Severity::Ok);
}

TEST(IndexCheck, SaysHowToMakeAnIndexThatIsMissing) {
    auto indexes = soundIndexes();
    indexes.pop_back();
    const auto findings = host::indexFindings(events(), indexes);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].found, "{ttl: 1} is missing: documents stay for ever"_q);
    EXPECT_EQ(findings[0].advice,
              "in mongosh, after `use kelvrostorage`: "
              "db.eav_events.createIndex({ttl: 1}, {expireAfterSeconds: 60})"_q);
}

TEST(IndexCheck, QuotesHashedInTheShell) {
    auto indexes = soundIndexes();
    indexes.erase(indexes.begin() + 2);
    EXPECT_TRUE(host::indexFindings(events(), indexes)[0].advice.endsWith(
        "createIndex({modem_id: \"hashed\"})"_q));
}

TEST(IndexCheck, TellsTheOrderOfTheKeys) {
    auto indexes = soundIndexes();
    indexes[1] = listed(R"({"key": {"timestamp": -1, "modem_id": 1}, "name": "a"})");
    EXPECT_EQ(host::indexFindings(events(), indexes).size(), 2U);
}

TEST(IndexCheck, FindsAnotherExpiry) {
    auto indexes = soundIndexes();
    indexes[3] = listed(R"({"key": {"ttl": 1}, "name": "c", "expireAfterSeconds": 3600})");
    const auto findings = host::indexFindings(events(), indexes);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].found,
              "{ttl: 1} removes documents 3600 s after the date; it should be: 60 s"_q);
    EXPECT_TRUE(findings[0].advice.contains("dropIndex(\"c\")"_q));
}

TEST(IndexCheck, ShowsAllDigitsOfAnExpiry) {
    auto indexes = soundIndexes();
    indexes[3] = listed(R"({"key": {"ttl": 1}, "name": "c", "expireAfterSeconds": 31536001})");
    EXPECT_EQ(host::indexFindings(events(), indexes)[0].found,
              "{ttl: 1} removes documents 31536001 s after the date; it should be: 60 s"_q);
}

TEST(IndexCheck, FindsAnExpiryThatThereShouldNotBe) {
    auto indexes = soundIndexes();
    indexes[1] = listed(
        R"({"key": {"modem_id": 1, "timestamp": -1}, "name": "a", "expireAfterSeconds": 5})");
    EXPECT_EQ(host::indexFindings(events(), indexes)[0].severity, Severity::Warning);
}

TEST(IndexCheck, FindsOptionsThatTheLayoutDoesNotHave) {
    auto indexes = soundIndexes();
    indexes[1] = listed(
        R"({"key": {"modem_id": 1, "timestamp": -1}, "name": "a", "unique": true, "sparse": true})");
    EXPECT_EQ(host::indexFindings(events(), indexes)[0].found,
              "{modem_id: 1, timestamp: -1} is unique, sparse, and should not be"_q);
}

TEST(IndexCheck, NotesAnIndexMore) {
    auto indexes = soundIndexes();
    indexes.push_back(listed(R"({"key": {"event_code": 1}, "name": "mine"})"));
    const auto findings = host::indexFindings(events(), indexes);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].severity, Severity::Note);
    EXPECT_TRUE(findings[0].advice.endsWith("db.eav_events.dropIndex(\"mine\")"_q));
}

TEST(IndexCheck, WarnsOfAnIndexMoreThatRemovesDocuments) {
    auto indexes = soundIndexes();
    indexes.push_back(
        listed(R"({"key": {"timestamp": 1}, "name": "mine", "expireAfterSeconds": 5})"));
    EXPECT_EQ(host::indexFindings(events(), indexes)[0].severity, Severity::Warning);
}

} // namespace
