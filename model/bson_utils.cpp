#include "model/bson_utils.h"

#include <QDebug>

namespace bson_utils {

void bsonAppend(bson_builder& document, std::string_view key, const QVariant& value) {
    switch (value.type()) {
    case QVariant::Invalid:
        document.appendUtf8(key, "invalid type");
        break;
    case QVariant::Bool:
        document.appendBool(key, value.toBool());
        break;
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
        // Deliberate: there is no int64 value; hosts read 32-bit numbers back.
        document.appendInt32(key, value.toInt());
        break;
    case QVariant::Double:
        document.appendDouble(key, value.toDouble());
        break;
    case QVariant::String:
        document.appendString(key, value.toString());
        break;
    default:
        qDebug() << "toBson() failed to convert qvariant" << value << "with type"
                 << value.typeName();
        document.appendUtf8(key, "unknown type");
        break;
    }
}

model::message fromBsonUL(const bsoncxx::v1::document::view& document) {
    query_memory memory;
    return readDocument<model::message>(document, memory);
}

} // namespace bson_utils
