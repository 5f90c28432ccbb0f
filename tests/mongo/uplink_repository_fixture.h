#pragma once

#include "mongo/ul_app_message_reopository.h"

#include "tests/mongo/records.h"
#include "tests/mongo/timed_line.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_commands.h"
#include "tests/support/mongo_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// A repository of uplinks on a database of the test's own, watched from three sides: what it
/// sends, what it logs and what is in the database.
class UplinkRepositoryTest : public test_support::UniqueMongoDatabase {
protected:
    static constexpr std::string_view collection = "ul_messages";

    void save(std::initializer_list<model::message> messages) {
        for (const model::message& message : messages) {
            repository.SaveMessage(message);
        }
    }

    records::ids_by_device idsFor(const model::filter_roll& filter) {
        return records::idsOf(*repository.GetMessages(filter));
    }

    test_support::log_capture log;
    test_support::recording_client client{test_support::mongoUrl()};
    mongo::ULAPPMessageRepository repository{client.database(database.name())};
};

/// The same on a server that does not answer.
class UnreachableUplinkRepository : public testing::Test {
protected:
    test_support::log_capture log;
    test_support::recording_client client{test_support::unreachableMongoUrl()};
    mongo::ULAPPMessageRepository repository{client.database("kelvro_test")};
};
