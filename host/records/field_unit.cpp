#include "host/records/field_unit.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr std::array<FieldUnit, 44> units{{
    {"_kwh", u"kWh"},     {"_wh", u"Wh"},       {"_mj", u"MJ"},    {"_gj", u"GJ"},
    {"_kvarh", u"kvarh"}, {"_kvah", u"kVAh"},   {"_m3c", u"m³°C"}, {"_kw", u"kW"},
    {"_w", u"W"},         {"_kvar", u"kvar"},   {"_kva", u"kVA"},  {"_mjh", u"MJ/h"},
    {"_jh", u"J/h"},      {"_m3ch", u"m³°C/h"}, {"_dbm", u"dBm"},  {"_m3", u"m³"},
    {"_l", u"l"},         {"_m3h", u"m³/h"},    {"_lh", u"l/h"},   {"_c", u"°C"},
    {"_k", u"K"},         {"_f", u"°F"},        {"_v", u"V"},      {"_a", u"A"},
    {"_hz", u"Hz"},       {"_pct", u"%"},       {"_rh", u"% RH"},  {"_hca", u"units"},
    {"_ppm", u"ppm"},     {"_pa", u"Pa"},       {"_bar", u"bar"},  {"_s", u"s"},
    {"_min", u"min"},     {"_h", u"h"},         {"_d", u"d"},      {"_month", u"months"},
    {"_y", u"years"},     {"_m", u"m"},         {"_kg", u"kg"},    {"_cd", u"cd"},
    {"_mol", u"mol"},     {"_deg", u"°"},       {"_rad", u"rad"},  {"_counter", u"times"},
}};

} // namespace

const FieldUnit* unitOf(const QString& name) {
    const auto* const unit = std::ranges::find_if(
        units, [&](const FieldUnit& each) { return name.endsWith(QLatin1String(each.suffix)); });
    return unit == units.end() ? nullptr : unit;
}

} // namespace host
