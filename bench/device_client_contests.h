#pragma once

#include "bench/store_contests.h"

#include <cstddef>

/// The registry of the devices' clients, which some other program of the network fills in.
namespace bench {

/// Stores the devices `begin` to `end`: three clients each, a make and a protocol.
void storeClients(RawRedis& redis, std::size_t begin, std::size_t end);

/// Of the devices 0…size-1, which are stored.
Contest deviceClientsContest(Stores& stores, std::size_t size);
Contest deviceInfoContest(Stores& stores, std::size_t size);

} // namespace bench
