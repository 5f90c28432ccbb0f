#pragma once

#include "host/session/session.h"

namespace host {

/// Each of these blocks on both servers, and throws Failure if they do not do their part.

/// Shows the downlink queues of a device, one record for each element, or for a queue without any.
void showQueue(int device, Session& session);

/// Deletes the device's downlink queues and their durable copy.
void clearQueue(int device, Session& session);

} // namespace host
