#pragma once

#include "tests/support/forwarding_plugin.h"

/// The plug-in of KELVRO_REAL_PLUGIN, but that the message store does with the message that is
/// saved third what KELVRO_SPOIL says: "lose", "alter" or "repeat".
class SpoilingPlugin : public test_support::ForwardingPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kelvrostorage.idatabase_factory")

public:
    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;
};
