#pragma once

#include "host/accounting.h"
#include "host/console.h"
#include "host/redis_side.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "model/message.h"

#include <vector>

namespace host {

/// The three parts below keep one record for each device of the messages. None of these records
/// expires, so each part deletes its own at the end; what a broken run left is replaced. They throw
/// Failure, before they change anything, if a device has a record that no demo wrote. They block on
/// the servers; their errors pass through.

/// Keeps a state of each device: sets its values, pushes it, loses it from Redis, and pulls it
/// through `afterwards`, which knows nothing of it and so must restore it from the durable copy;
/// pushes that to Redis again and asks for all states at once. Both must be objects of their own on
/// the same stores; the prefix of both is changed.
Accounting runStateDemo(interfaces::IDriverState& state, interfaces::IDriverState& afterwards,
                        RedisSide& redis, const std::vector<model::message>& messages,
                        Console& console);

/// Pushes the downlink queues of each device and pulls them, from Redis and, when they are lost
/// there, from the durable copy.
Accounting runQueueDemo(interfaces::IDriverDLqueue& queues, RedisSide& redis,
                        const std::vector<model::message>& messages, Console& console);

/// Enters each device into the client registry and reads its clients and its kind.
Accounting runRegistryDemo(interfaces::IDeviceClientsRepository& registry, RedisSide& redis,
                           const std::vector<model::message>& messages, Console& console);

} // namespace host
