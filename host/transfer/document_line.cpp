#include "host/transfer/document_line.h"

#include "host/failure.h"

#include <bson/bson.h>

#include <QString>

namespace host {

namespace {

constexpr const char* bytesBegin = R"({"$bson_base64":")";
constexpr const char* bytesEnd = "\"}";

QByteArray bytesLine(const DocumentView& document) {
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(document.data()),
                                               static_cast<int>(document.size()));
    return bytesBegin + bytes.toBase64() + bytesEnd;
}

Document documentOfBytes(const QByteArray& line) {
    const auto text = line.mid(static_cast<int>(qstrlen(bytesBegin)));
    const auto decoded =
        QByteArray::fromBase64Encoding(text.left(text.size() - static_cast<int>(qstrlen(bytesEnd))),
                                       QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) {
        throw Failure(QStringLiteral("the text after $bson_base64 is not base64"));
    }
    const auto* data = reinterpret_cast<const std::uint8_t*>(decoded.decoded.constData());
    bson_t bson;
    if (!bson_init_static(&bson, data, static_cast<std::size_t>(decoded.decoded.size()))) {
        throw Failure(QStringLiteral("the bytes after $bson_base64 are no BSON document"));
    }
    return Document{DocumentView{data, static_cast<std::size_t>(decoded.decoded.size())}};
}

bool readsBack(const QByteArray& line, const DocumentView& document) {
    try {
        return documentOfLine(line).view() == document;
    } catch (const Failure&) {
        return false;
    }
}

} // namespace

QByteArray documentLine(const DocumentView& document) {
    const auto text = canonicalJson(document);
    return !text.isEmpty() && !text.contains('\n') && readsBack(text, document)
               ? text
               : bytesLine(document);
}

bool isBytesLine(const QByteArray& line) {
    return line.startsWith(bytesBegin) && line.endsWith(bytesEnd);
}

Document documentOfLine(const QByteArray& line) {
    return isBytesLine(line) ? documentOfBytes(line) : documentFromJson(line);
}

} // namespace host
