#include "mongo/driver_state_persistent.h"

#include "model/documents/device_object.h"

namespace mongo {

driver_state_persistent::driver_state_persistent(const std::string& mongoUrl)
    : m_store(mongoUrl, layout::states::collection) {}

void driver_state_persistent::Create() {
    m_store.create();
}

bool driver_state_persistent::Save(int modem_id, const QJsonObject& state) {
    return m_store.save(modem_id, state);
}

QJsonObject driver_state_persistent::Get(int modem_id) {
    return m_store.get(modem_id);
}

bool driver_state_persistent::Delete(int modem_id) {
    return m_store.remove(modem_id);
}

} // namespace mongo
