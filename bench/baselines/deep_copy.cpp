#include "bench/baselines/deep_copy.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QVariant>

#include <tuple>
#include <type_traits>

namespace bench {

namespace {

QJsonValue copyOfAny(const QJsonValue& value);

QJsonArray copyOfArray(const QJsonArray& array) {
    QJsonArray copy;
    for (const auto& element : array) {
        copy.append(copyOfAny(element));
    }
    return copy;
}

QJsonValue copyOfAny(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Object:
        return deepCopy(value.toObject());
    case QJsonValue::Array:
        return copyOfArray(value.toArray());
    default:
        // A text is copied into the container that it is put into.
        return value;
    }
}

/// What is neither of these stands in the record itself.
template <typename Member>
Member copyOfMember(const Member& member) {
    if constexpr (std::is_same_v<Member, QJsonDocument>) {
        return QJsonDocument{deepCopy(member.object())};
    } else if constexpr (std::is_same_v<Member, QVariant>) {
        return member.type() == QVariant::String ? QVariant{deepCopy(member.toString())} : member;
    } else if constexpr (requires { deepCopy(member); }) {
        return deepCopy(member);
    } else {
        return member;
    }
}

template <typename Value>
QMap<QString, Value> copyOfMember(const QMap<QString, Value>& members) {
    QMap<QString, Value> copy;
    for (auto member = members.begin(); member != members.end(); ++member) {
        copy.insert(copy.end(), deepCopy(member.key()), copyOfMember(member.value()));
    }
    return copy;
}

} // namespace

QString deepCopy(const QString& text) {
    return QString{text.constData(), text.size()};
}

QByteArray deepCopy(const QByteArray& bytes) {
    return {bytes.constData(), bytes.size()};
}

QJsonObject deepCopy(const QJsonObject& object) {
    // Qt offers no copy that does not share. What changes the members and adds a text makes a
    // container leave both blocks that it shares, which takes a fifth of inserting member by
    // member; the containers inside stay shared until they are replaced.
    static const QString last = QStringLiteral("\uffff");
    QJsonObject copy = object;
    copy.insert(last, true);
    copy.remove(last);
    for (auto member = copy.begin(); member != copy.end(); ++member) {
        const QJsonValue value = member.value();
        if (value.isObject() || value.isArray()) {
            member.value() = copyOfAny(value);
        }
    }
    return copy;
}

template <host::HasMembers Record>
Record deepCopy(const Record& record) {
    Record copy;
    std::apply(
        [&](const auto&... member) {
            ((copy.*member.pointer = copyOfMember(record.*member.pointer)), ...);
        },
        host::membersOf<Record>);
    return copy;
}

template model::message deepCopy(const model::message& message);
template model::dl_message deepCopy(const model::dl_message& message);
template model::dev_value deepCopy(const model::dev_value& value);
template model::dev_event deepCopy(const model::dev_event& event);
template model::dl_queues deepCopy(const model::dl_queues& queues);

} // namespace bench
