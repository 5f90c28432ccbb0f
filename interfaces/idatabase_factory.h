#pragma once

#include <QJsonObject>
#include <QObject>

#include <memory>

namespace interfaces {

class IMessagesDatabase;
class IEAVDatabase;
class IDriverState;
class IDeviceClientsDatabase;

/// The plug-in's root object: builds the storage objects from settings.
///
/// The host gets it from QPluginLoader::instance() and casts it with
/// qobject_cast<interfaces::IDatabaseFactory*>. Before the first call the host must have created
/// the MongoDB driver's process-wide mongocxx::v1::instance, and must keep it until everything
/// built here is gone.
///
/// Settings:
///     {
///       "url": "mongodb://…",        MongoDB connection string
///       "redis": {
///         "host": "127.0.0.1",       each key's default is shown
///         "auth": "",                password, empty for none
///         "name": "",                connection name, empty for none
///         "port": 6379,
///         "cleint_db": 2,            database of the client registry; the key is spelled so
///         "state_db": 0,             database of the driver state
///         "queue_db": 7              database of the downlink queues
///       }
///     }
///
/// "url" goes to the MongoDB driver's library as it is. In its user name and password each of
/// % @ : / ? # [ ] must be percent-encoded: what follows an unescaped one the library takes for the
/// name of a host, looks it up and repeats it in its exceptions. Look at it before you hand it
/// over. That library writes to the standard output and error unless the instance gets a logger.
///
/// Every call builds an object of its own, owned by the caller through the shared pointer; `parent`
/// is ignored. Calls may come from any threads at once; what they return is for one thread at a
/// time, but not always the same. Fetching the factory has no lock: do that on one thread. A forked
/// child neither uses nor destroys what its parent has made, but may make its own. Missing or
/// mistyped settings take their default (an empty "url", which the MongoDB driver refuses).
/// Whatever the client libraries throw while the object is built passes through; nothing is left
/// behind then.
class IDatabaseFactory {
public:
    virtual ~IDatabaseFactory() = default;

    /// Reads "url". Lays the store out before it returns: blocks on the server.
    virtual std::shared_ptr<IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) = 0;

    /// Reads "url". Lays the store out before it returns: blocks on the server.
    virtual std::shared_ptr<IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                QObject* parent) = 0;

    /// Reads "url" and "redis". Blocks on both servers.
    virtual std::shared_ptr<IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                QObject* parent) = 0;

    /// Reads "redis". Blocks on the server.
    virtual std::shared_ptr<IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) = 0;
};

} // namespace interfaces

Q_DECLARE_INTERFACE(interfaces::IDatabaseFactory, "org.kelvrostorage.idatabase_factory")
