#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <initializer_list>
#include <string_view>
#include <utility>

inline QLatin1String jsonKey(std::string_view ascii) {
    return QLatin1String{ascii.data(), static_cast<int>(ascii.size())};
}

/// Reads the members of one object with the defaults of QJsonValue's accessors: a missing or
/// mistyped member is 0, false or empty, and so is a number that is not whole or not within 32 bits
/// where an int is asked for. Keys are ASCII.
class json_members {
public:
    explicit json_members(QJsonObject json) : m_json(std::move(json)) {}

    QJsonValue operator[](std::string_view key) const { return m_json.value(jsonKey(key)); }

    int number(std::string_view key) const { return (*this)[key].toInt(); }
    double real(std::string_view key) const { return (*this)[key].toDouble(); }
    bool flag(std::string_view key) const { return (*this)[key].toBool(); }
    QString text(std::string_view key) const { return (*this)[key].toString(); }
    QJsonObject object(std::string_view key) const { return (*this)[key].toObject(); }
    QJsonArray array(std::string_view key) const { return (*this)[key].toArray(); }

private:
    QJsonObject m_json;
};

/// An object of these members, whose keys are ASCII.
inline QJsonObject
jsonObject(std::initializer_list<std::pair<std::string_view, QJsonValue>> members) {
    QJsonObject json;
    for (const auto& [key, value] : members) {
        json.insert(jsonKey(key), value);
    }
    return json;
}
