#include "bench/harness/results.h"

#include <bson/bson.h>

#include <QJsonArray>
#include <QString>

#include <gnu/libc-version.h>

namespace bench {

namespace {

QJsonArray namesOf(const std::vector<Side>& sides) {
    QJsonArray names;
    for (const Side& side : sides) {
        names.append(QString::fromStdString(side.name));
    }
    return names;
}

QJsonArray toJson(const std::vector<Round>& rounds) {
    QJsonArray all;
    for (const Round& round : rounds) {
        QJsonArray costs;
        for (const Cost& cost : round) {
            costs.append(QJsonArray{cost.wallSecs, cost.cpuSecs});
        }
        all.append(costs);
    }
    return all;
}

} // namespace

QJsonObject buildAndLibraries() {
    return {
        {QStringLiteral("compiler"), QStringLiteral(KELVRO_COMPILER)},
        {QStringLiteral("build_type"), QStringLiteral(KELVRO_BUILD_TYPE)},
        {QStringLiteral("Qt"), QLatin1String(qVersion())},
        {QStringLiteral("libbson"), QLatin1String(bson_get_version())},
        {QStringLiteral("mongocxx"), QStringLiteral(KELVRO_MONGOCXX_VERSION)},
        {QStringLiteral("hiredis"), QStringLiteral(KELVRO_HIREDIS_VERSION)},
        {QStringLiteral("glibc"), QLatin1String(gnu_get_libc_version())},
    };
}

QJsonObject toJson(const std::vector<Side>& sides, const Measurement& measurement) {
    return {{QStringLiteral("sides"), namesOf(sides)},
            {QStringLiteral("rounds"), toJson(measurement.rounds)}};
}

} // namespace bench
