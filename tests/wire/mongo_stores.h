#pragma once

#include "mongo/dl_message_repository.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/ul_app_message_reopository.h"

#include "tests/mongo/eav_repository_fixture.h"
#include "tests/mongo/records.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/uri.hpp>

#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

/// A store as the faults of the wire see it: one write and one read, each of one request.
class Store {
public:
    virtual ~Store() = default;
    /// Stores one more record of the device.
    virtual void write(int device) = 0;
    /// How many records of the device it finds.
    virtual std::size_t read(int device) = 0;
};

/// A repository with a client of its own.
template <typename Repository>
class RepositoryStore : public Store {
public:
    RepositoryStore(const std::string& url, const std::string& database)
        : m_client(mongocxx::v1::uri(url)), repository(m_client.database(database)) {}

protected:
    template <typename Found>
    static std::size_t countOf(const Found& found, int device) {
        const auto records = found->find(device);
        return records == found->end() ? 0 : records->second.size();
    }

private:
    mongocxx::v1::client m_client;

protected:
    Repository repository;
};

class UplinkStore : public RepositoryStore<mongo::ULAPPMessageRepository> {
public:
    static constexpr std::string_view collection = "ul_messages";
    using RepositoryStore::RepositoryStore;
    void write(int device) override {
        static quint64 count = 0;
        const quint64 id = (static_cast<quint64>(device) << 32) + ++count;
        repository.SaveMessage(records::uplink{.id = id, .modem = device});
    }
    void writeLarge(int device, int payloadBytes) {
        model::message message = records::uplink{.id = 1'000'000, .modem = device};
        message.payload = QByteArray(payloadBytes, 'x');
        repository.SaveMessage(message);
    }
    std::size_t read(int device) override {
        return countOf(repository.GetMessages(records::uplinksOf({device})), device);
    }
};

class DownlinkStore : public RepositoryStore<mongo::DLMessageRepository> {
public:
    static constexpr std::string_view collection = "dl_messages";
    using RepositoryStore::RepositoryStore;
    void write(int device) override {
        model::dl_message message = records::downlink{.modem = device};
        repository.SaveMessage(message);
    }
    std::size_t read(int device) override {
        return countOf(repository.GetCommands(records::downlinksOf({device})), device);
    }
};

class ValueStore : public RepositoryStore<mongo::EAVRepositoryMongo> {
public:
    static constexpr std::string_view collection = "eav_values";
    using RepositoryStore::RepositoryStore;
    void write(int device) override { repository.SaveValues({records::reading{.modem = device}}); }
    std::size_t read(int device) override {
        return countOf(repository.GetValues(records::allOf({device})), device);
    }
};

class EventStore : public RepositoryStore<mongo::EAVRepositoryMongo> {
public:
    static constexpr std::string_view collection = "eav_events";
    using RepositoryStore::RepositoryStore;
    void write(int device) override {
        repository.SaveEvents({records::happening{.modem = device}});
    }
    std::size_t read(int device) override {
        return countOf(repository.GetEvents(records::allOf({device})), device);
    }
};

/// One of these as the parameter of a test.
struct MongoStore {
    const char* name;
    std::string_view collection;
    std::function<std::unique_ptr<Store>(const std::string& url, const std::string& database)> make;

    friend void PrintTo(const MongoStore& store, std::ostream* out) { *out << store.name; }
};

template <typename Kind>
MongoStore mongoStore(const char* name) {
    return {name, Kind::collection, [](const std::string& url, const std::string& database) {
                return std::make_unique<Kind>(url, database);
            }};
}

inline std::array<MongoStore, 4> mongoStores() {
    return {mongoStore<UplinkStore>("Uplinks"), mongoStore<DownlinkStore>("Downlinks"),
            mongoStore<ValueStore>("Values"), mongoStore<EventStore>("Events")};
}
