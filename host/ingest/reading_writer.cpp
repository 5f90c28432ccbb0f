#include "host/ingest/reading_writer.h"

#include "host/ingest/stored_records.h"

#include <map>

namespace host {

namespace {

bool isNumber(const QVariant& value) {
    return value.type() == QVariant::Double || value.type() == QVariant::Int;
}

/// The store gives every number back as a double.
bool isSame(const QVariant& left, const QVariant& right) {
    return isNumber(left) && isNumber(right) ? left.toDouble() == right.toDouble() : left == right;
}

} // namespace

void ReadingWriter::write(const std::vector<DeviceReading>& batch) {
    std::list<model::dev_value> wanted;
    for (const auto& reading : batch) {
        wanted.push_back(reading.value);
    }
    std::map<ValueKey, model::dev_value> known;
    m_tools.patience.require(QStringLiteral("looking for readings"),
                             [&] { known = findStored(m_tools.records, wanted); });

    std::vector<const DeviceReading*> missing;
    for (const auto& reading : batch) {
        const auto [place, isNew] = known.emplace(keyOf(reading.value), reading.value);
        if (isNew) {
            missing.push_back(&reading);
        } else if (isSame(place->second.value, reading.value.value)) {
            ++m_tools.account.valuesThere;
        } else {
            m_tools.rejects.add(reading.source,
                                QStringLiteral("there is a reading of the same device, time and "
                                               "code with another value, %1")
                                    .arg(place->second.value.toString()));
        }
    }

    // Those before one that the store refuses stay, so after a fault it is asked again.
    const auto save = [&](const std::list<model::dev_value>& values, bool tried) {
        return m_tools.patience.attempt([&, tried]() mutable {
            auto remaining = values;
            if (std::exchange(tried, true)) {
                const auto found = findStored(m_tools.records, values);
                remaining.remove_if(
                    [&](const auto& value) { return found.contains(keyOf(value)); });
            }
            if (!remaining.empty()) {
                m_tools.records.SaveValues(remaining);
            }
        });
    };
    std::list<model::dev_value> values;
    for (const auto* reading : missing) {
        values.push_back(reading->value);
    }
    if (save(values, false) == Patience::Outcome::Done) {
        m_tools.account.values += static_cast<qint64>(values.size());
        return;
    }
    for (const auto* reading : missing) {
        if (save({reading->value}, true) == Patience::Outcome::Done) {
            ++m_tools.account.values;
        } else {
            m_tools.rejects.add(reading->source, QStringLiteral("the store refuses the reading: ") +
                                                     m_tools.patience.reason());
        }
    }
}

} // namespace host
