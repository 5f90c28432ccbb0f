#include "host/input/mongo_url.h"

#include <QRegularExpression>
#include <QStringRef>
#include <QVector>

#include <algorithm>

namespace host {

namespace {

/// The parts of scheme://authority/database?options; what follows the authority still has the
/// character that ended it.
struct UrlParts {
    QStringRef authority;
    QStringRef afterwards;
};

UrlParts partsOf(const QString& url) {
    static const QRegularExpression endOfAuthority(QStringLiteral("[/?#]"));
    const int start = url.indexOf(QLatin1String("://")) + 3;
    const int end = url.indexOf(endOfAuthority, start);
    return {.authority = url.midRef(start, end < 0 ? -1 : end - start),
            .afterwards = end < 0 ? QStringRef() : url.midRef(end)};
}

/// The first character of a user name and password, with the colon between them, that must not be
/// there; a null character if all is well.
QChar forbiddenIn(const QStringRef& credentials) {
    static const QRegularExpression bracket(QStringLiteral("[\\[\\]]"));
    static const QRegularExpression noEncoding(QStringLiteral("%(?![0-9A-Fa-f]{2})"));
    const auto text = credentials.toString();
    if (text.count(u':') > 1) {
        return u':';
    }
    if (const auto match = bracket.match(text); match.hasMatch()) {
        return text.at(match.capturedStart());
    }
    return text.contains(noEncoding) ? QChar(u'%') : QChar();
}

QChar forbiddenIn(const UrlParts& url) {
    // Of an option's value an @ may be part.
    const auto at = url.afterwards.indexOf(u'@');
    if (at >= 0 && !url.afterwards.left(at).contains(u'=')) {
        return url.afterwards.front();
    }
    switch (url.authority.count(u'@')) {
    case 0:
        return {};
    case 1:
        return forbiddenIn(url.authority.left(url.authority.indexOf(u'@')));
    default:
        return u'@';
    }
}

bool haveNumbersForPorts(const QStringRef& hosts) {
    static const QRegularExpression form(QStringLiteral("^(\\[[^\\]]*\\]|[^:]*)(:[0-9]*)?$"));
    const auto list = hosts.split(u',');
    return std::ranges::all_of(list,
                               [](const QStringRef& host) { return form.match(host).hasMatch(); });
}

} // namespace

QString mongoUrlFault(const QString& url) {
    if (!url.contains(QLatin1String("://"))) {
        return {};
    }
    const auto parts = partsOf(url);
    if (const auto character = forbiddenIn(parts); !character.isNull()) {
        return QLatin1String("has an unescaped ") + character +
               QLatin1String(" in the user name or password; there, write % as %25, @ as %40, : as "
                             "%3A, / as %2F, ? as %3F, # as %23, [ as %5B and ] as %5D");
    }
    if (!haveNumbersForPorts(parts.authority.mid(parts.authority.indexOf(u'@') + 1))) {
        return QStringLiteral("has a port that is no number");
    }
    return {};
}

} // namespace host
