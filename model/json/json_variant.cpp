#include "model/json/json_variant.h"

#include <QJsonArray>
#include <QJsonObject>

QVariant toVariantOfDoubles(const QJsonValue& json) {
    switch (json.type()) {
    case QJsonValue::Double:
        return json.toDouble();
    case QJsonValue::Array: {
        QVariantList list;
        const QJsonArray array = json.toArray();
        list.reserve(array.size());
        for (const QJsonValue& element : array) {
            list.append(toVariantOfDoubles(element));
        }
        return list;
    }
    case QJsonValue::Object: {
        QVariantMap map;
        const QJsonObject object = json.toObject();
        for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
            map.insert(member.key(), toVariantOfDoubles(member.value()));
        }
        return map;
    }
    default:
        return json.toVariant();
    }
}
