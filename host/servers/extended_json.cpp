#include "host/servers/extended_json.h"

#include "host/failure.h"

#include <bson/bson.h>

#include <QJsonDocument>
#include <QString>

#include <clocale>

namespace host {

namespace {

/// libbson reads and prints numbers by the thread's locale; Qt sets the one of the environment.
class DecimalPoint {
public:
    DecimalPoint() : m_before(uselocale(plain())) {}
    ~DecimalPoint() { uselocale(m_before); }
    DecimalPoint(const DecimalPoint&) = delete;
    DecimalPoint& operator=(const DecimalPoint&) = delete;

private:
    static locale_t plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t m_before;
};

using Write = char* (*)(const bson_t*, std::size_t*);

QByteArray jsonBy(Write write, const DocumentView& document) {
    bson_t bson;
    if (!bson_init_static(&bson, document.data(), document.size())) {
        return {};
    }
    const DecimalPoint guard;
    std::size_t length = 0;
    char* const text = write(&bson, &length);
    const QByteArray result(text, static_cast<int>(length));
    bson_free(text);
    return result;
}

} // namespace

Document documentFromJson(const QByteArray& text) {
    const DecimalPoint guard;
    bson_t bson;
    bson_error_t error;
    if (!bson_init_from_json(&bson, text.constData(), text.size(), &error)) {
        throw Failure(QString::fromUtf8(error.message));
    }
    Document document{DocumentView{bson_get_data(&bson), bson.len}};
    bson_destroy(&bson);
    return document;
}

QByteArray canonicalJson(const DocumentView& document) {
    return jsonBy(bson_as_canonical_extended_json, document);
}

QJsonObject plainObject(const DocumentView& document) {
    return QJsonDocument::fromJson(jsonBy(bson_as_relaxed_extended_json, document)).object();
}

} // namespace host
