#pragma once

#include <CLI/CLI.hpp>
#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>
#include <string>

namespace host {

/// The JSON value that the text is; empty if it is none.
std::optional<QJsonValue> parseJson(const QString& text);

/// An option with a JSON object.
CLI::Option* addJsonObject(CLI::App& command, const std::string& name, QJsonObject& object,
                           const std::string& description);

/// An option with bytes in hexadecimal digits.
CLI::Option* addHexBytes(CLI::App& command, const std::string& name, QByteArray& bytes,
                         const std::string& description);

} // namespace host
