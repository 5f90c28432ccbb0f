#include "host/input/mongo_timeouts.h"

#include <array>

namespace host {

namespace {

constexpr std::array timeouts{
    "serverSelectionTryOnce=false",
    "serverSelectionTimeoutMS=10000",
    "connectTimeoutMS=3000",
    "socketTimeoutMS=30000",
};

/// Option names are the same in capitals and in small letters.
bool hasOption(const QString& options, const QString& name) {
    const QString start = name + QLatin1Char('=');
    return options.startsWith(start, Qt::CaseInsensitive) ||
           options.contains(QLatin1Char('&') + start, Qt::CaseInsensitive);
}

} // namespace

QString withTimeouts(const QString& mongoUrl) {
    const int hosts = mongoUrl.indexOf(QLatin1String("://")) + 3;
    const int question = mongoUrl.indexOf(QLatin1Char('?'), hosts);
    const auto options = question < 0 ? QString() : mongoUrl.mid(question + 1);
    auto url = mongoUrl;
    if (question < 0) {
        url +=
            url.indexOf(QLatin1Char('/'), hosts) < 0 ? QStringLiteral("/?") : QStringLiteral("?");
    }
    for (const auto* const timeout : timeouts) {
        const auto option = QString::fromLatin1(timeout);
        if (!hasOption(options, option.section(QLatin1Char('='), 0, 0))) {
            if (!url.endsWith(QLatin1Char('?')) && !url.endsWith(QLatin1Char('&'))) {
                url += QLatin1Char('&');
            }
            url += option;
        }
    }
    return url;
}

} // namespace host
