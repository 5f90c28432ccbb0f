// What the plug-in adds to the client libraries that it stands on. Needs both servers and the
// plug-in file.

#include "bench/comparison.h"
#include "bench/environment.h"
#include "bench/store_contests.h"

#include <QString>

#include <exception>
#include <iostream>

int main(int argc, char** argv) try {
    // The plug-in writes a debug line for every operation; as in production, nobody listens.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

    bench::LazyStores stores;
    bench::registerUplinks(stores);
    bench::registerDownlinks(stores);
    bench::registerEav(stores);
    bench::registerDriverState(stores);
    bench::registerDownlinkQueues(stores);
    bench::registerDeviceClients(stores);
    return bench::runComparisons(argc, argv, [&] {
        QJsonObject environment = bench::buildAndLibraries();
        environment.insert(QStringLiteral("servers"), stores().versions());
        return environment;
    });
} catch (const std::exception& error) {
    std::cerr << "kelvro_store_bench: " << error.what() << '\n';
    return 1;
}
