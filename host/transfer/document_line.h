#pragma once

#include "host/servers/extended_json.h"

#include <QByteArray>

/// A document as a line of an export: canonical extended JSON if that reads back to the same bytes,
/// and otherwise {"$bson_base64":"…"} with the bytes themselves.
namespace host {

/// Without the end of the line.
QByteArray documentLine(const DocumentView& document);

/// Whether the line has the bytes themselves.
bool isBytesLine(const QByteArray& line);

/// The document, byte by byte the one that documentLine() was given. Throws Failure, with the
/// reason alone, for a line that is none.
Document documentOfLine(const QByteArray& line);

} // namespace host
