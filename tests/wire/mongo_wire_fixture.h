#pragma once

#include "tests/wire/mongo_stores.h"
#include "tests/wire/wire_faults.h"

#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/mongo_wire.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/system_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

/// A proxy before the MongoDB server, and the means to see what came of a call through it. Waiting
/// in vain takes no time here, as far as the code under test can tell it takes all of it.
class MongoWireTest : public testing::Test {
protected:
    static constexpr std::chrono::seconds connectTimeout{2};
    static constexpr std::chrono::seconds socketTimeout{3};
    /// What a loaded machine may add to a time-out.
    static constexpr std::chrono::seconds slack{10};
    /// For so long the driver does not ask again where it could not connect.
    static constexpr std::chrono::seconds pauseAfterAFailedConnect{5};

    MongoWireTest() { std::signal(SIGPIPE, SIG_DFL); }

    /// With time-outs of its own.
    std::string url() const { return proxy.url() + "&connectTimeoutMS=2000&socketTimeoutMS=3000"; }

    std::unique_ptr<Store> made(const MongoStore& kind) const {
        return kind.make(url(), database().name());
    }

    static std::int64_t stored(const MongoStore& kind, int device) {
        return database().count(kind.collection, "{\"modem_id\": " + std::to_string(device) + "}");
    }

    int requests(std::string_view name) const {
        const auto sent = proxy.sent();
        return static_cast<int>(std::ranges::count(sent, name, &test_support::sent_command::name));
    }

    static test_support::mongo_database& database() {
        static Database database;
        return database;
    }

    static int nextDevice() {
        static int last = 0;
        // The database's own connection is there before descriptors are counted.
        database().count("ul_messages");
        return ++last;
    }

    /// One that no other test has.
    const int device = nextDevice();

private:
    /// One for all tests, where the documents of a device are found without reading all others.
    class Database : public test_support::temporary_database {
    public:
        Database() {
            for (const MongoStore& kind : mongoStores()) {
                run("{\"createIndexes\": \"" + std::string(kind.collection) +
                    "\", \"indexes\": [{\"key\": {\"modem_id\": 1}, \"name\": \"device\"}]}");
            }
        }
    };

    test_support::DescriptorsAsBefore m_descriptors;

protected:
    test_support::log_capture log;
    test_support::MongoProxy proxy;

private:
    test_support::SkippedWaits m_waits{[this](int port) { return proxy.isStalling(port); }};
};
