#pragma once

#include "host/console.h"
#include "host/demo/redis_side.h"
#include "host/input/meter_reading.h"
#include "host/input/telegram.h"
#include "interfaces/idatabase_factory.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace host {

enum class DecoderChoice {
    /// wmbusmeters where it is installed, else the shipped readings.
    Auto,
    Wmbusmeters,
    Shipped,
};

struct DemoOptions {
    QString pluginFile;
    QJsonObject settings;
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
bool runDemo(const DemoOptions& options, Console& console);

/// What the records are made of.
struct DemoInput {
    TelegramFile telegrams;
    MeterReadingFile readings;
    /// Of the run.
    QDateTime start;
};

/// The demo, and only the deleting, with the input read and the plug-in's root object at hand.
bool runDemoParts(interfaces::IDatabaseFactory& factory, const QJsonObject& settings,
                  RedisSide& redis, const DemoInput& input, Console& console);
void clearDemoParts(interfaces::IDatabaseFactory& factory, const QJsonObject& settings,
                    RedisSide& redis, const DemoInput& input, Console& console);

} // namespace host
