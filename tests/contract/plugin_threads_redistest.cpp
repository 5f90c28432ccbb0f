#include "tests/contract/one_of_each.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <latch>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

using namespace test_support;

// What a host with many threads may do. Also run by the thread sanitizer.
namespace {

/// Runs the body on threads that begin together and throws what one of them threw; it is given the
/// thread's number, counted from 0.
template <typename Body>
void onThreadsAtOnce(int count, const Body& body) {
    std::latch begin{count};
    std::vector<std::future<void>> running;
    for (int n = 0; n < count; ++n) {
        running.push_back(std::async(std::launch::async, [&, n] {
            begin.arrive_and_wait();
            body(n);
        }));
    }
    for (auto& thread : running) {
        thread.get();
    }
}

class PluginOnThreads : public EveryKindOfObject {
protected:
    LoadedPlugin plugin;
    // Loaded before the threads begin, as a host does.
    interfaces::IDatabaseFactory* factory = plugin.factory();
};

TEST_F(PluginOnThreads, ServesSixteenThatEachMakeAndUseTheirOwnObjects) {
    constexpr int records = 5;
    make(factory); // lays the stores out
    onThreadsAtOnce(devices, [&](int n) {
        one_of_each own = make(factory, n);
        for (int number = 1; number <= records; ++number) {
            own.store(number);
            own.expectToRead(number);
        }
    });

    for (int n = 0; n < devices; ++n) {
        expectStored(n, records);
    }
}

TEST_F(PluginOnThreads, LaysTheStoresOutForAllThatComeFirst) {
    onThreadsAtOnce(4, [&](int n) { make(factory, n).store(1); });

    for (int n = 0; n < 4; ++n) {
        expectStored(n, 1);
    }
    EXPECT_EQ(database.indexes("ul_messages").size(), 7u);
    EXPECT_EQ(database.indexes("dl_messages").size(), 6u);
}

TEST_F(PluginOnThreads, MakesObjectsThatAnotherUsesAndAThirdDestroys) {
    std::optional<one_of_each> objects;
    std::thread{[&] { objects.emplace(make(factory)); }}.join();
    std::thread{[&] { objects->store(1); }}.join();
    std::thread{[&] {
        objects->store(2);
        objects->expectToRead(2);
    }}.join();
    std::thread{[&] { objects.reset(); }}.join();

    expectStored(0, 2);
}

struct handed_on {
    one_of_each objects;
    int n;
    int stored = 0;
};

/// Objects on their way between threads.
class hand_over {
public:
    explicit hand_over(std::size_t expected) : m_expected(expected) {}

    void put(handed_on object) {
        const std::lock_guard lock{m_mutex};
        m_waiting.push_back(std::move(object));
        m_changed.notify_one();
    }

    /// One less to come.
    void end() {
        const std::lock_guard lock{m_mutex};
        --m_expected;
        m_changed.notify_all();
    }

    /// Waits; nothing if no more will come.
    std::optional<handed_on> take() {
        std::unique_lock lock{m_mutex};
        m_changed.wait(lock, [&] { return !m_waiting.empty() || m_expected == 0; });
        if (m_waiting.empty()) {
            return std::nullopt;
        }
        std::optional<handed_on> object{std::move(m_waiting.front())};
        m_waiting.pop_front();
        return object;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<handed_on> m_waiting;
    std::size_t m_expected;
};

TEST_F(PluginOnThreads, HandObjectsToEachOther) {
    constexpr int objects = 4;
    constexpr int records = 12;
    hand_over waiting{objects};
    for (int n = 0; n < objects; ++n) {
        waiting.put({make(factory, n), n});
    }
    onThreadsAtOnce(8, [&](int /*n*/) {
        while (std::optional<handed_on> taken = waiting.take()) {
            taken->objects.store(++taken->stored);
            if (taken->stored < records) {
                waiting.put(*std::move(taken));
            } else {
                taken->objects.expectToRead(records);
                waiting.end();
            }
        }
    });

    for (int n = 0; n < objects; ++n) {
        expectStored(n, records);
    }
}

TEST_F(PluginOnThreads, MakesAndDestroysObjectsOnAllOfThem) {
    onThreadsAtOnce(devices, [&](int /*n*/) {
        for (int round = 0; round < 5; ++round) {
            const auto clients = factory->CreateClientDatabaseInst(settings(), nullptr);
            EXPECT_NE(clients->DeviceClientsRepository(), nullptr);
            EXPECT_ANY_THROW(factory->CreateMessageDatabaseInst({}, nullptr));
        }
    });
}

} // namespace
