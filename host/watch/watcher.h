#pragma once

#include "host/watch/snapshot.h"
#include "interfaces/idatabase_factory.h"

#include <QJsonObject>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

namespace host {

/// Asks the stores for the newest records, again and again, on a thread of its own: a question may
/// take as long as the time-outs in the settings allow. The stores are opened, used and closed on
/// that thread alone. While a server is away it goes on trying.
class Watcher {
public:
    struct News {
        std::optional<Snapshot> snapshot;
        /// Why there is none.
        QString fault;
    };

    /// Borrows the factory.
    Watcher(interfaces::IDatabaseFactory& factory, QJsonObject settings, std::list<int> devices,
            std::chrono::seconds every);
    /// Waits for the question that is being asked.
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// What has come since the last time.
    std::optional<News> takeNews();

    /// While paused it asks nothing.
    void setPaused(bool paused);

    /// Asks no more. True if the thread has come to its end in this time.
    bool end(std::chrono::milliseconds patience);

private:
    void run();
    void watch();
    void report(News news);
    /// Until it is time for the next question; false if there is to be none.
    bool rest();

    interfaces::IDatabaseFactory& m_factory;
    QJsonObject m_settings;
    std::list<int> m_devices;
    std::chrono::seconds m_every;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<News> m_news;
    bool m_paused = false;
    bool m_ending = false;
    bool m_ended = false;

    std::thread m_thread;
};

} // namespace host
