#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/message.h"

#include <QJsonObject>
#include <QString>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// The records that are stored and read: those of real meters, as the reference host makes them,
/// and made-up ones where there is nothing real.
///
/// Longer lists than the files give go through them again and again, with other ids, times and
/// readings: no two records of a list are the same, nor are any of their nested documents. All
/// times are whole seconds; everything expires 12 hours after the program's start. Throws
/// host::Failure if a file is missing or holds anything but what it should. A list may be made in
/// pieces: `first` is the place of a piece's first record.
namespace bench {

/// Telegrams of real meters, the makes in turn as they came; unique_id counts up from `firstId`,
/// timestamps go back.
std::vector<model::message> messages(std::size_t count, quint64 firstId, std::size_t first = 0);

/// The devices of the messages, each once.
std::vector<int> devicesOf(const std::vector<model::message>& messages);

/// The readings of a real meter by ten devices, each round later than the last one.
std::vector<model::dev_value> values(std::size_t count, std::size_t first = 0);

/// Two numeric readings at different times for each device 1…`devices` and each of `obisCodes`.
std::vector<model::dev_value> numericValues(int devices, const std::vector<QString>& obisCodes);

/// The OBIS codes under which the real meter sends numbers, at most `count`.
std::vector<QString> numericObisCodes(std::size_t count);

/// Status changes and alarms, made up, of ten devices.
std::vector<model::dev_event> events(std::size_t count, std::size_t first = 0);

/// Requests to devices with their arguments, made up; device i / perDevice, all pending.
std::vector<model::dl_message> commands(std::size_t count, std::size_t perDevice,
                                        std::size_t first = 0);

/// The queues of one device: two queues with three elements each.
model::dl_queues queues(int device);

/// Made-up documents of one kind; each number gives another one.
struct MadeUp {
    std::string name;
    std::function<QJsonObject(int number)> make;
};

/// Deeply nested, with many keys, with long texts, with long lists.
std::vector<MadeUp> madeUpDocuments();

/// Telegrams' messages with made-up documents as `data`.
std::vector<model::message> messagesWith(const std::function<QJsonObject(int number)>& data,
                                         std::size_t count);

} // namespace bench
