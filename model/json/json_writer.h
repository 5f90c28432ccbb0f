#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <string_view>

/// Writes the parts of a compact JSON text, which is that of QJsonDocument::toJson() byte for byte
/// if all of it is ordinary: finite numbers that are whole and below 2^53 or have a fraction and
/// are not tiny, no zero with a sign, and characters of the basic plane. Each part is false, and
/// the text of no use, at the first thing that is not.
class json_writer {
public:
    json_writer();

    bool beginObject() { return append("{"); }
    bool endObject() { return append("}"); }
    /// What the next member is called; with the comma, if it is not the first of its object.
    bool key(const QString& key);
    /// The same, for ASCII that needs no escapes.
    bool name(std::string_view name);

    bool value(const QString& text);
    bool value(int number);
    bool value(double number);
    bool value(bool flag);
    bool value(const QJsonObject& object);
    bool value(const QJsonArray& array);
    bool value(const QJsonValue& json);

    /// What has been written; afterwards there is nothing.
    QByteArray take();

private:
    bool append(std::string_view ascii);
    void writeComma(char bracket);
    bool makeRoom(int size) { return m_limit - m_end >= size || grow(size); }
    bool grow(int size);

    QByteArray m_text; ///< filled up to m_end
    char* m_end;
    char* m_limit;
};
