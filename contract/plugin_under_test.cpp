#include "contract/plugin_under_test.h"

#include "contract/rule.h"

namespace contract {

QObject& PluginUnderTest::root() {
    m_loader.setFileName(m_file);
    auto* const root = m_loader.instance();
    if (root == nullptr) {
        throw RuleBroken{QStringLiteral("the plug-in file can be loaded"), m_loader.errorString()};
    }
    return *root;
}

interfaces::IDatabaseFactory& PluginUnderTest::factory() {
    auto* const factory = qobject_cast<interfaces::IDatabaseFactory*>(&root());
    if (factory == nullptr) {
        throw RuleBroken{QStringLiteral("the root object casts to the interface ") +
                             QLatin1String(qobject_interface_iid<interfaces::IDatabaseFactory*>()),
                         QStringLiteral("it does not")};
    }
    return *factory;
}

} // namespace contract
