#pragma once

#include "host/records/device_records.h"
#include "model/dl_message.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace host {

/// The mark of every record that the demo writes: by it a later run knows which ones it may delete.
QString demoSource();

/// `members` with the demo's mark in its member "source".
QJsonObject marked(QJsonObject members);
bool isMarked(const QJsonObject& members);

/// Whether a record that was found in the store is the demo's, so that the demo may replace it.
bool isDemos(const model::dl_message& command);
bool isDemos(const DeviceState& state);
bool isDemos(const DeviceQueues& record);
bool isDemos(const DeviceEntry& entry);
template <class Record>
bool isDemos(const Record& record) {
    return isMarked(record.extended_data.object());
}

/// When the records of a run that began at `start` expire: 12 hours later.
QDateTime expiry(const QDateTime& start);

} // namespace host
