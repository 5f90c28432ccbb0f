#include "host/servers/store_layout.h"

#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/device_object.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"
#include "tests/support/qt_printers.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <span>
#include <string_view>

namespace {

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

QString keysOf(const layout::index& index) {
    QStringList parts;
    for (const auto& key : index.keys) {
        if (!key.field.empty()) {
            parts.append(textOf(key.field) + QStringLiteral(": ") +
                         (key.order == layout::index_order::hashed
                              ? QStringLiteral("hashed")
                              : QString::number(static_cast<int>(key.order))));
        }
    }
    return parts.join(QStringLiteral(", "));
}

void expectCollection(std::size_t position, std::string_view name,
                      std::span<const layout::index> indexes) {
    const auto& layout = host::storeLayout().at(position);
    EXPECT_EQ(layout.name, textOf(name));
    ASSERT_EQ(layout.indexes.size(), indexes.size()) << name;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        EXPECT_EQ(layout.indexes[i].keys, keysOf(indexes[i])) << name;
        EXPECT_EQ(layout.indexes[i].expires, indexes[i].expires) << name;
    }
}

TEST(StoreLayout, IsThePluginsOwn) {
    ASSERT_EQ(host::storeLayout().size(), 6U);
    expectCollection(0, layout::ul_messages::collection, layout::ul_messages::indexes);
    expectCollection(1, layout::dl_messages::collection, layout::dl_messages::indexes);
    expectCollection(2, layout::eav_values::collection, layout::eav_values::indexes);
    expectCollection(3, layout::eav_events::collection, layout::eav_events::indexes);
    expectCollection(4, layout::states::collection, layout::persistent::indexes);
    expectCollection(5, layout::dl_queues::collection, layout::persistent::indexes);
    EXPECT_EQ(host::expireAfterSecs, layout::expire_after_seconds);
}

} // namespace
