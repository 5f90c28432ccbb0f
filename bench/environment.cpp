#include "bench/environment.h"

#include <bson/bson.h>

#include <QString>

#include <gnu/libc-version.h>

namespace bench {

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

} // namespace bench
