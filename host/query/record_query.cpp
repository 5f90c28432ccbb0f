#include "host/query/record_query.h"

#include "host/command_line/devices.h"

namespace host {

CLI::Option* addQueryOptions(CLI::App& command, RecordQuery& query) {
    addDevices(command, query.devices);
    addPeriodOptions(command, query.period);
    return addLimit(command, "--limit", query.limit, "How many of the newest, over all devices");
}

} // namespace host
