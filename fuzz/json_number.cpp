// Every double in compact JSON, and the double that is read from that.

#include "fuzz/support/choices.h"
#include "fuzz/support/target.h"
#include "model/json/json_writer.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace {

double numberOf(fuzz::choices& choices) {
    const std::uint8_t kind = choices.byte();
    if (kind < 0x40) {
        return choices.number<double>();
    }
    const auto digits = static_cast<double>(choices.number<std::int64_t>() >> choices.below(64));
    if (kind < 0x80) {
        return digits;
    }
    return kind < 0xC0 ? digits / 1000.0 : std::ldexp(digits, -(kind % 64));
}

/// Written directly, it is what Qt writes, and comes back.
void requirePlain(double number) {
    const QJsonArray numbers{number};
    json_writer json;
    if (json.value(numbers)) {
        const QByteArray text = json.take();
        fuzz::require(text == QJsonDocument{numbers}.toJson(QJsonDocument::Compact),
                      "the text is that of Qt", text.toStdString());
        fuzz::require(QJsonDocument::fromJson(text).array() == numbers, "the number comes back",
                      text.toStdString());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::choices choices{fuzz::textOf(data, size)};
    do {
        requirePlain(numberOf(choices));
    } while (!choices.atEnd());
    return 0;
}
