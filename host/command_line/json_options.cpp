#include "host/command_line/json_options.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cctype>

namespace host {

std::optional<QJsonValue> parseJson(const QString& text) {
    // Qt reads documents only, which a single value is not.
    const auto values = QJsonDocument::fromJson('[' + text.toUtf8() + ']').array();
    return values.size() == 1 ? std::optional(values.first()) : std::nullopt;
}

CLI::Option* addJsonObject(CLI::App& command, const std::string& name, QJsonObject& object,
                           const std::string& description) {
    return command
        .add_option_function<std::string>(
            name,
            [&object](const std::string& given) {
                const auto value = parseJson(QString::fromStdString(given));
                if (!value || !value->isObject()) {
                    throw CLI::ValidationError(given + R"( is no JSON object, as {"a": 1})");
                }
                object = value->toObject();
            },
            description)
        ->type_name("JSON");
}

CLI::Option* addHexBytes(CLI::App& command, const std::string& name, QByteArray& bytes,
                         const std::string& description) {
    return command
        .add_option_function<std::string>(
            name,
            [&bytes](const std::string& given) {
                const bool digits = std::ranges::all_of(
                    given, [](unsigned char digit) { return std::isxdigit(digit) != 0; });
                if (!digits || given.size() % 2 != 0) {
                    throw CLI::ValidationError('"' + given +
                                               "\" is no bytes in hexadecimal digits, two for "
                                               "each byte");
                }
                bytes = QByteArray::fromHex(QByteArray::fromStdString(given));
            },
            description)
        ->type_name("HEX");
}

} // namespace host
