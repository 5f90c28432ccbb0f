#include "host/records/record_text.h"

#include "host/records/field_unit.h"

#include <QStringList>

#include <algorithm>
#include <tuple>
#include <vector>

namespace host {

namespace {

int groupOf(const QString& name) {
    if (name.startsWith(QLatin1String("total_"))) {
        return 0;
    }
    return name.startsWith(QLatin1String("current_")) ? 1 : 2;
}

/// Totals, current values, the rest; of each those that are not 0 first, then the shortest name,
/// since the longer ones are of single tariffs and past months.
auto rank(const QString& name, double value) {
    return std::make_tuple(groupOf(name), value == 0.0, name.size());
}

QString readingText(const QString& name, const FieldUnit& unit, double value) {
    QString label = name.chopped(QLatin1String(unit.suffix).size());
    label.replace(QLatin1Char('_'), QLatin1Char(' '));
    return label + QLatin1String(": ") + QString::number(value, 'g', 10) + QLatin1Char(' ') +
           QString::fromUtf16(unit.text);
}

} // namespace

QString deviceText(int device) {
    return QStringLiteral("%1").arg(device, 8, 10, QLatin1Char('0'));
}

QString timeText(const QDateTime& instant) {
    return instant.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString visibleText(const QString& text) {
    QString shown;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control) {
            shown += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        } else {
            shown += character;
        }
    }
    return shown;
}

QString readingsText(const QJsonObject& decoded) {
    constexpr std::size_t shown = 2;
    std::vector<QString> names;
    for (auto field = decoded.begin(); field != decoded.end(); ++field) {
        if (field.value().isDouble() && unitOf(field.key()) != nullptr) {
            names.push_back(field.key());
        }
    }
    std::ranges::stable_sort(names, [&](const QString& left, const QString& right) {
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
