#pragma once

#include "host/ingest/uplink.h"
#include "host/input/meter_reading.h"

#include <functional>
#include <optional>
#include <vector>

namespace host {

/// Finds out which device meter readings are of. What a meter says at one time is a block: readings
/// of the same second, each code once. Its device is that of the serial number (0-0:96.1.1) in it,
/// or else that of the block before.
class ReadingBlocks {
public:
    struct Reading {
        MeterReading reading;
        Source source;
    };
    /// Gets a reading and its device, or nothing where that is not known.
    using Take = std::function<void(const Reading&, std::optional<int>)>;

    /// With `device` all readings are of that.
    ReadingBlocks(std::optional<int> device, Take take);

    /// A reading; hands on the block that it ends, if it does.
    void add(Reading reading);

    /// The block is over.
    void close();

    /// What follows is from another input, with another meter.
    void beginInput();

    /// How many readings there are whose block is not over.
    std::size_t open() const { return m_block.size(); }

private:
    std::optional<int> m_device;
    Take m_take;
    std::optional<int> m_lastDevice;
    std::vector<Reading> m_block;
};

} // namespace host
