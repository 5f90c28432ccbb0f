#include "host/doctor/server_checks.h"

#include "host/doctor/redis_check.h"
#include "host/doctor/redis_keys_check.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::Severity;

TEST(ClockCheck, TakesWhatWasSaidInBetweenForTheSame) {
    EXPECT_EQ(host::clockFinding("S"_q, 1'500, 1'000, 2'000).severity, Severity::Ok);
    EXPECT_EQ(host::clockFinding("S"_q, 4'000, 1'000, 2'000).severity, Severity::Ok);
}

TEST(ClockCheck, NotesSecondsAndWarnsOfHalfAMinute) {
    const auto ahead = host::clockFinding("S"_q, 12'000, 1'000, 2'000);
    EXPECT_EQ(ahead.severity, Severity::Note);
    EXPECT_EQ(ahead.found, "10 s ahead of this machine's"_q);
    EXPECT_EQ(ahead.details.value("ahead_ms"_q).toInt(), 10'000);
    const auto behind = host::clockFinding("S"_q, 0, 200'000, 200'100);
    EXPECT_EQ(behind.severity, Severity::Warning);
    EXPECT_EQ(behind.found, "3 min behind this machine's"_q);
}

TEST(RoundTripCheck, CallsSeveralTimes) {
    int calls = 0;
    const auto finding = host::roundTripFinding("S"_q, [&] { ++calls; });
    EXPECT_GE(calls, 5);
    EXPECT_TRUE(finding.details.value("round_trip_ms"_q).isDouble());
}

TEST(Duration, IsShownInItsUnit) {
    EXPECT_EQ(host::duration(119), "119 s"_q);
    EXPECT_EQ(host::duration(120), "2 min"_q);
    EXPECT_EQ(host::duration(7'200), "2 h"_q);
    EXPECT_EQ(host::duration(172'800), "2 days"_q);
}

host::RedisFacts memory(const QByteArray& limit, const QByteArray& policy) {
    return {{"maxmemory", limit}, {"maxmemory_policy", policy}, {"used_memory", "950"}};
}

Severity memorySeverity(const QByteArray& limit, const QByteArray& policy) {
    return host::redisMemoryFindings(memory(limit, policy)).front().severity;
}

TEST(RedisMemoryCheck, WarnsWhereKeysMayBeDropped) {
    EXPECT_EQ(memorySeverity("2000", "allkeys-lru"), Severity::Warning);
    EXPECT_EQ(memorySeverity("0", "allkeys-lru"), Severity::Note);
    EXPECT_EQ(memorySeverity("2000", "volatile-lru"), Severity::Ok);
    EXPECT_EQ(memorySeverity("2000", "noeviction"), Severity::Ok);
}

TEST(RedisMemoryCheck, WarnsBeforeItIsFull) {
    EXPECT_EQ(memorySeverity("1000", "noeviction"), Severity::Warning);
}

Severity persistenceSeverity(const host::RedisFacts& info, const host::RedisFacts& config) {
    return host::redisPersistenceFindings(info, config).back().severity;
}

TEST(RedisPersistenceCheck, TellsWhatIsKept) {
    const host::RedisFacts on{{"aof_enabled", "1"}};
    const host::RedisFacts off{{"aof_enabled", "0"}};
    EXPECT_EQ(persistenceSeverity(on, {{"appendfsync", "everysec"}}), Severity::Ok);
    EXPECT_EQ(persistenceSeverity(on, {{"appendfsync", "no"}}), Severity::Note);
    EXPECT_EQ(persistenceSeverity(off, {{"save", "3600 1"}}), Severity::Note);
    EXPECT_EQ(persistenceSeverity(off, {{"save", ""}}), Severity::Warning);
    // The server does not let this user look.
    EXPECT_EQ(persistenceSeverity(off, {}), Severity::Note);
}

TEST(RedisPersistenceCheck, FindsThatTheServerCannotWrite) {
    for (const char* fact :
         {"rdb_last_bgsave_status", "aof_last_write_status", "aof_last_bgrewrite_status"}) {
        EXPECT_EQ(host::redisPersistenceFindings({{"aof_enabled", "1"}, {fact, "err"}}, {})
                      .front()
                      .severity,
                  Severity::Error)
            << fact;
    }
}

TEST(RedisInfo, IsReadLineByLine) {
    const auto info = host::redisInfo("# Server\r\nredis_version:8.0.2\r\nos:Linux: x\r\n\r\n");
    EXPECT_EQ(info.value("redis_version"), "8.0.2"_qba);
    EXPECT_EQ(info.value("os"), "Linux: x"_qba);
    EXPECT_EQ(info.size(), 2);
}

TEST(RoleOfKey, IsTold) {
    for (const char* key : {"dev:clients:17", "dev:properties:17", "dev:clients:-1"}) {
        EXPECT_EQ(host::roleOfKey(key), "client"_q) << key;
    }
    for (const char* key : {"17", "0", "-3"}) {
        EXPECT_EQ(host::roleOfKey(key), "queue"_q) << key;
    }
    for (const char* key : {"drv:17", ":17", "a:b:-3", "dev:other:17"}) {
        EXPECT_EQ(host::roleOfKey(key), "state"_q) << key;
    }
    for (const char* key : {"", "x", "17x", "drv:", "drv:x", "dev:clients:17:x"}) {
        EXPECT_EQ(host::roleOfKey(key), ""_q) << key;
    }
}

} // namespace
