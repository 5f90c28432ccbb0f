#pragma once

#include "host/session/session.h"

namespace host {

/// Shows what the registry knows of a device: its clients by name, its protocol and its hardware
/// type. Blocks on Redis. Throws Failure if it does not do its part.
void showClients(int device, Session& session);

} // namespace host
