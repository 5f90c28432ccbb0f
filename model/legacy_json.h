#pragma once

#include <bson/bson.h>
#include <bsoncxx/v1/document/view.hpp>

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <string>
#include <string_view>

namespace bson_utils {

/// One pass over a BSON document that gives what its legacy extended JSON text would give when Qt
/// parses it, without making the text. Only a nested object or array passes through text, its own.
///
/// The stores' readers are defined through that text: ObjectIds become {"$oid": …}, dates
/// {"$date": …}, 64-bit integers plain numbers, and so on. The text of a document with a
/// not-a-number, an infinite double or more than 200 levels does not parse, and then the
/// whole document counts as an empty object; renderable() tells. Of a repeated key the last value
/// counts.
///
/// Walk the document with next(), look at key(), and take each element by exactly one of the
/// accessors (or skip() it): they also find out whether the text would parse. Borrows the document.
///
/// Every operation throws bson_error if the bytes are not a well-formed document or hold invalid
/// UTF-8, from which no text can be made.
class legacy_json {
public:
    explicit legacy_json(const bsoncxx::v1::document::view& document);

    /// Moves to the next element; false at the end.
    bool next();
    std::string_view key() const;

    /// QJsonValue::toInt(): 0 unless it is a whole number within 32 bits.
    int toInt();
    /// QJsonValue::toString(): empty unless it is a string.
    QString toString();
    /// QJsonValue::toObject(): empty unless it is an object.
    QJsonObject toObject();
    QJsonValue toValue();
    /// The member "$date" of the object as a number, its fraction cut off: UTC milliseconds, 0 if
    /// there is none.
    qint64 toDateMsecs();
    /// The member "$oid" of the object as a string.
    QString toOid();
    void skip();

    /// Meaningful once next() has returned false.
    bool renderable() const { return m_renderable; }

private:
    QJsonDocument parsed();
    void write(const bson_iter_t& element, int depth);
    void writeMembers(bson_iter_t members, int depth);
    void writeElements(bson_iter_t elements, int depth);
    void writeBinary(const bson_iter_t& element);
    void writeCodeWithScope(const bson_iter_t& element);
    void writeNumber(auto number);
    void writeString(std::string_view text);
    bool writeUntilZero(std::string_view text);
    void check(const bson_iter_t& element, int depth);
    void checkMembers(bson_iter_t members, int depth);
    double finite(double number);
    bool advance(bson_iter_t& element, int depth);

    bson_iter_t m_element{};
    /// The current nested value as compact JSON.
    std::string m_text;
    bool m_renderable = true;
    bool m_levelStopped = false;
};

} // namespace bson_utils
