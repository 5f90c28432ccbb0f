#include "tests/contract/foreign_host.h"

#include "model/model_convertors.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>

// What a host may define and export by the names that the plug-in has inside, with other layouts
// and other results.

namespace foreign_host {

static std::vector<std::string>& called() {
    static std::vector<std::string> names;
    return names;
}

const std::vector<std::string>& calls() {
    return called();
}

} // namespace foreign_host

#pragma GCC visibility push(default)

using foreign_host::called;

namespace RedisClient {

struct ConnectionConfig {
    ConnectionConfig(QString host, const QString& auth, int port, QString name);
    std::array<char, 3> other{};
};

ConnectionConfig::ConnectionConfig(QString /*host*/, const QString& /*auth*/, int /*port*/,
                                   QString /*name*/) {
    called().emplace_back("RedisClient::ConnectionConfig");
}

struct Response {
    std::array<double, 40> other{};
};

class Connection {
public:
    explicit Connection(ConnectionConfig config);
    virtual ~Connection();
    bool connect(bool wait);
    bool isConnected() const noexcept;
    void disconnect() noexcept;
    Response commandSync(const QList<QByteArray>& parts, int db);

private:
    std::array<int, 100> m_other{};
};

Connection::Connection(ConnectionConfig /*config*/) {
    called().emplace_back("RedisClient::Connection");
}
Connection::~Connection() {
    called().emplace_back("RedisClient::~Connection");
}
bool Connection::connect(bool /*wait*/) {
    called().emplace_back("RedisClient::Connection::connect");
    return false;
}
bool Connection::isConnected() const noexcept {
    called().emplace_back("RedisClient::Connection::isConnected");
    return false;
}
void Connection::disconnect() noexcept {
    called().emplace_back("RedisClient::Connection::disconnect");
}
Response Connection::commandSync(const QList<QByteArray>& /*parts*/, int /*db*/) {
    called().emplace_back("RedisClient::Connection::commandSync");
    return {};
}

} // namespace RedisClient

namespace mongo {

class DbDriverMongo {
public:
    explicit DbDriverMongo(const std::string& url);
    virtual ~DbDriverMongo();
    virtual void CreateDatabase();

private:
    std::array<char, 1> m_other{};
};

DbDriverMongo::DbDriverMongo(const std::string& /*url*/) {
    called().emplace_back("mongo::DbDriverMongo");
}
DbDriverMongo::~DbDriverMongo() {
    called().emplace_back("mongo::~DbDriverMongo");
}
void DbDriverMongo::CreateDatabase() {
    called().emplace_back("mongo::DbDriverMongo::CreateDatabase");
}

} // namespace mongo

struct redis_conf {
    int other = 0;
};

redis_conf redis_conf_from_json(const QJsonObject& settings);
redis_conf redis_conf_from_json(const QJsonObject& /*settings*/) {
    called().emplace_back("redis_conf_from_json");
    return {};
}

// The plug-in exports these itself, and calls them.
namespace model_convertors {

template <>
model::dl_queues fromJson<model::dl_queues>(const QJsonObject& /*object*/) {
    called().emplace_back("model_convertors::fromJson");
    return {};
}

QJsonObject toJson(const model::dl_queues& /*queues*/) {
    called().emplace_back("model_convertors::toJson");
    return {};
}

} // namespace model_convertors

#pragma GCC visibility pop
