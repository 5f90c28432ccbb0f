#pragma once

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

#include <QByteArray>
#include <QJsonObject>

/// BSON as JSON text, by libbson, whatever the process's locale has for a decimal point.
namespace host {

using Document = bsoncxx::v1::document::value;
using DocumentView = bsoncxx::v1::document::view;

/// Reads extended JSON of any kind. Throws Failure, with the library's words, for what is none.
Document documentFromJson(const QByteArray& text);

/// Canonical extended JSON on one line; empty for a document that has none.
QByteArray canonicalJson(const DocumentView& document);

/// For looking into a server's answer: every number is a JSON number, and what JSON does not have
/// is an object as in relaxed extended JSON. The order of the keys is lost.
QJsonObject plainObject(const DocumentView& document);

} // namespace host
