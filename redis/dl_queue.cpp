#include "redis/dl_queue.h"

#include "model/json/compact_json.h"
#include "model/model_convertors.h"
#include "redis/device_json.h"

namespace redis {

namespace {

// The database holds nothing but queues, so the device number alone is the key.
QByteArray keyOf(int modem_id) {
    return QByteArray::number(modem_id);
}

} // namespace

dl_queue::dl_queue(const redis_conf& conf, const std::string& mongoUrl)
    : m_connection(conf.connection()), m_persistent(mongoUrl), m_db(conf.queue_db) {
    queues().open();
}

model::dl_queues dl_queue::Pull(int modem_id) {
    return model_convertors::fromJson<model::dl_queues>(queues().pull(keyOf(modem_id), modem_id));
}

bool dl_queue::Push(int modem_id, const model::dl_queues& record, bool persist) {
    queues().push(keyOf(modem_id), modem_id, model_convertors::compactJson(record), persist,
                  [&] { return model_convertors::toJson(record); });
    return true;
}

bool dl_queue::Delete(int modem_id) {
    queues().remove(keyOf(modem_id), modem_id);
    return true;
}

bool dl_queue::DeleteDevices(const QList<int>& modem_ids) {
    for (const int modem_id : modem_ids) {
        Delete(modem_id);
    }
    return true;
}

device_json<mongo::dl_queue_persistent> dl_queue::queues() {
    return {m_connection, m_db, m_persistent};
}

} // namespace redis
