#pragma once

#include "host/console.h"
#include "host/demo/demo_part.h"
#include "host/demo/demo_stores.h"
#include "host/demo/redis_side.h"
#include "host/input/meter_reading.h"
#include "host/input/telegram.h"
#include "host/session/session.h"

#include <QDateTime>
#include <QString>

#include <vector>

namespace host {

enum class DecoderChoice {
    /// wmbusmeters where it is installed, else the shipped readings.
    Auto,
    Wmbusmeters,
    Shipped,
};

struct DemoOptions {
    QString telegramsFile;
    QString readingsFile;
    DecoderChoice decoder = DecoderChoice::Auto;
    /// Store nothing, but delete what an earlier demo stored of the same meters.
    bool clear = false;
};

/// Loads the plug-in, sends records of every kind through it, shows what came back and closes with
/// an account of each kind. True if every record came back equal.
///
/// The MongoDB driver's process-wide instance must exist. Throws Failure if a file cannot be read,
/// a server does not do its part, or the stores hold records of the same devices that no demo
/// wrote. Blocks on the servers.
bool runDemo(const DemoOptions& options, Session& session);

/// What the records are made of.
struct DemoInput {
    TelegramFile telegrams;
    MeterReadingFile readings;
    /// Of the run.
    QDateTime start;
};

/// The demo's table. Borrows the stores.
std::vector<DemoPart> demoParts(const DemoStores& stores, RedisSide& redis, const DemoInput& input);

/// Runs the parts one by one and closes with their accounts. True if all of them are complete.
bool runParts(const std::vector<DemoPart>& parts, Console& console);

/// Only deletes what an earlier demo stored.
void clearParts(const std::vector<DemoPart>& parts, Console& console);

} // namespace host
