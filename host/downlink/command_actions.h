#pragma once

#include "host/session/session.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace host {

/// A downlink command to be issued.
struct CommandOrder {
    int device = 0;
    QJsonObject data;
    QByteArray payload;
    QString apiKey;
    /// In the server's own unit.
    int timeout = 0;
    /// How long the store keeps the command.
    qint64 lifeSecs = 7LL * 24 * 60 * 60;
};

/// Each of these blocks on the server, and throws Failure if it does not do its part or, naming the
/// id, if there is no command of that id.

/// Stores the command, pending and issued now, and prints its id.
void issueCommand(const CommandOrder& order, Session& session);

/// Marks the command as executed.
void ackCommand(const QString& id, Session& session);

/// Shows all that is stored of the command: in a table one member a line.
void showCommand(const QString& id, Session& session);

} // namespace host
