#pragma once

#include "host/plugin_file.h"
#include "tests/growing/await.h"
#include "tests/growing/several_servers.h"
#include "tests/soak/writer.h"
#include "tests/support/mongo_database.h"

#include <QLoggingCategory>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace growing {

/// The plug-in's file, and the servers behind HAProxy.
class GrowingTest : public testing::Test {
protected:
    using Writers = std::vector<std::unique_ptr<soak::Writer>>;

    GrowingTest() {
        test_support::needMongoInstance();
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    }

    static void start(const Writers& writers) {
        for (const auto& writer : writers) {
            writer->start();
        }
        awaitMoreOf(writers);
    }

    static void stop(const Writers& writers) {
        for (const auto& writer : writers) {
            writer->stop();
        }
    }

    /// A few hundred more acknowledged calls of each.
    static void awaitMoreOf(const Writers& writers) {
        constexpr std::int64_t more = 300;
        for (const auto& writer : writers) {
            const auto enough = writer->calls().acknowledged + more;
            await([&] { return writer->calls().acknowledged >= enough; },
                  writer->kind().name().toStdString());
        }
    }

    /// Lets a server fall and waits until each writer has had a call that began later and returned;
    /// says how long that took.
    template <typename Fall>
    static void letFall(const std::string& what, const Writers& writers, const Fall& fall) {
        const auto begin = soak::Clock::now();
        fall();
        for (const auto& writer : writers) {
            writer->serversAreBack(); // or the others are
        }
        await(
            [&] {
                return std::ranges::all_of(writers,
                                           [](const auto& writer) { return writer->isSettled(); });
            },
            "all write again after: " + what);
        const std::chrono::duration<double> took = soak::Clock::now() - begin;
        std::cout << what << ": all write again after " << took.count() << " s\n";
    }

    host::PluginFile plugin{QStringLiteral(KELVRO_PLUGIN_FILE)};
    SeveralServers servers;
};

} // namespace growing
