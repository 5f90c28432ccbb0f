#pragma once

#include "mongo/dl_queue_persistent.h"
#include "mongo/driver_state_persistent.h"

#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

/// The two stores of durable copies are the same but for the collection, and so are their tests.
template <typename Store>
class PersistentStore : public test_support::FixedMongoDatabase {
protected:
    static constexpr const char* collection =
        std::is_same_v<Store, mongo::driver_state_persistent> ? "states" : "dl_queues";

    std::vector<std::string> documents() { return database.documents(collection); }

    /// Stores a document past the store; its "state" in extended JSON.
    void insert(int id, const std::string& state) {
        database.insert(collection,
                        "{\"_id\": " + std::to_string(id) + ", \"state\": " + state + "}");
    }

    Store store{test_support::mongoUrl()};
};

using PersistentStores = testing::Types<mongo::driver_state_persistent, mongo::dl_queue_persistent>;

struct store_names {
    template <typename Store>
    static std::string GetName(int) {
        return std::is_same_v<Store, mongo::driver_state_persistent> ? "driver_state" : "dl_queue";
    }
};

TYPED_TEST_SUITE(PersistentStore, PersistentStores, store_names);
