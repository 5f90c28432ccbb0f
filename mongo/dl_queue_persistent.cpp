#include "mongo/dl_queue_persistent.h"

#include "model/documents/device_object.h"

namespace mongo {

dl_queue_persistent::dl_queue_persistent(const std::string& mongoUrl)
    : m_store(mongoUrl, layout::dl_queues::collection) {}

void dl_queue_persistent::Create() {
    m_store.create();
}

bool dl_queue_persistent::Save(int modem_id, const QJsonObject& state) {
    return m_store.save(modem_id, state);
}

QJsonObject dl_queue_persistent::Get(int modem_id) {
    return m_store.get(modem_id);
}

bool dl_queue_persistent::Delete(int modem_id) {
    return m_store.remove(modem_id);
}

} // namespace mongo
