#include "host/ingest/reading_blocks.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

/// No meter says more at a time.
constexpr std::size_t largestBlock = 10'000;

} // namespace

ReadingBlocks::ReadingBlocks(std::optional<int> device, Take take)
    : m_device(device), m_take(std::move(take)) {}

void ReadingBlocks::add(Reading reading) {
    const auto isOver = [&](const Reading& earlier) {
        return earlier.reading.timeSecs != reading.reading.timeSecs ||
               earlier.reading.obisCode == reading.reading.obisCode;
    };
    if (std::ranges::any_of(m_block, isOver) || m_block.size() == largestBlock) {
        close();
    }
    m_block.push_back(std::move(reading));
}

void ReadingBlocks::close() {
    for (const auto& each : m_block) {
        if (const auto serial = serialNumber(each.reading)) {
            m_lastDevice = serial;
        }
    }
    for (const auto& each : std::exchange(m_block, {})) {
        m_take(each, m_device ? m_device : m_lastDevice);
    }
}

void ReadingBlocks::beginInput() {
    close();
    m_lastDevice.reset();
}

} // namespace host
