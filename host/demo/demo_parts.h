#pragma once

#include "host/demo/demo_part.h"
#include "host/demo/redis_side.h"
#include "host/input/meter_reading.h"
#include "host/input/telegram.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"

#include <QDateTime>

#include <vector>

namespace host {

/// The demo's parts. Each borrows the stores that it is given.

/// Messages: asked for by device, by period and by tag. `rejected` telegrams never became any.
Part<model::message> uplinkPart(interfaces::IULAPPMessageRepository& repository,
                                const std::vector<model::message>& messages, int rejected);

/// A meter's readings as values: asked for by device, by OBIS code, by period and as the first and
/// last of each energy register. Shows the consumption of the period and the range of the power.
/// Only the demo's own values are ever deleted. Throws Failure if the readings do not say which
/// meter they are from.
Part<model::dev_value> valuePart(interfaces::IEAVRepository& repository,
                                 const MeterReadingFile& readings, const QDateTime& start);

/// The status changes that the messages' readings tell of as events: asked for by device, by period
/// and by text.
Part<model::dev_event> eventPart(interfaces::IEAVRepository& repository,
                                 const std::vector<model::message>& messages);

/// One command for each message's device, moved through their states: all pending; all waiting for
/// data; one in four timed out and one in four acknowledged; the rest acknowledged too. In each
/// state those that are not acknowledged are asked for, at the end all, by device and one by one.
Part<model::dl_message> commandPart(interfaces::IDLAPPMessageRepository& repository,
                                    const std::vector<model::message>& messages);

/// The three parts below keep one record for each device of the messages.

/// States: pushed, lost from Redis, and pulled through `afterwards`, which knows nothing of them
/// and so must restore them from the durable copy; pushed to Redis again and asked for all at once.
/// Both must be objects of their own on the same stores; the prefix of both is changed.
Part<DeviceState> statePart(interfaces::IDriverState& state, interfaces::IDriverState& afterwards,
                            RedisSide& redis, const std::vector<model::message>& messages);

/// Downlink queues: pulled from Redis and, when they are lost there, from the durable copy.
Part<DeviceQueues> queuePart(interfaces::IDriverDLqueue& queues, RedisSide& redis,
                             const std::vector<model::message>& messages);

/// The clients and the kind of each device, entered into the registry and looked up.
Part<DeviceEntry> registryPart(interfaces::IDeviceClientsRepository& registry, RedisSide& redis,
                               const std::vector<model::message>& messages);

} // namespace host
