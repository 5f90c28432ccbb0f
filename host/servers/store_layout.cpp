#include "host/servers/store_layout.h"

#include <algorithm>

namespace host {

namespace {

IndexLayout index(const char* keys) {
    return {.keys = QString::fromLatin1(keys)};
}

IndexLayout expiry() {
    return {.keys = QStringLiteral("ttl: 1"), .expires = true};
}

} // namespace

bool CollectionLayout::expires() const {
    return std::ranges::any_of(indexes, &IndexLayout::expires);
}

const std::vector<CollectionLayout>& storeLayout() {
    static const std::vector<CollectionLayout> layout{
        {.name = QStringLiteral("ul_messages"),
         .holds = QStringLiteral("uplink messages"),
         .indexes = {index("timestamp: -1"), index("modem_id: 1, timestamp: -1"),
                     index("modem_id: 1, time_detected: -1"),
                     index("modem_id: 1, tag: 1, timestamp: -1"), index("modem_id: hashed"),
                     expiry()}},
        {.name = QStringLiteral("dl_messages"),
         .holds = QStringLiteral("downlink commands"),
         .indexes = {index("modem_id: 1, timestamp: -1"), index("modem_id: 1, status: 1"),
                     index("modem_id: 1, timestamp: -1, status: 1"), index("modem_id: hashed"),
                     expiry()}},
        {.name = QStringLiteral("eav_values"),
         .holds = QStringLiteral("values"),
         .indexes = {index("modem_id: 1, tag: 1, obis_code: 1, timestamp: -1"),
                     index("modem_id: 1, tag: 1, timestamp: -1"),
                     index("modem_id: 1, obis_code: 1, timestamp: -1"), index("modem_id: hashed"),
                     index("modem_id: 1, timestamp: -1"), expiry()}},
        {.name = QStringLiteral("eav_events"),
         .holds = QStringLiteral("events"),
         .indexes = {index("modem_id: 1, timestamp: -1"), index("modem_id: hashed"), expiry()}},
        {.name = QStringLiteral("states"),
         .holds = QStringLiteral("durable copies of driver states"),
         .indexes = {index("_id: hashed")}},
        {.name = QStringLiteral("dl_queues"),
         .holds = QStringLiteral("durable copies of downlink queues"),
         .indexes = {index("_id: hashed")}},
    };
    return layout;
}

} // namespace host
