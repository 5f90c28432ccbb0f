// What the plug-in adds to the client libraries that it stands on. Needs both servers and the
// plug-in file.

#include "bench/harness/options.h"
#include "bench/store_contests.h"

int main(int argc, char** argv) {
    return bench::runProgram("kelvro_store_bench", [&] {
        bench::LazyStores stores;
        bench::Comparisons comparisons;
        bench::addUplinks(comparisons, stores);
        bench::addDownlinks(comparisons, stores);
        bench::addEav(comparisons, stores);
        bench::addDriverState(comparisons, stores);
        bench::addDownlinkQueues(comparisons, stores);
        bench::addDeviceClients(comparisons, stores);
        return comparisons.run(argc, argv, [&] { return stores().versions(); });
    });
}
