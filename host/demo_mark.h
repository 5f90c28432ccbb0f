#pragma once

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace host {

/// The mark of every record that the demo writes: by it a later run knows which ones it may delete.
QString demoSource();

/// `members` with the demo's mark in its member "source".
QJsonDocument markedData(QJsonObject members);

/// Whether a stored record's extended data carry the demo's mark.
bool isMarked(const QJsonDocument& extendedData);

/// When the records of a run that began at `start` expire: 12 hours later.
QDateTime expiry(const QDateTime& start);

/// The first and the last time that a query can ask for.
QDateTime beginOfTime();
QDateTime endOfTime();

} // namespace host
