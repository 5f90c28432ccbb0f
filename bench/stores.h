#pragma once

#include "bench/baselines/raw_collection.h"
#include "bench/baselines/raw_redis.h"
#include "bench/query_plan.h"
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

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/instance.hpp>

#include <QJsonObject>

#include <future>
#include <memory>
#include <span>
#include <string_view>

namespace bench {

/// The plug-in, loaded from its file as a host does, and beside it bare connections of the client
/// libraries to the same servers: one pair that is measured and one for all other work.
///
/// Uses the plug-in's fixed database, which it drops at the end, and three databases of the Redis
/// server, which it leaves empty. At most one in a process: the MongoDB driver's instance cannot be
/// made twice.
class Stores {
public:
    /// Takes the servers from MONGODB_URL and REDIS_URL and the file from KELVROSTORAGE_PLUGIN.
    /// Throws std::runtime_error, having changed nothing, if one of them is missing, if a Redis
    /// database is not empty, or if the fixed database has collections and KELVRO_ALLOW_DROP does
    /// not say that they may go.
    Stores();
    ~Stores();
    Stores(const Stores&) = delete;
    Stores& operator=(const Stores&) = delete;

    interfaces::IULAPPMessageRepository& uplinks() { return *m_messages->UlMessageRepository(); }
    interfaces::IDLAPPMessageRepository& downlinks() { return *m_messages->DlMessageRepository(); }
    interfaces::IEAVRepository& eav() { return *m_eav->EAVRepository(); }
    interfaces::IDriverState& driverState() { return *m_driverState; }
    interfaces::IDeviceClientsRepository& clients() {
        return *m_clients->DeviceClientsRepository();
    }

    /// The collection made anew, without documents, with the plug-in's indexes.
    RawCollectionPtr emptyCollection(std::string_view collection,
                                     std::span<const layout::index> indexes);

    /// The measured connection, with one of the databases selected, and the other one.
    RawRedis& rawRedis(int db);
    RawRedis& otherRedis(int db);
    /// The other one, with the database emptied.
    RawRedis& emptyRedis(int db);

    static constexpr int clientDb = 13;
    static constexpr int stateDb = 14;
    static constexpr int queueDb = 15;

    /// See query_plan.h.
    QString planOf(std::string_view collection, const ReadyQuery& query) {
        return queryPlan(database(), collection, query);
    }

    /// What the servers say about themselves.
    QJsonObject versions();

private:
    explicit Stores(const QJsonObject& settings);

    mongocxx::v1::database database();

    mongocxx::v1::instance m_instance;
    mongocxx::v1::client m_client;
    mongocxx::v1::client m_measuredClient;
    RawRedis m_redis;
    RawRedis m_measuredRedis;
    host::PluginFile m_plugin;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_eav;
    std::shared_ptr<interfaces::IDriverState> m_driverState;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

/// Connects when it is first asked, so that listing the benchmarks needs no server. Once in vain is
/// in vain for good: every call throws then.
class LazyStores {
public:
    Stores& operator()() { return *m_stores.get(); }

private:
    std::shared_future<std::unique_ptr<Stores>> m_stores =
        std::async(std::launch::deferred, [] { return std::make_unique<Stores>(); });
};

} // namespace bench
