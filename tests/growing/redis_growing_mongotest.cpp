#include "interfaces/idriver_state.h"
#include "tests/growing/growing_fixture.h"
#include "tests/growing/pushes.h"
#include "tests/support/qt_literals.h"

#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <limits>
#include <set>
#include <utility>

// A Redis primary that goes, and its replica, which Sentinel puts into its place.

namespace growing {

namespace {

using namespace test_support;
using namespace test_support::literals;
using Copy = Pushes::Copy;

class RedisWithSentinel : public GrowingTest {
protected:
    std::shared_ptr<interfaces::IDriverState> newStates() {
        auto states = plugin.factory().CreateDriverStateInst(servers.settings(), nullptr);
        states->SetPrefix("grow"_q);
        return states;
    }

    static void push(interfaces::IDriverState& states, int device, int number, bool durable) {
        states.SetValue(device, "call"_q, number);
        states.Push(device, durable);
    }

    /// Pushes a state until that works.
    void awaitWriting() {
        await(
            [this] {
                try {
                    push(*newStates(), 9'999'999, 1, false);
                    return true;
                } catch (const std::exception&) {
                    return false;
                }
            },
            "a state can be pushed");
    }

    /// By an object that has never had anything to do with the device.
    int pulled(int device) {
        const auto states = newStates();
        states->Pull(device);
        return states->GetAll(device).value("call"_q).toInt();
    }

    static bool has(RedisServer& redis, int device) {
        return redis.run({"EXISTS", "grow:" + QByteArray::number(device)}).toInt() == 1;
    }

    std::set<int> durableDevices() const {
        mongocxx::v1::client client{mongocxx::v1::uri{servers.mongoUrl()}};
        std::set<int> devices;
        auto documents = client.database("kelvrostorage").collection("states").find({});
        for (const auto& document : documents) {
            devices.insert(document["_id"].get_int32().value);
        }
        return devices;
    }

    /// What the primary has acknowledged so far the replica has as well.
    static void awaitReplication(RedisServer& primary) {
        primary.run({"SET", "marker", "1"});
        ASSERT_EQ(primary.run({"WAIT", "1", "0"}).toInt(), 1);
    }

    /// The network between the two is cut, and their clients do not notice.
    void cutOffReplica() {
        servers.redis(0).run({"ACL", "SETUSER", "default", "-psync", "-sync", "-replconf"});
        servers.redis(0).run({"CLIENT", "KILL", "TYPE", "replica"});
        await(
            [this] {
                return servers.redis(1).info("replication", "master_link_status:") == "down";
            },
            "the replica has no primary");
    }
};

class RedisWithSentinelUnderLoad : public RedisWithSentinel {
protected:
    RedisWithSentinelUnderLoad() {
        for (const auto& [copy, firstDevice] :
             {std::pair{Copy::Durable, 1'000'000}, std::pair{Copy::RedisOnly, 2'000'000}}) {
            auto pushes =
                std::make_unique<Pushes>(plugin.factory(), servers.settings(), copy, firstDevice);
            loads.push_back({pushes.get()});
            writers.push_back(std::make_unique<soak::Writer>(std::move(pushes)));
        }
        start(writers);
    }

    void noteReplicated() {
        for (std::size_t i = 0; i < loads.size(); ++i) {
            loads[i].replicated = writers[i]->calls().calls;
        }
        awaitReplication(servers.redis(0));
    }

    /// Nothing goes to the former primary any longer.
    void noteGone() {
        for (std::size_t i = 0; i < loads.size(); ++i) {
            loads[i].gone = writers[i]->calls().calls + 1; // one may be under way
        }
    }

    /// Of what was acknowledged, all is there but some of what only the former primary had.
    void judge(RedisServer& primary) {
        stop(writers);
        const std::set<int> durable = durableDevices();
        for (std::size_t i = 0; i < loads.size(); ++i) {
            const Load& load = loads[i];
            const std::string name = load.pushes->name().toStdString();
            const soak::CallFigures calls = writers[i]->calls();
            std::int64_t lost = 0;
            std::int64_t notDurable = 0;
            for (const int call : load.pushes->acknowledged()) {
                const int device = load.pushes->deviceOf(call);
                if (!has(primary, device)) {
                    ++lost;
                    EXPECT_GT(call, load.replicated) << name;
                    EXPECT_LE(call, load.gone) << name;
                }
                notDurable += durable.contains(device) ? 0 : 1;
            }
            std::cout << name << ": acknowledged " << calls.acknowledged << ", thrown "
                      << calls.thrown << ", lost in Redis " << lost << ", kept durably "
                      << calls.acknowledged - notDurable << '\n';
            for (const auto& [text, times] : calls.failures) {
                std::cout << "    " << times << " x " << text << '\n';
            }
            if (load.pushes->isDurable()) {
                EXPECT_EQ(notDurable, 0) << name;
            }
        }
    }

    struct Load {
        Pushes* pushes;
        /// Calls up to that one the replica has as well; unless noted, all.
        std::int64_t replicated = std::numeric_limits<std::int64_t>::max();
        /// Calls after that one began when the former primary had no client any longer.
        std::int64_t gone = 0;
    };
    std::vector<Load> loads;
    Writers writers;
};

TEST_F(RedisWithSentinelUnderLoad, LosesTheLastMomentAtMostWhenThePrimaryIsKilled) {
    noteReplicated();
    letFall("the Redis primary is killed", writers, [this] {
        servers.redis(0).kill();
        noteGone();
    });
    await([this] { return servers.isPrimary(1); }, "all agree on the new primary");
    awaitMoreOf(writers);

    // It comes back, and takes itself for the primary until the Sentinels correct it. Objects that
    // connect meanwhile must not be led to it.
    servers.redis(0).start();
    std::vector<int> meanwhile;
    await(
        [&] {
            const int device = 3'000'000 + static_cast<int>(meanwhile.size());
            push(*newStates(), device, 1, false);
            meanwhile.push_back(device);
            return servers.isReplica(0);
        },
        "the former primary is a replica");
    judge(servers.redis(1));
    std::cout << "while the former primary came back: acknowledged " << meanwhile.size() << '\n';
    EXPECT_TRUE(std::ranges::all_of(meanwhile, [this](int device) {
        return has(servers.redis(1), device);
    })) << "some went to the former primary";
}

TEST_F(RedisWithSentinelUnderLoad, LosesNothingWhenItsPrimaryIsReplacedWhileNobodyIsLetIn) {
    letFall("the Redis primary is replaced", writers, [this] {
        ASSERT_EQ(servers.haproxy().run("set server redis-a/a state maint"), "\n");
        await([this] { return servers.nobodyWritesAndReplicaHasAll(); },
              "the replica has what the primary has");
        servers.sentinel(0).replacePrimary();
        await([this] { return servers.isPrimary(1) && servers.isReplica(0); },
              "the two have changed places");
        ASSERT_EQ(servers.haproxy().run("set server redis-a/a state ready"), "\n");
    });
    awaitMoreOf(writers);
    judge(servers.redis(1));
}

TEST_F(RedisWithSentinel, LosesWhatTheReplicaHasNotGotButForTheDurableCopies) {
    constexpr int pushed = 100;
    constexpr int overwritten = 1;
    const auto states = newStates();
    push(*states, overwritten, 1, true);
    awaitReplication(servers.redis(0));
    cutOffReplica();
    push(*states, overwritten, 2, true);
    for (int i = 0; i < pushed; ++i) {
        push(*states, 1'000'000 + i, i + 1, true);
        push(*states, 2'000'000 + i, i + 1, false);
    }
    servers.redis(0).kill();
    await([this] { return servers.isPrimary(1); }, "the replica is the primary");
    awaitWriting();

    for (int i = 0; i < pushed; ++i) {
        EXPECT_FALSE(has(servers.redis(1), 1'000'000 + i));
        EXPECT_EQ(pulled(1'000'000 + i), i + 1) << "the durable copy stands in";
        EXPECT_EQ(pulled(2'000'000 + i), 0) << "there was no durable copy";
    }
    // What Redis still has goes before the durable copy, though that is newer.
    EXPECT_EQ(pulled(overwritten), 1);
    // The next push of a host that kept its object puts it right.
    states->Push(overwritten, true);
    EXPECT_EQ(pulled(overwritten), 2);
}

TEST_F(RedisWithSentinel, SaysNothingWhenMinReplicasToWriteForbidsAWrite) {
    constexpr int device = 1;
    servers.redis(0).run({"CONFIG", "SET", "min-replicas-to-write", "1"});
    cutOffReplica();
    const auto states = newStates();
    push(*states, device, 1, false);
    EXPECT_FALSE(has(servers.redis(0), device));
    EXPECT_EQ(pulled(device), 0);
    push(*states, device, 2, true);
    EXPECT_FALSE(has(servers.redis(0), device));
    EXPECT_EQ(pulled(device), 2) << "the durable copy stands in";
}

} // namespace

} // namespace growing
