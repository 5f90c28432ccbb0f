#include "redisclient/redisclient.h"
#include "tests/support/redis_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSet>
#include <QUuid>
#include <QVariantList>

#include <limits>
#include <string>

// On the common server. Every test works on keys of its own and removes them.

namespace {

using RedisClient::Connection;
using RedisClient::Response;

class RedisCommands : public testing::Test {
protected:
    ~RedisCommands() override {
        for (const int db : {0, 1}) {
            connection.commandSync({"DEL", key, otherKey}, db);
        }
    }

    Response run(const QList<QByteArray>& command, int db = 0) {
        return connection.commandSync(command, db);
    }
    QVariant valueOf(const QList<QByteArray>& command) { return run(command).getValue(); }

    Connection connection{test_support::commonServer()};
    const QByteArray key = "kelvro-test:" + QUuid::createUuid().toByteArray();
    const QByteArray otherKey = key + ":other";
};

QByteArray everyByte() {
    QByteArray bytes;
    for (int value = 0; value < 256; ++value) {
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}

TEST_F(RedisCommands, GiveAStatusAsItsText) {
    const Response response = run({"SET", key, "value"});

    EXPECT_EQ(response.type(), Response::Status);
    EXPECT_EQ(response.getValue(), QVariant(QByteArray("OK")));
}

TEST_F(RedisCommands, GiveBackWhatWasStored) {
    run({"SET", key, "value"});

    const Response response = run({"GET", key});

    EXPECT_EQ(response.type(), Response::Bulk);
    EXPECT_EQ(response.getValue(), QVariant(QByteArray("value")));
}

TEST_F(RedisCommands, KeepEveryByteOfAValue) {
    run({"SET", key, everyByte()});

    EXPECT_EQ(valueOf({"STRLEN", key}), QVariant(qlonglong{256}));
    EXPECT_EQ(valueOf({"GET", key}).toByteArray(), everyByte());
}

TEST_F(RedisCommands, KeepEveryByteOfAKey) {
    run({"HSET", key, everyByte(), "value"});

    EXPECT_EQ(valueOf({"HKEYS", key}), QVariant(QVariantList{everyByte()}));
    EXPECT_EQ(valueOf({"HGET", key, everyByte()}), QVariant(QByteArray("value")));
}

TEST_F(RedisCommands, TellAnEmptyValueFromNone) {
    run({"SET", key, ""});

    const Response empty = run({"GET", key});

    EXPECT_EQ(empty.type(), Response::Bulk);
    EXPECT_EQ(empty.getValue(), QVariant(QByteArray("")));
}

TEST_F(RedisCommands, GiveNothingForAKeyThatIsNotThere) {
    const Response response = run({"GET", key});

    EXPECT_EQ(response.type(), Response::Nil);
    EXPECT_FALSE(response.isErrorMessage());
    EXPECT_FALSE(response.getValue().isValid());
}

TEST_F(RedisCommands, GiveIntegersWithAll64Bits) {
    constexpr auto smallest = std::numeric_limits<qlonglong>::min();
    run({"SET", key, QByteArray::number(smallest + 1)});

    const Response response = run({"DECR", key});

    EXPECT_EQ(response.type(), Response::Integer);
    EXPECT_EQ(response.getValue().userType(), int{QMetaType::LongLong});
    EXPECT_EQ(response.getValue().toLongLong(), smallest);
}

TEST_F(RedisCommands, GiveTheNumberOfDeletedKeys) {
    run({"MSET", key, "1", otherKey, "2"});

    EXPECT_EQ(valueOf({"DEL", key, otherKey, key + ":none"}), QVariant(qlonglong{2}));
    EXPECT_EQ(valueOf({"EXISTS", key, otherKey}), QVariant(qlonglong{0}));
}

TEST_F(RedisCommands, GiveArraysWithInvalidElementsForWhatIsMissing) {
    run({"SET", key, "value"});

    const Response response = run({"MGET", key, otherKey});

    EXPECT_EQ(response.type(), Response::MultiBulk);
    const QVariantList expected{QByteArray("value"), QVariant()};
    EXPECT_EQ(response.getValue(), QVariant(expected));
}

TEST_F(RedisCommands, GiveNestedArraysNested) {
    const QVariantList inner{qlonglong{2}, QVariantList{QByteArray("deep")}};
    const QVariantList expected{qlonglong{1}, inner, QVariantList()};

    EXPECT_EQ(valueOf({"EVAL", "return {1, {2, {'deep'}}, {}}", "0"}), QVariant(expected));
}

TEST_F(RedisCommands, GiveTheMembersOfASet) {
    run({"SADD", key, "a", "b", "a"});

    QSet<QByteArray> members;
    for (const QVariant& member : valueOf({"SMEMBERS", key}).toList()) {
        members.insert(member.toByteArray());
    }

    EXPECT_EQ(members, (QSet<QByteArray>{"a", "b"}));
}

TEST_F(RedisCommands, ScanWithACursorAndAListOfKeys) {
    run({"SET", key, "value"});
    QVariantList found;
    QByteArray cursor = "0";
    do {
        const QVariantList answer = valueOf({"SCAN", cursor, "MATCH", key}).toList();
        ASSERT_EQ(answer.size(), 2);
        cursor = answer.at(0).toByteArray();
        found += answer.at(1).toList();
    } while (cursor != "0");

    EXPECT_EQ(found, QVariantList{key});
}

TEST_F(RedisCommands, GiveWhatTheServerRefusesAsAnErrorWithItsText) {
    run({"SET", key, "text"});

    const Response response = run({"LPUSH", key, "element"});

    EXPECT_TRUE(response.isErrorMessage());
    EXPECT_EQ(response.type(), Response::Error);
    EXPECT_FALSE(response.getValue().isValid());
    EXPECT_TRUE(response.errorMessage().startsWith("WRONGTYPE "));
}

TEST_F(RedisCommands, GoOnAfterAMalformedCommand) {
    EXPECT_TRUE(run({"DBSIZE", ""}).isErrorMessage());

    EXPECT_EQ(valueOf({"PING"}), QVariant(QByteArray("PONG")));
}

TEST_F(RedisCommands, MakeAnErrorInsideATransactionAnInvalidElement) {
    run({"SET", key, "text"});
    run({"MULTI"});
    run({"LPUSH", key, "element"});
    run({"GET", key});

    const QVariantList expected{QVariant(), QByteArray("text")};
    EXPECT_EQ(valueOf({"EXEC"}), QVariant(expected));
}

TEST_F(RedisCommands, CarryThousandsOfArguments) {
    QList<QByteArray> command{"RPUSH", key};
    for (int i = 0; i < 50'000; ++i) {
        command.append(QByteArray::number(i));
    }
    run(command);

    const QVariantList list = valueOf({"LRANGE", key, "0", "-1"}).toList();

    ASSERT_EQ(list.size(), 50'000);
    EXPECT_EQ(list.last(), QVariant(QByteArray("49999")));
}

TEST_F(RedisCommands, CarryMegabytes) {
    const QByteArray value = everyByte().repeated(65'536);
    run({"SET", key, value});

    EXPECT_TRUE(valueOf({"GET", key}).toByteArray() == value);
}

// Databases

TEST_F(RedisCommands, WorkOnTheDatabaseThatTheyAreFor) {
    run({"SET", key, "one"}, 1);

    EXPECT_EQ(run({"GET", key}, 0).type(), Response::Nil);
    EXPECT_EQ(run({"GET", key}, 1).getValue(), QVariant(QByteArray("one")));
}

TEST_F(RedisCommands, WorkOnTheDatabaseUsedLastWhenTheyNameNone) {
    run({"SET", key, "one"}, 1);

    EXPECT_EQ(connection.commandSync({"GET", key}).getValue(), QVariant(QByteArray("one")));
}

TEST_F(RedisCommands, DoNotRunWhenTheDatabaseIsRefused) {
    run({"SET", key, "kept"});
    std::string failure;
    try {
        run({"DEL", key}, 1'000'000);
    } catch (const Connection::Exception& exception) {
        failure = exception.what();
    }

    EXPECT_THAT(failure,
                testing::HasSubstr(
                    "DEL: database 1000000 cannot be selected: ERR DB index is out of range"));
    EXPECT_EQ(valueOf({"GET", key}), QVariant(QByteArray("kept")));
}

TEST_F(RedisCommands, StayOnTheirDatabaseAfterOneThatWasRefused) {
    run({"SET", key, "one"}, 1);
    EXPECT_THROW(run({"PING"}, 1'000'000), Connection::Exception);

    EXPECT_EQ(connection.commandSync({"GET", key}).getValue(), QVariant(QByteArray("one")));
    EXPECT_EQ(run({"GET", key}, 0).type(), Response::Nil);
}

TEST_F(RedisCommands, TakeAnyNegativeDatabaseForTheOneUsedLast) {
    run({"SET", key, "one"}, 1);

    for (const int db : {-1, -2, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(run({"GET", key}, db).getValue(), QVariant(QByteArray("one"))) << db;
    }
}

TEST_F(RedisCommands, FindTheirDatabaseAfterTheCallerSelectedAnother) {
    run({"SET", key, "zero"});
    run({"SELECT", "1"}, 0);

    EXPECT_EQ(run({"GET", key}, 0).getValue(), QVariant(QByteArray("zero")));
}

TEST_F(RedisCommands, FindTheirDatabaseAfterTheCallerWasRefusedAnother) {
    run({"SET", key, "zero"});
    run({"SET", key, "one"}, 1);

    EXPECT_TRUE(run({"SELECT", "1000000"}, 1).isErrorMessage());

    EXPECT_EQ(run({"GET", key}, 0).getValue(), QVariant(QByteArray("zero")));
    EXPECT_EQ(run({"GET", key}, 1).getValue(), QVariant(QByteArray("one")));
}

TEST_F(RedisCommands, FindTheirDatabaseAfterATransactionThatWasGivenUp) {
    run({"SET", key, "one"}, 1);
    run({"MULTI"}, 0);
    run({"GET", key}, 1);
    run({"DISCARD"}, 1);

    EXPECT_EQ(run({"GET", key}, 1).getValue(), QVariant(QByteArray("one")));
}

} // namespace
