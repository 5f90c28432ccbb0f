#include "host/uplink_demo.h"

#include "host/demo_mark.h"
#include "host/failure.h"
#include "host/message_builder.h"
#include "host/read_back.h"
#include "host/readings_text.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>

namespace host {

namespace {

using Repository = interfaces::IULAPPMessageRepository;
using Selection = std::function<bool(const model::message&)>;

template <class Value, class Member>
std::set<Value> distinct(const std::vector<model::message>& messages, Member member) {
    std::set<Value> values;
    for (const auto& message : messages) {
        values.insert(message.*member);
    }
    return values;
}

/// All messages of the devices, whenever they were registered.
model::filter_roll anyTime(std::list<int> devices) {
    model::filter_roll filter;
    filter.modem_ids = std::move(devices);
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    return filter;
}

void deleteEarlierDemo(Repository& repository, const std::list<int>& devices, Console& console) {
    const auto filter = anyTime(devices);
    const auto stored = repository.GetMessages(filter);
    int messages = 0;
    for (const auto& [device, ofDevice] : *stored) {
        const auto foreign = std::ranges::count_if(ofDevice, [](const model::message& message) {
            return !isMarked(message.extended_data);
        });
        if (foreign != 0) {
            throw Failure(
                QStringLiteral("the store holds %1 messages of device %2 that no demo wrote; "
                               "the demo would have to delete them and does not run")
                    .arg(foreign)
                    .arg(device));
        }
        messages += static_cast<int>(ofDevice.size());
    }
    if (messages != 0) {
        repository.DeleteMessages(filter);
        console.line(QStringLiteral("Deleted %1 messages of an earlier demo.").arg(messages));
    }
}

void save(Repository& repository, ReadBack<model::message>& messages, Console& console) {
    auto progress = console.progress(QStringLiteral("Saving messages"),
                                     static_cast<int>(messages.written().size()));
    for (const auto& message : messages.written()) {
        repository.SaveMessage(message);
        messages.countStored(1);
        progress.advance();
    }
}

/// Asks for each device's messages and returns them all, newest first.
std::vector<model::message> checkByDevice(Repository& repository, const std::set<int>& devices,
                                          ReadBack<model::message>& messages) {
    std::vector<model::message> all;
    for (const int device : devices) {
        const auto returned = repository.GetMessages(anyTime({device}));
        messages.check(
            QStringLiteral("by device %1").arg(device),
            [device](const model::message& message) { return message.modem_id == device; },
            *returned);
        for (const auto& [number, ofDevice] : *returned) {
            std::ranges::copy(ofDevice, std::back_inserter(all));
        }
    }
    std::ranges::stable_sort(all, [](const model::message& left, const model::message& right) {
        return left.timestamp > right.timestamp;
    });
    return all;
}

/// Asks for the middle half of the messages; both ends of the period are the times of a message, so
/// that a store which leaves an end out is found out.
void checkByPeriod(Repository& repository, const std::list<int>& devices,
                   QDateTime model::message::* time, ReadBack<model::message>& messages) {
    const auto& written = messages.written();
    auto filter = anyTime(devices);
    filter.by_time_detected = time == &model::message::time_detected;
    filter.begin = written[written.size() * 3 / 4].*time;
    filter.end = written[written.size() / 4].*time;
    messages.check(
        filter.by_time_detected ? QStringLiteral("by period of detection")
                                : QStringLiteral("by period"),
        [&](const model::message& message) {
            return message.*time >= filter.begin && message.*time <= filter.end;
        },
        *repository.GetMessages(filter));
}

void checkByTag(Repository& repository, const std::list<int>& devices, const QString& tag,
                ReadBack<model::message>& messages) {
    auto filter = anyTime(devices);
    filter.tags = {tag};
    messages.check(
        QStringLiteral("by tag \"%1\"").arg(tag),
        [&tag](const model::message& message) { return message.tag == tag; },
        *repository.GetMessages(filter));
}

void show(const std::vector<model::message>& messages, Console& console) {
    std::vector<QStringList> rows;
    rows.reserve(messages.size());
    for (const auto& message : messages) {
        rows.push_back({QStringLiteral("%1").arg(message.modem_id, 8, 10, QLatin1Char('0')),
                        message.timestamp.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                        message.tag, QStringLiteral("%1 bytes").arg(message.payload.size()),
                        readingsText(message.data.object())});
    }
    console.table({{QStringLiteral("Device")},
                   {QStringLiteral("Time (UTC)")},
                   {QStringLiteral("Tag")},
                   {QStringLiteral("Payload"), true},
                   {QStringLiteral("Readings")}},
                  rows);
}

} // namespace

Accounting runUplinkDemo(Repository& repository, const TelegramFile& file, const QDateTime& start,
                         Console& console) {
    ReadBack<model::message> messages(buildMessages(file.records, start));
    const auto rejected = static_cast<int>(file.rejected.size());
    if (messages.written().empty()) {
        return messages.accounting(file.linesRead, rejected);
    }
    const auto deviceSet = distinct<int>(messages.written(), &model::message::modem_id);
    const std::list<int> devices(deviceSet.begin(), deviceSet.end());

    deleteEarlierDemo(repository, devices, console);
    save(repository, messages, console);
    const auto stored = checkByDevice(repository, deviceSet, messages);
    checkByPeriod(repository, devices, &model::message::timestamp, messages);
    checkByPeriod(repository, devices, &model::message::time_detected, messages);
    for (const auto& tag : distinct<QString>(messages.written(), &model::message::tag)) {
        checkByTag(repository, devices, tag, messages);
    }

    show(stored, console);
    console.complaints(messages.complaints());
    return messages.accounting(file.linesRead, rejected);
}

} // namespace host
