#pragma once

#include "mongo/dl_message_repository.h"

#include "tests/mongo/records.h"
#include "tests/mongo/timed_line.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_commands.h"
#include "tests/support/mongo_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

/// A repository of downlink commands on a database of the test's own, watched from three sides:
/// what it sends, what it logs and what is in the database.
class DownlinkRepositoryTest : public test_support::UniqueMongoDatabase {
protected:
    static constexpr std::string_view collection = "dl_messages";
    static constexpr std::string_view unknownId = "0123456789abcdef01234567";

    /// Saves the command and gives its id.
    QString save(model::dl_message message) {
        repository.SaveMessage(message);
        return message.db_id;
    }

    static QString unknownIdText() {
        return QString::fromUtf8(unknownId.data(), static_cast<int>(unknownId.size()));
    }

    /// {"_id": {"$oid": …}} as text.
    static std::string withId(const QString& id) {
        return R"({"_id": {"$oid": ")" + id.toStdString() + R"("}})";
    }

    test_support::log_capture log;
    test_support::recording_client client{test_support::mongoUrl()};
    mongo::DLMessageRepository repository{client.database(database.name())};
};

/// The same on a server that does not answer.
class UnreachableDownlinkRepository : public testing::Test {
protected:
    test_support::log_capture log;
    test_support::recording_client client{test_support::unreachableMongoUrl()};
    mongo::DLMessageRepository repository{client.database("kelvro_test")};
};

/// The QString that the operation throws; the test fails if it throws none.
inline QString thrownText(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const QString& text) {
        return text;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}
