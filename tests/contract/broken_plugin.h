#pragma once

#include "tests/support/forwarding_plugin.h"

/// A driver that has one fault, which KELVRO_FAULT names (broken_plugin.cpp says what each one
/// does), and does everything else as the plug-in of KELVRO_REAL_PLUGIN.
class BrokenPlugin : public test_support::ForwardingPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KELVRO_IID) // of the build

public:
    BrokenPlugin();

    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
};
