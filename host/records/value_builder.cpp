#include "host/records/value_builder.h"

#include "host/records/demo_mark.h"

namespace host {

std::vector<model::dev_value> buildValues(const std::vector<MeterReading>& readings, int device,
                                          const QDateTime& start) {
    std::vector<model::dev_value> values;
    values.reserve(readings.size());
    for (const auto& reading : readings) {
        model::dev_value value;
        value.modem_id = device;
        value.timestamp = QDateTime::fromSecsSinceEpoch(reading.timeSecs, Qt::UTC);
        value.obis_code = reading.obisCode;
        value.tag = demoSource();
        value.extended_data = QJsonDocument(marked({{QStringLiteral("line"), reading.lineNumber},
                                                    {QStringLiteral("unit"), reading.unit}}));
        value.value = reading.value;
        value.message_id = QString::number(reading.timeSecs);
        value.ttl = expiry(start);
        values.push_back(value);
    }
    return values;
}

} // namespace host
