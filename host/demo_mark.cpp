#include "host/demo_mark.h"

namespace host {

namespace {

constexpr qint64 lifetimeSecs = 43'200;
QString sourceKey() {
    return QStringLiteral("source");
}

} // namespace

QString demoSource() {
    return QStringLiteral("kelvro-host demo");
}

QJsonDocument markedData(QJsonObject members) {
    members.insert(sourceKey(), demoSource());
    return QJsonDocument(members);
}

bool isMarked(const QJsonDocument& extendedData) {
    return extendedData.object().value(sourceKey()).toString() == demoSource();
}

QDateTime expiry(const QDateTime& start) {
    return start.addSecs(lifetimeSecs);
}

QDateTime beginOfTime() {
    return QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
}

QDateTime endOfTime() {
    return QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59), Qt::UTC);
}

} // namespace host
