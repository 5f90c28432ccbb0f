#include "host/watch/watcher.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/records/filters.h"
#include "host/records/record_text.h"
#include "host/session/stores.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <utility>

namespace host {

namespace {

/// More than any terminal shows.
constexpr int recordsAsked = 300;

QString textOf(const model::message& message) {
    QStringList parts{message.tag, readingsText(message.data.object()), message.hw_type};
    parts.removeAll(QString());
    return parts.join(QLatin1String("  "));
}

QString textOf(const model::dev_value& value) {
    return value.obis_code + QLatin1String("  ") + value.value.toString() + QLatin1Char(' ') +
           value.extended_data.object().value(QLatin1String("unit")).toString();
}

QString textOf(const model::dev_event& event) {
    return QString::number(event.event_code) + QLatin1String("  ") + event.message;
}

template <class Answer>
WatchedList listOf(const Answer& answer, const QDateTime& now) {
    WatchedList list;
    for (const auto& [device, records] : *answer) {
        for (const auto& record : records) {
            list.records.push_back({record.timestamp, device, textOf(record)});
        }
    }
    std::ranges::stable_sort(list.records, std::greater(), &WatchedRecord::time);
    list.perMinute = ratePerMinute(list.records, recordsAsked, now);
    return list;
}

} // namespace

Watcher::Watcher(interfaces::IDatabaseFactory& factory, QJsonObject settings,
                 std::list<int> devices, std::chrono::seconds every)
    : m_factory(factory), m_settings(std::move(settings)), m_devices(std::move(devices)),
      m_every(every), m_thread([this] { run(); }) {}

Watcher::~Watcher() {
    end(std::chrono::milliseconds(0));
    m_thread.join();
}

std::optional<Watcher::News> Watcher::takeNews() {
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_news, std::nullopt);
}

void Watcher::setPaused(bool paused) {
    const std::scoped_lock lock(m_mutex);
    m_paused = paused;
    m_changed.notify_all();
}

bool Watcher::end(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    m_ending = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, patience, [this] { return m_ended; });
}

void Watcher::run() {
    do {
        try {
            attempt(QStringLiteral("asking ") + serverName(m_settings), [this] { watch(); });
        } catch (const Failure& failure) {
            report({.snapshot = {}, .fault = QString::fromUtf8(failure.what())});
        }
    } while (rest());
    const std::scoped_lock lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

void Watcher::watch() {
    const auto messages = openMessages(m_factory, m_settings);
    const auto values = openValues(m_factory, m_settings);
    auto& uplinks = *messages->UlMessageRepository();
    auto& records = *values->EAVRepository();
    auto uplinkFilter = anyTime<model::filter_roll>(m_devices);
    uplinkFilter.by_time_detected = false;
    uplinkFilter.limit = recordsAsked;
    auto recordFilter = anyTime<model::filter_eav>(m_devices);
    recordFilter.limit = recordsAsked;
    do {
        const auto now = QDateTime::currentDateTimeUtc();
        Snapshot snapshot{.time = now, .lists = {}};
        snapshot.lists[Snapshot::Uplinks] = listOf(uplinks.GetMessages(uplinkFilter), now);
        snapshot.lists[Snapshot::Values] = listOf(records.GetValues(recordFilter), now);
        snapshot.lists[Snapshot::Events] = listOf(records.GetEvents(recordFilter), now);
        report({.snapshot = std::move(snapshot), .fault = {}});
    } while (rest());
}

void Watcher::report(News news) {
    const std::scoped_lock lock(m_mutex);
    m_news = std::move(news);
}

bool Watcher::rest() {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, m_every, [this] { return m_ending; });
    m_changed.wait(lock, [this] { return m_ending || !m_paused; });
    return !m_ending;
}

} // namespace host
