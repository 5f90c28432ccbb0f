#pragma once

#include <QString>

namespace host {

/// The MongoDB connection string with the time-outs that suit a server which stores what meters
/// send, but for those that it names itself:
///
///     serverSelectionTryOnce=false    once connecting has failed, the driver's library does not
///                                     try again for five seconds: a call waits for the next
///                                     attempt, rather than all calls throwing until then
///     serverSelectionTimeoutMS=10000  how long it waits: those five seconds, and an attempt
///     connectTimeoutMS=3000           a server that is there answers in milliseconds
///     socketTimeoutMS=30000           for an answer: longer than the longest query takes
///
/// By themselves the last three would be 30, 10 and 300 seconds.
QString withTimeouts(const QString& mongoUrl);

} // namespace host
