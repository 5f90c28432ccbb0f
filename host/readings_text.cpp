#include "host/readings_text.h"

#include <QStringList>

#include <algorithm>
#include <tuple>
#include <vector>

namespace host {

namespace {

struct Unit {
    QLatin1String suffix;
    const char16_t* text;
};

constexpr Unit units[] = {
    {QLatin1String("_kwh"), u"kWh"},  {QLatin1String("_kvarh"), u"kvarh"},
    {QLatin1String("_kw"), u"kW"},    {QLatin1String("_m3"), u"m³"},
    {QLatin1String("_m3h"), u"m³/h"}, {QLatin1String("_c"), u"°C"},
    {QLatin1String("_v"), u"V"},      {QLatin1String("_a"), u"A"},
    {QLatin1String("_rh"), u"% RH"},  {QLatin1String("_hca"), u"units"},
    {QLatin1String("_h"), u"h"},      {QLatin1String("_counter"), u"times"},
};

const Unit* unitOf(const QString& name) {
    const auto* const unit =
        std::find_if(std::begin(units), std::end(units),
                     [&](const Unit& each) { return name.endsWith(each.suffix); });
    return unit == std::end(units) ? nullptr : unit;
}

/// Totals, current values, the rest; of each those that are not 0 first, then the shortest name,
/// since the longer ones are of single tariffs and past months.
auto rank(const QString& name, double value) {
    const int group = name.startsWith(QLatin1String("total_"))     ? 0
                      : name.startsWith(QLatin1String("current_")) ? 1
                                                                   : 2;
    return std::make_tuple(group, value == 0.0, name.size());
}

QString readingText(const QString& name, const Unit& unit, double value) {
    QString label = name.chopped(unit.suffix.size());
    label.replace(QLatin1Char('_'), QLatin1Char(' '));
    return label + QLatin1String(": ") + QString::number(value, 'g', 10) + QLatin1Char(' ') +
           QString::fromUtf16(unit.text);
}

} // namespace

QString readingsText(const QJsonObject& decoded) {
    constexpr std::size_t shown = 2;
    std::vector<QString> names;
    for (auto field = decoded.begin(); field != decoded.end(); ++field) {
        if (field.value().isDouble() && unitOf(field.key()) != nullptr) {
            names.push_back(field.key());
        }
    }
    std::stable_sort(names.begin(), names.end(), [&](const QString& left, const QString& right) {
        return rank(left, decoded.value(left).toDouble()) <
               rank(right, decoded.value(right).toDouble());
    });
    names.resize(std::min(names.size(), shown));

    QStringList texts;
    for (const auto& name : names) {
        texts.append(readingText(name, *unitOf(name), decoded.value(name).toDouble()));
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace host
