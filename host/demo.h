#pragma once

#include "host/console.h"

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
    QString settingsFile;
    QString telegramsFile;
    QString readingsFile;
    DecoderChoice decoder = DecoderChoice::Auto;
};

/// Loads the plug-in, sends records of every kind through it, shows what came back and closes with
/// an account of each kind. True if every record came back equal.
///
/// The MongoDB driver's process-wide instance must exist. Throws Failure if a file cannot be read
/// or a server does not do its part. Blocks on the servers.
bool runDemo(const DemoOptions& options, Console& console);

} // namespace host
