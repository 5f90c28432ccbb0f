#include "host/ingest/field_code.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QSet>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::Medium;

QString codeOf(const QString& media, const QString& field) {
    return host::codedFields(media, {{field, 1.5}}).at(0).obisCode;
}

TEST(FieldCode, IsTheObisCodeOfTheMedium) {
    EXPECT_EQ(codeOf("electricity"_q, "total_energy_consumption_kwh"_q), "1-0:1.8.0"_q);
    EXPECT_EQ(codeOf("electricity"_q, "voltage_at_phase_3_v"_q), "1-0:72.7.0"_q);
    EXPECT_EQ(codeOf("heat"_q, "total_energy_consumption_kwh"_q), "6-0:1.0.0"_q);
    EXPECT_EQ(codeOf("water"_q, "total_m3"_q), "8-0:1.0.0"_q);
    EXPECT_EQ(codeOf("warm water"_q, "total_m3"_q), "9-0:1.0.0"_q);
    EXPECT_EQ(codeOf("gas"_q, "total_m3"_q), "7-0:3.0.0"_q);
    EXPECT_EQ(codeOf("heat cost allocation"_q, "current_hca"_q), "4-0:1.0.0"_q);
}

TEST(FieldCode, IsTheFieldsNameWhereThereIsNoObisCode) {
    EXPECT_EQ(codeOf("water"_q, "battery_v"_q), "field:battery_v"_q);
    EXPECT_EQ(codeOf("room sensor"_q, "total_m3"_q), "field:total_m3"_q);
}

TEST(FieldCode, IsTakenByOneFieldOnly) {
    const auto fields = host::codedFields(
        "electricity"_q, {{"total_kwh"_q, 1}, {"total_energy_consumption_kwh"_q, 2}});
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields[0].obisCode, "1-0:1.8.0"_q);
    EXPECT_EQ(fields[0].number, 2);
    EXPECT_EQ(fields[1].obisCode, "field:total_kwh"_q);
}

TEST(FieldCode, IsNotTakenByAFieldThatIsNoNumber) {
    const auto fields =
        host::codedFields("electricity"_q, {{"total_kwh"_q, 1},
                                            {"total_energy_consumption_kwh"_q, QJsonValue::Null},
                                            {"status"_q, "OK"_q}});
    ASSERT_EQ(fields.size(), 1U);
    EXPECT_EQ(fields[0].obisCode, "1-0:1.8.0"_q);
}

TEST(FieldCode, ComesWithTheUnitOfTheName) {
    const auto fields = host::codedFields(
        "water"_q, {{"flow_m3h"_q, 1}, {"total_m3"_q, 2}, {"version"_q, 3}, {"x_y"_q, 4}});
    QStringList units;
    for (const auto& field : fields) {
        units.append(field.unit);
    }
    EXPECT_EQ(units, (QStringList{"m³/h"_q, "m³"_q, QString(), "years"_q}));
}

TEST(Medium, IsFoundInTheWordsOfTelegrams) {
    EXPECT_EQ(host::mediumOf("electricity"_q), Medium::Electricity);
    EXPECT_EQ(host::mediumOf("heat/cooling load"_q), Medium::Heat);
    EXPECT_EQ(host::mediumOf("cooling load volume at inlet"_q), Medium::Heat);
    EXPECT_EQ(host::mediumOf("heat cost allocation"_q), Medium::HeatCosts);
    EXPECT_EQ(host::mediumOf("hot water"_q), Medium::HotWater);
    EXPECT_EQ(host::mediumOf("hot/cold water"_q), Medium::ColdWater);
    EXPECT_EQ(host::mediumOf("gas detector"_q), Medium::Other);
}

/// Stores hold values under them.
TEST(FieldCodes, AreThoseOfTheDocument) {
    QFile document(QStringLiteral(KELVRO_DOCS_DIR "/ingest.md"));
    ASSERT_TRUE(document.open(QIODevice::ReadOnly));
    const auto text = QString::fromUtf8(document.readAll());
    for (const auto& row : host::fieldCodes()) {
        bool there = false;
        for (const auto& line : text.split(QLatin1Char('\n'))) {
            there = there ||
                    (line.contains(QLatin1String(row.obisCode) + QLatin1String("`")) &&
                     line.contains(QLatin1Char('`') + QLatin1String(row.field) + QLatin1Char('`')));
        }
        EXPECT_TRUE(there) << row.obisCode << ' ' << row.field;
    }
}

TEST(FieldCodes, NameEachFieldOfAMediumOnce) {
    QSet<QString> seen;
    for (const auto& row : host::fieldCodes()) {
        const QString key =
            QString::number(static_cast<int>(row.medium)) + QLatin1String(row.field);
        EXPECT_FALSE(seen.contains(key)) << row.field;
        seen.insert(key);
    }
}

} // namespace
