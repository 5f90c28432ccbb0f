#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/virtual_table.h"

/// Implementations of the host's interfaces that write down which operation was reached. Results
/// are recognisable: pointers that point nowhere and shared pointers that own nothing.
namespace virtual_table {

template <typename Type>
Type* nowhere(std::uintptr_t address) {
    return reinterpret_cast<Type*>(address);
}

template <typename Type>
std::shared_ptr<Type> sharedNowhere(std::uintptr_t address) {
    return {std::shared_ptr<void>{}, nowhere<Type>(address)};
}

class recording_factory final : public interfaces::IDatabaseFactory, public recorder {
public:
    using recorder::recorder;

    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override {
        reached("CreateMessageDatabaseInst", &settings, parent);
        return sharedNowhere<interfaces::IMessagesDatabase>(0x100);
    }
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override {
        reached("CreateEavDatabaseInst", &settings, parent);
        return sharedNowhere<interfaces::IEAVDatabase>(0x200);
    }
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override {
        reached("CreateDriverStateInst", &settings, parent);
        return sharedNowhere<interfaces::IDriverState>(0x300);
    }
    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) override {
        reached("CreateClientDatabaseInst", &settings, parent);
        return sharedNowhere<interfaces::IDeviceClientsDatabase>(0x400);
    }
};

/// The four operations that the database interfaces begin with.
template <typename Interface>
class recording_database : public Interface, public recorder {
public:
    using recorder::recorder;

    void CreateDatabase() override { reached("CreateDatabase"); }
    void CommitTransaction() override { reached("CommitTransaction"); }
    void RollbackTransaction() override { reached("RollbackTransaction"); }
    void BeginTransaction() override { reached("BeginTransaction"); }
};

class recording_messages_database final : public recording_database<interfaces::IMessagesDatabase> {
public:
    using recording_database::recording_database;

    // Ahead of the other one on purpose: the order here has no influence on the slots.
    interfaces::IDLAPPMessageRepository* DlMessageRepository() override {
        reached("DlMessageRepository");
        return nowhere<interfaces::IDLAPPMessageRepository>(0x600);
    }
    interfaces::IULAPPMessageRepository* UlMessageRepository() override {
        reached("UlMessageRepository");
        return nowhere<interfaces::IULAPPMessageRepository>(0x500);
    }
};

class recording_eav_database final : public recording_database<interfaces::IEAVDatabase> {
public:
    using recording_database::recording_database;

    interfaces::IEAVRepository* EAVRepository() override {
        reached("EAVRepository");
        return nowhere<interfaces::IEAVRepository>(0x500);
    }
};

class recording_clients_database final
    : public recording_database<interfaces::IDeviceClientsDatabase> {
public:
    using recording_database::recording_database;

    interfaces::IDeviceClientsRepository* DeviceClientsRepository() override {
        reached("DeviceClientsRepository");
        return nowhere<interfaces::IDeviceClientsRepository>(0x500);
    }
};

class recording_uplinks final : public interfaces::IULAPPMessageRepository, public recorder {
public:
    using recorder::recorder;
    using result = std::shared_ptr<std::map<int, std::list<model::message>>>;

    void SaveMessage(const model::message& message) override { reached("SaveMessage", &message); }
    result GetMessages(const model::filter_roll& filter) override {
        reached("GetMessages", &filter);
        return sharedNowhere<result::element_type>(0x100);
    }
    void DeleteMessages(const model::filter_roll& filter) override {
        reached("DeleteMessages", &filter);
    }
    std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) override {
        reached("GetDeviceProtocolHWType", modem_id);
        return {QStringLiteral("protocol"), QStringLiteral("hw_type")};
    }
};

class recording_downlinks final : public interfaces::IDLAPPMessageRepository, public recorder {
public:
    using recorder::recorder;
    using result = std::shared_ptr<std::map<int, std::list<model::dl_message>>>;

    void SaveMessage(model::dl_message& message) override {
        reached("SaveMessage", &message);
        message.db_id = QStringLiteral("written back");
    }
    model::dl_message GetById(const QString& id) override {
        reached("GetById", &id);
        model::dl_message message;
        message.modem_id = 7;
        message.db_id = id;
        return message;
    }
    result GetCommands(const model::filter_dl& filter) override {
        reached("GetCommands", &filter);
        return sharedNowhere<result::element_type>(0x300);
    }
    result GetNotAckCommands(const model::filter_dl& filter) override {
        reached("GetNotAckCommands", &filter);
        return sharedNowhere<result::element_type>(0x400);
    }
    void SetStatus(const QString& id, model::dl_message::dl_status status) override {
        reached("SetStatus", &id, static_cast<int>(status));
    }
    void AckCommand(const QString& id) override { reached("AckCommand", &id); }
    void DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                        const QDateTime& to) override {
        reached("DeleteMessages", &modem_ids, &from, &to);
    }
};

class recording_eav_repository final : public interfaces::IEAVRepository, public recorder {
public:
    using recorder::recorder;
    using values = std::shared_ptr<std::map<int, std::list<model::dev_value>>>;
    using events = std::shared_ptr<std::map<int, std::list<model::dev_event>>>;

    void SaveValues(const std::list<model::dev_value>& list) override {
        reached("SaveValues", &list);
    }
    void SaveEvents(const std::list<model::dev_event>& list) override {
        reached("SaveEvents", &list);
    }
    values GetValues(const model::filter_eav& filter) override {
        reached("GetValues", &filter);
        return sharedNowhere<values::element_type>(0x300);
    }
    events GetEvents(const model::filter_eav& filter) override {
        reached("GetEvents", &filter);
        return sharedNowhere<events::element_type>(0x400);
    }
    void DeleteValues(const model::filter_eav& filter) override {
        reached("DeleteValues", &filter);
    }
    void DeleteEvents(const model::filter_eav& filter) override {
        reached("DeleteEvents", &filter);
    }
};

class recording_clients_repository final : public interfaces::IDeviceClientsRepository,
                                           public recorder {
public:
    using recorder::recorder;

    std::list<QString> GetDeviceClients(int modem_id) override {
        reached("GetDeviceClients", modem_id);
        return {QStringLiteral("client")};
    }
    std::pair<QString, QString> GetDeviceInfo(int modem_id) override {
        reached("GetDeviceInfo", modem_id);
        return {QStringLiteral("protocol"), QStringLiteral("hw_type")};
    }
};

} // namespace virtual_table
