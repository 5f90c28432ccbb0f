#pragma once

#include "bench/raw_redis.h"
#include "host/plugin_file.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "model/documents/index_layout.h"

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/instance.hpp>

#include <QJsonObject>

#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace bench {

/// The plug-in, loaded from its file as a host does, and beside it bare connections of the client
/// libraries to the same servers.
///
/// Uses the plug-in's fixed database, which it drops at the end, and three databases of the Redis
/// server, which it leaves empty.
class Stores {
public:
    /// Takes the servers from MONGODB_URL and REDIS_URL and the file from KELVROSTORAGE_PLUGIN.
    /// Throws std::runtime_error, having changed nothing, if one of them is missing, if a Redis
    /// database is not empty, or if the fixed database has collections and KELVRO_ALLOW_DROP does
    /// not say that they may go.
    Stores();
    ~Stores();

    interfaces::IULAPPMessageRepository& uplinks() { return *m_messages->UlMessageRepository(); }
    interfaces::IDLAPPMessageRepository& downlinks() { return *m_messages->DlMessageRepository(); }
    interfaces::IEAVRepository& eav() { return *m_eav->EAVRepository(); }
    interfaces::IDriverState& driverState() { return *m_driverState; }
    interfaces::IDeviceClientsRepository& clients() {
        return *m_clients->DeviceClientsRepository();
    }

    /// The bare connections that are measured.
    mongocxx::v1::collection raw(std::string_view collection);
    RawRedis& rawRedis(int db);

    /// What a comparison needs done before and after its blocks goes by connections of their own,
    /// lest one of the measured ones comes warm from it.
    ///
    /// The collection without documents: made anew, with the plug-in's indexes.
    mongocxx::v1::collection fresh(std::string_view collection,
                                   std::span<const layout::index> indexes);
    /// With one of the databases selected and empty.
    RawRedis& emptyRedis(int db);

    static constexpr int clientDb = 13;
    static constexpr int stateDb = 14;
    static constexpr int queueDb = 15;

    /// What the servers say about themselves.
    QJsonObject versions();

private:
    mongocxx::v1::database database();

    mongocxx::v1::instance m_instance;
    mongocxx::v1::client m_client;
    RawRedis m_redis;
    mongocxx::v1::client m_measuredClient;
    RawRedis m_measuredRedis;
    host::PluginFile m_plugin;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_eav;
    std::shared_ptr<interfaces::IDriverState> m_driverState;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

/// Connects when it is first asked, so that listing the benchmarks needs no server.
class LazyStores {
public:
    Stores& operator()() {
        if (!m_stores) {
            m_stores = std::make_unique<Stores>();
        }
        return *m_stores;
    }

private:
    std::unique_ptr<Stores> m_stores;
};

using Documents = std::vector<bsoncxx::v1::document::value>;

std::size_t countDocuments(mongocxx::v1::collection& collection);

/// Throws std::runtime_error unless the collection holds this many documents.
void requireDocuments(mongocxx::v1::collection& collection, std::size_t expected);

} // namespace bench
