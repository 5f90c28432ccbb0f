#pragma once

#include "host/ingest/account.h"
#include "host/ingest/patience.h"
#include "host/ingest/rejects.h"
#include "host/ingest/uplink.h"
#include "interfaces/ieav_repository.h"
#include "model/dev_value.h"

#include <vector>

namespace host {

/// A reading that came without an uplink, as the store keeps it.
struct DeviceReading {
    model::dev_value value;
    Source source;
};

/// Stores meter readings that came without an uplink. They have no number by which the store would
/// know a second copy, so it is asked before: a value of the same device, second and code, and of
/// no uplink, is the same reading. If it is another value, the line is rejected.
class ReadingWriter {
public:
    /// Borrows everything.
    struct Tools {
        interfaces::IEAVRepository& records;
        Patience& patience;
        IngestAccount& account;
        Rejects& rejects;
    };

    explicit ReadingWriter(const Tools& tools) : m_tools(tools) {}

    /// Blocks until the server has all that it takes; the others are rejected. Throws GivenUp.
    void write(const std::vector<DeviceReading>& batch);

private:
    Tools m_tools;
};

} // namespace host
