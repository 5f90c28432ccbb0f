#pragma once

#include "tests/support/forwarding_plugin.h"

/// The plug-in of KELVRO_REAL_PLUGIN, but that something happens at one of the calls that save
/// uplinks, values or events. KELVRO_FAULT says which, counted from 1 over all of them, and what,
/// as "3 kill-before":
///
///     kill-before, kill-after   the process is killed, and the call is not made, or is
///     kill-within               … and the first half of its records is saved
///     throw-before, throw-after, throw-within   the call throws instead
///
/// Uplinks of KELVRO_REFUSED_METER and values of KELVRO_REFUSED_CODE are refused; values before one
/// in the same list are saved.
class FaultyPlugin : public test_support::ForwardingPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kelvrostorage.idatabase_factory")

public:
    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
};
