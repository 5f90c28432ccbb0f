#include "redis/dl_queue.h"

#include "model/model_convertors.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QVariant>

namespace redis {

namespace {

// The database holds nothing but queues, so the device number alone is the key.
QByteArray keyOf(int modem_id) {
    return QByteArray::number(modem_id);
}

} // namespace

dl_queue::dl_queue(const redis_conf& conf, const std::string& mongoUrl)
    : m_connection(RedisClient::ConnectionConfig(conf.host, conf.auth, conf.port, conf.name)),
      m_persistent(mongoUrl), m_db(conf.queue_db) {
    m_connection.connect(true);
    m_persistent.Create();
}

model::dl_queues dl_queue::Pull(int modem_id) {
    const QVariant reply = m_connection.commandSync({"GET", keyOf(modem_id)}, m_db).getValue();
    const QJsonObject json = reply.type() == QVariant::ByteArray
                                 ? QJsonDocument::fromJson(reply.toByteArray()).object()
                                 : m_persistent.Get(modem_id);
    return model_convertors::fromJson<model::dl_queues>(json);
}

bool dl_queue::Push(int modem_id, const model::dl_queues& queues, bool persist) {
    const QJsonObject json = model_convertors::toJson(queues);
    m_connection.commandSync(
        {"SET", keyOf(modem_id), QJsonDocument{json}.toJson(QJsonDocument::Compact)}, m_db);
    if (persist) {
        m_persistent.Save(modem_id, json);
    }
    return true;
}

bool dl_queue::Delete(int modem_id) {
    m_connection.commandSync({"DEL", keyOf(modem_id)}, m_db);
    m_persistent.Delete(modem_id);
    return true;
}

bool dl_queue::DeleteDevices(const QList<int>& modem_ids) {
    for (const int modem_id : modem_ids) {
        Delete(modem_id);
    }
    return true;
}

} // namespace redis
