#include "host/ingest/field_code.h"

#include "host/records/field_unit.h"

#include <QHash>
#include <QSet>

namespace host {

namespace {

/// The OBIS codes of the readings that have one.
QHash<QString, QString> obisCodes(Medium medium, const QJsonObject& readings) {
    QHash<QString, QString> codes;
    QSet<QString> taken;
    for (const auto& row : fieldCodes()) {
        const auto field = QLatin1String(row.field);
        const auto code = QLatin1String(row.obisCode);
        if (row.medium == medium && readings.value(field).isDouble() && !taken.contains(code)) {
            codes.insert(field, code);
            taken.insert(code);
        }
    }
    return codes;
}

QString unitText(const QString& field) {
    const auto* const unit = unitOf(field);
    return unit == nullptr ? QString() : QString::fromUtf16(unit->text);
}

} // namespace

Medium mediumOf(const QString& media) {
    const auto says = [&](const char* word) { return media.contains(QLatin1String(word)); };
    if (says("heat cost")) {
        return Medium::HeatCosts;
    }
    if (media == QLatin1String("electricity")) {
        return Medium::Electricity;
    }
    if (media == QLatin1String("gas")) {
        return Medium::Gas;
    }
    if (says("water")) {
        return says("warm") || says("hot water") ? Medium::HotWater : Medium::ColdWater;
    }
    return says("heat") || says("cooling") ? Medium::Heat : Medium::Other;
}

const std::vector<FieldCode>& fieldCodes() {
    static const std::vector<FieldCode> table{
        {Medium::Electricity, "total_energy_consumption_kwh", "1-0:1.8.0"},
        {Medium::Electricity, "total_kwh", "1-0:1.8.0"},
        {Medium::Electricity, "total_energy_consumption_tariff_1_kwh", "1-0:1.8.1"},
        {Medium::Electricity, "total_energy_consumption_tariff_2_kwh", "1-0:1.8.2"},
        {Medium::Electricity, "total_energy_consumption_tariff_3_kwh", "1-0:1.8.3"},
        {Medium::Electricity, "total_energy_consumption_tariff_4_kwh", "1-0:1.8.4"},
        {Medium::Electricity, "total_energy_production_kwh", "1-0:2.8.0"},
        {Medium::Electricity, "total_energy_production_tariff_1_kwh", "1-0:2.8.1"},
        {Medium::Electricity, "total_energy_production_tariff_2_kwh", "1-0:2.8.2"},
        {Medium::Electricity, "total_energy_production_tariff_3_kwh", "1-0:2.8.3"},
        {Medium::Electricity, "total_energy_production_tariff_4_kwh", "1-0:2.8.4"},
        {Medium::Electricity, "total_reactive_energy_consumption_kvarh", "1-0:3.8.0"},
        {Medium::Electricity, "total_reactive_energy_production_kvarh", "1-0:4.8.0"},
        {Medium::Electricity, "total_apparent_energy_consumption_kvah", "1-0:9.8.0"},
        {Medium::Electricity, "total_apparent_energy_production_kvah", "1-0:10.8.0"},
        {Medium::Electricity, "current_power_consumption_kw", "1-0:1.7.0"},
        {Medium::Electricity, "active_consumption_kw", "1-0:1.7.0"},
        {Medium::Electricity, "power_kw", "1-0:1.7.0"},
        {Medium::Electricity, "current_power_production_kw", "1-0:2.7.0"},
        {Medium::Electricity, "active_consumption_l1_kw", "1-0:21.7.0"},
        {Medium::Electricity, "active_consumption_l2_kw", "1-0:41.7.0"},
        {Medium::Electricity, "active_consumption_l3_kw", "1-0:61.7.0"},
        {Medium::Electricity, "current_l1_a", "1-0:31.7.0"},
        {Medium::Electricity, "current_l2_a", "1-0:51.7.0"},
        {Medium::Electricity, "current_l3_a", "1-0:71.7.0"},
        {Medium::Electricity, "voltage_at_phase_1_v", "1-0:32.7.0"},
        {Medium::Electricity, "voltage_l1_n_v", "1-0:32.7.0"},
        {Medium::Electricity, "voltage_at_phase_2_v", "1-0:52.7.0"},
        {Medium::Electricity, "voltage_l2_n_v", "1-0:52.7.0"},
        {Medium::Electricity, "voltage_at_phase_3_v", "1-0:72.7.0"},
        {Medium::Electricity, "voltage_l3_n_v", "1-0:72.7.0"},
        {Medium::Electricity, "voltage_v", "1-0:12.7.0"},
        {Medium::Electricity, "power_factor", "1-0:13.7.0"},
        {Medium::Electricity, "frequency_hz", "1-0:14.7.0"},
        {Medium::Heat, "total_energy_consumption_kwh", "6-0:1.0.0"},
        {Medium::Heat, "total_heat_energy_kwh", "6-0:1.0.0"},
        {Medium::Heat, "total_heating_kwh", "6-0:1.0.0"},
        {Medium::Heat, "total_energy_kwh", "6-0:1.0.0"},
        {Medium::Heat, "total_kwh", "6-0:1.0.0"},
        {Medium::Heat, "heat_kwh", "6-0:1.0.0"},
        {Medium::Heat, "target_energy_kwh", "6-0:1.2.0"},
        {Medium::Heat, "target_heat_energy_kwh", "6-0:1.2.0"},
        {Medium::Heat, "energy_at_set_date_kwh", "6-0:1.2.0"},
        {Medium::Heat, "target_kwh", "6-0:1.2.0"},
        {Medium::Heat, "total_volume_m3", "6-0:2.0.0"},
        {Medium::Heat, "total_m3", "6-0:2.0.0"},
        {Medium::Heat, "total_heating_m3", "6-0:2.0.0"},
        {Medium::Heat, "total_water_m3", "6-0:2.0.0"},
        {Medium::Heat, "volume_m3", "6-0:2.0.0"},
        {Medium::Heat, "target_volume_m3", "6-0:2.2.0"},
        {Medium::Heat, "target_m3", "6-0:2.2.0"},
        {Medium::Heat, "power_kw", "6-0:8.0.0"},
        {Medium::Heat, "current_power_kw", "6-0:8.0.0"},
        {Medium::Heat, "volume_flow_m3h", "6-0:9.0.0"},
        {Medium::Heat, "current_volume_flow_m3h", "6-0:9.0.0"},
        {Medium::Heat, "flow_m3h", "6-0:9.0.0"},
        {Medium::Heat, "current_flow_m3h", "6-0:9.0.0"},
        {Medium::Heat, "flow_temperature_c", "6-0:10.0.0"},
        {Medium::Heat, "supply_temperature_c", "6-0:10.0.0"},
        {Medium::Heat, "forward_c", "6-0:10.0.0"},
        {Medium::Heat, "flow_c", "6-0:10.0.0"},
        {Medium::Heat, "return_temperature_c", "6-0:11.0.0"},
        {Medium::Heat, "return_c", "6-0:11.0.0"},
        {Medium::Heat, "temperature_difference_c", "6-0:12.0.0"},
        {Medium::Heat, "flow_return_temperature_difference_c", "6-0:12.0.0"},
        {Medium::Heat, "difference_c", "6-0:12.0.0"},
        {Medium::Heat, "total_cooling_energy_kwh", "5-0:1.0.0"},
        {Medium::Heat, "target_cooling_energy_kwh", "5-0:1.2.0"},
        {Medium::ColdWater, "total_m3", "8-0:1.0.0"},
        {Medium::ColdWater, "target_m3", "8-0:1.2.0"},
        {Medium::ColdWater, "consumption_at_set_date_m3", "8-0:1.2.0"},
        {Medium::ColdWater, "total_at_set_date_m3", "8-0:1.2.0"},
        {Medium::ColdWater, "volume_flow_m3h", "8-0:2.0.0"},
        {Medium::ColdWater, "flow_m3h", "8-0:2.0.0"},
        {Medium::ColdWater, "current_flow_m3h", "8-0:2.0.0"},
        {Medium::HotWater, "total_m3", "9-0:1.0.0"},
        {Medium::HotWater, "target_m3", "9-0:1.2.0"},
        {Medium::HotWater, "consumption_at_set_date_m3", "9-0:1.2.0"},
        {Medium::HotWater, "total_at_set_date_m3", "9-0:1.2.0"},
        {Medium::HotWater, "volume_flow_m3h", "9-0:2.0.0"},
        {Medium::HotWater, "flow_m3h", "9-0:2.0.0"},
        {Medium::HotWater, "current_flow_m3h", "9-0:2.0.0"},
        {Medium::Gas, "total_m3", "7-0:3.0.0"},
        {Medium::HeatCosts, "current_hca", "4-0:1.0.0"},
        {Medium::HeatCosts, "current_consumption_hca", "4-0:1.0.0"},
        {Medium::HeatCosts, "consumption_at_set_date_hca", "4-0:1.2.0"},
        {Medium::HeatCosts, "previous_hca", "4-0:1.2.0"},
        {Medium::HeatCosts, "prev_hca", "4-0:1.2.0"},
    };
    return table;
}

std::vector<CodedField> codedFields(const QString& media, const QJsonObject& readings) {
    const auto codes = obisCodes(mediumOf(media), readings);
    std::vector<CodedField> fields;
    for (auto reading = readings.begin(); reading != readings.end(); ++reading) {
        if (reading.value().isDouble()) {
            const auto field = reading.key();
            fields.push_back({field, codes.value(field, QStringLiteral("field:") + field),
                              unitText(field), reading.value().toDouble()});
        }
    }
    return fields;
}

} // namespace host
