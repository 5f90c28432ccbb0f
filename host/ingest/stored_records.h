#pragma once

#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"
#include "model/dev_event.h"
#include "model/dev_value.h"

#include <QDateTime>
#include <QString>

#include <list>
#include <map>
#include <optional>
#include <tuple>

/// What a store has already. All of these block on the server, whose errors pass through.
namespace host {

/// Device, second, OBIS code, message.
using ValueKey = std::tuple<int, qint64, QString, QString>;
ValueKey keyOf(const model::dev_value& value);

/// Device, second, code, message, text.
using EventKey = std::tuple<int, qint64, int, QString, QString>;
EventKey keyOf(const model::dev_event& event);

/// Which of the records the store has, as it has them. One request if they are close together in
/// time; else, and if the devices have many others there, one for each device and second.
std::map<ValueKey, model::dev_value> findStored(interfaces::IEAVRepository& repository,
                                                const std::list<model::dev_value>& values);
std::map<EventKey, model::dev_event> findStored(interfaces::IEAVRepository& repository,
                                                const std::list<model::dev_event>& events);

/// When the store's message of this device and number was registered, whenever that was; nothing if
/// it has none. Goes back in time by some hundred messages a request.
std::optional<QDateTime> storedTime(interfaces::IULAPPMessageRepository& repository, int device,
                                    quint64 uniqueNumber);

} // namespace host
