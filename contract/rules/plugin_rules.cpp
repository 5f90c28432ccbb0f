#include "contract/expectations.h"
#include "contract/rules/rules.h"
#include "contract/trial.h"

#include <QJsonObject>
#include <QPointer>

#include <array>

namespace contract {

namespace {

QLatin1String interfaceId() {
    return QLatin1String(qobject_interface_iid<interfaces::IDatabaseFactory*>());
}

void namesItsInterface(Trial& trial) {
    const QPluginLoader loader(trial.plugin().file());
    const auto metadata = loader.metaData();
    expectEqual(QStringLiteral("the metadata's IID"),
                metadata.value(QLatin1String("IID")).toString(), QString(interfaceId()));
    expect(!metadata.value(QLatin1String("className")).toString().isEmpty(),
           QStringLiteral("the metadata has a class name"), QStringLiteral("none"));
    expect(!loader.isLoaded(), QStringLiteral("the metadata can be read without loading"),
           QStringLiteral("the file was loaded"));
}

void bindsAllItsSymbols(Trial& trial) {
    QPluginLoader loader(trial.plugin().file());
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    expect(loader.load(), QStringLiteral("the file can be loaded"), loader.errorString());
}

void castsToTheFactory(Trial& trial) {
    auto* const factory = static_cast<void*>(&trial.plugin().factory());
    auto& root = trial.plugin().root();
    for (const char* const name :
         {"interfaces::IDatabaseFactory", qobject_interface_iid<interfaces::IDatabaseFactory*>()}) {
        expect(root.qt_metacast(name) == factory,
               QStringLiteral("qt_metacast(\"%1\") gives the factory").arg(QLatin1String(name)),
               QStringLiteral("it does not"));
    }
    expect(root.qt_metacast("interfaces::IDatabase") == nullptr,
           QStringLiteral("qt_metacast() gives nothing for another interface"),
           QStringLiteral("it gives something"));
    expect(root.parent() == nullptr, QStringLiteral("the root object has no parent"),
           QStringLiteral("it has one"));
}

void hasOneInstance(Trial& trial) {
    auto* const first = &trial.plugin().root();
    QPluginLoader another(trial.plugin().file());
    expect(&trial.plugin().root() == first && another.instance() == first,
           QStringLiteral("instance() gives the same object every time"),
           QStringLiteral("another object"));
}

void makesANewFactory(Trial& trial) {
    const QPointer<QObject> first(&trial.plugin().root());
    delete first.data();
    expect(first.isNull(), QStringLiteral("the factory can be destroyed"),
           QStringLiteral("it still lives"));
    trial.plugin().factory();
}

void comesBackAfterUnloading(Trial& trial) {
    const QString file = trial.plugin().file();
    for (int round = 0; round < 3; ++round) {
        QPluginLoader loader(file);
        loader.setLoadHints({}); // by default Qt itself keeps a plug-in mapped
        expect(qobject_cast<interfaces::IDatabaseFactory*>(loader.instance()) != nullptr,
               QStringLiteral("loading gives the factory again"), loader.errorString());
        expect(loader.unload(), QStringLiteral("the plug-in can be unloaded"),
               loader.errorString());
    }
}

constexpr std::array rules{
    Rule{"plugin.metadata",
         "The file's metadata name the interface and a class, and can be read without loading it",
         namesItsInterface},
    Rule{"plugin.symbols", "The file loads with all its symbols bound at once", bindsAllItsSymbols},
    Rule{"plugin.factory",
         "The root object has no parent and casts to the factory by the interface's name and by "
         "its identifier, and to no other interface",
         castsToTheFactory},
    Rule{"plugin.one-instance", "Every loader of the file gives the same root object",
         hasOneInstance},
    Rule{"plugin.new-instance", "When the root object was destroyed, the next call makes a new one",
         makesANewFactory},
    Rule{"plugin.unloading", "The plug-in can be unloaded, and loaded again",
         comesBackAfterUnloading},
};

} // namespace

std::span<const Rule> pluginRules() {
    return rules;
}

} // namespace contract
