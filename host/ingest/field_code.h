#pragma once

#include <QJsonObject>
#include <QString>

#include <vector>

namespace host {

/// What meters measure, as far as OBIS tells it apart.
enum class Medium { Electricity, Heat, ColdWater, HotWater, Gas, HeatCosts, Other };

/// From the word in a telegram's "media". Water that is not said to be warm counts as cold, and
/// cooling as heat.
Medium mediumOf(const QString& media);

/// Under which OBIS code a reading is kept.
struct FieldCode {
    Medium medium;
    /// The reading's name in a telegram.
    const char* field;
    const char* obisCode;
};

/// Every reading that has an OBIS code. Where a telegram has several readings of one code, the
/// first of the table gets it. Frozen: stores hold values under these codes.
const std::vector<FieldCode>& fieldCodes();

/// A number among a telegram's readings.
struct CodedField {
    QString field;
    QString obisCode;
    /// Empty where it has none.
    QString unit;
    double number = 0.0;
};

/// The numbers among the readings, each under a code of its own: of the table, or else "field:" and
/// the reading's name.
std::vector<CodedField> codedFields(const QString& media, const QJsonObject& readings);

} // namespace host
