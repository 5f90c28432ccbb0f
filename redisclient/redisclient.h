#pragma once

/// \file
/// All of the Redis client; the only header that the rest of the driver includes. The external
/// client has the same names, so users of this header restrict themselves to what both have:
/// ConnectionConfig's constructor, Connection's constructor, connect(true), isConnected, disconnect
/// and commandSync, Response's getValue, type and isErrorMessage, and Command.

#ifdef KELVRO_EXTERNAL_QREDISCLIENT
#include <qredisclient/redisclient.h>
#else
#include "redisclient/command.h"           // IWYU pragma: export
#include "redisclient/connection.h"        // IWYU pragma: export
#include "redisclient/connection_config.h" // IWYU pragma: export
#include "redisclient/response.h"          // IWYU pragma: export
#endif
