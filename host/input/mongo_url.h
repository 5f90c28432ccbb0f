#pragma once

#include <QString>

namespace host {

/// What makes a MongoDB connection string unfit to be handed on; empty if nothing does. For a
/// sentence that begins with where the string is from; nothing of the string itself is in it but
/// the one character that is to be blamed.
///
/// It looks for user names and passwords with characters that have to be percent-encoded there.
/// The driver's library takes what follows such a character for the name of a host, asks the name
/// server for it and repeats it in its messages. Everything else is the library's to judge.
QString mongoUrlFault(const QString& url);

} // namespace host
