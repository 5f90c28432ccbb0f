#include "interfaces/idatabase_factory.h"
#include "tests/contract/plugin_file.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <QLibrary>
#include <QMetaObject>
#include <QMetaType>
#include <QPointer>
#include <QVariant>
#include <QVector>

#include <cstdlib>

using namespace test_support::literals;

namespace {

class Plugin : public PluginCopy {
protected:
    QObject* root() {
        QObject* object = loader.instance();
        if (object == nullptr) {
            throw std::runtime_error(loader.errorString().toStdString());
        }
        return object;
    }

    QPluginLoader loader{copy};
};

TEST_F(Plugin, GivesTheSameInstanceEveryTime) {
    EXPECT_EQ(root(), root());
    QPluginLoader another{copy};
    EXPECT_EQ(another.instance(), root());
}

TEST_F(Plugin, GivesTheSameInstanceThroughItsEntryPoint) {
    QLibrary library{copy};
    const auto entry = reinterpret_cast<QObject* (*)()>(library.resolve("qt_plugin_instance"));

    ASSERT_NE(entry, nullptr) << library.errorString().toStdString();
    EXPECT_EQ(entry(), root());
    EXPECT_EQ(entry(), root());
}

TEST_F(Plugin, GivesAFactoryWithoutAParent) {
    EXPECT_STREQ(root()->metaObject()->className(), "DbDriverMongoFactory");
    EXPECT_EQ(root()->parent(), nullptr);
}

TEST_F(Plugin, CastsToTheHostsInterface) {
    EXPECT_NE(qobject_cast<interfaces::IDatabaseFactory*>(root()), nullptr);
}

TEST_F(Plugin, AnswersToItsClassNameWithTheObjectItself) {
    EXPECT_EQ(root()->qt_metacast("DbDriverMongoFactory"), root());
}

TEST_F(Plugin, AnswersToTheInterfacesNameAndIdentifierWithTheInterface) {
    void* interface = qobject_cast<interfaces::IDatabaseFactory*>(root());

    EXPECT_EQ(root()->qt_metacast("interfaces::IDatabaseFactory"), interface);
    EXPECT_EQ(root()->qt_metacast("org.kelvrostorage.idatabase_factory"), interface);
}

TEST_F(Plugin, HasTheInterfaceBehindTheQtObject) {
    void* interface = qobject_cast<interfaces::IDatabaseFactory*>(root());

    EXPECT_EQ(interface, reinterpret_cast<char*>(root()) + sizeof(QObject));
}

TEST_F(Plugin, LeavesOtherNamesToQObject) {
    EXPECT_EQ(root()->qt_metacast("QObject"), root());
    EXPECT_EQ(root()->qt_metacast("interfaces::IDatabase"), nullptr);
    EXPECT_EQ(root()->qt_metacast(""), nullptr);
    EXPECT_EQ(root()->qt_metacast(nullptr), nullptr);
}

TEST_F(Plugin, DeclaresNoSignalsSlotsOrProperties) {
    const QMetaObject* meta = root()->metaObject();

    EXPECT_EQ(meta->superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(meta->methodCount(), meta->methodOffset());
    EXPECT_EQ(meta->propertyCount(), meta->propertyOffset());
    EXPECT_EQ(meta->enumeratorCount(), meta->enumeratorOffset());
}

TEST_F(Plugin, MakesANewFactoryWhenTheOldOneWasDestroyed) {
    const QPointer<QObject> first = root();
    delete root();
    ASSERT_TRUE(first.isNull());

    EXPECT_NE(qobject_cast<interfaces::IDatabaseFactory*>(root()), nullptr);
    EXPECT_EQ(root(), root());
}

TEST_F(Plugin, IsDestroyedByUnloadingAndComesBackByLoading) {
    const QPointer<QObject> first = root();
    ASSERT_TRUE(loader.unload()) << loader.errorString().toStdString();
    EXPECT_TRUE(first.isNull());

    ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
    EXPECT_NE(qobject_cast<interfaces::IDatabaseFactory*>(root()), nullptr);
}

class PluginMetaType : public Plugin, public testing::WithParamInterface<const char*> {
protected:
    // By default Qt itself keeps a plug-in mapped; hosts may choose otherwise.
    PluginMetaType() { loader.setLoadHints({}); }
};

/// Ends the process; its code is 0 if the factory registers the type and nobody did before.
[[noreturn]] void endByRegistrationOf(const char* name) {
    constexpr auto unknown = static_cast<int>(QMetaType::UnknownType);
    if (QMetaType::type(name) != unknown) {
        std::exit(2);
    }
    QPluginLoader loader{pluginFile()};
    if (!loader.load() || QMetaType::type(name) != unknown) {
        std::exit(3);
    }
    std::exit(loader.instance() != nullptr && QMetaType::type(name) != unknown ? 0 : 1);
}

// Once registered a type stays so until the end of the process: only a fresh one can tell by whom.
TEST_P(PluginMetaType, IsRegisteredByTheFactoryAndByNobodyElse) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(endByRegistrationOf(GetParam()), testing::ExitedWithCode(0), "");
}

TEST_P(PluginMetaType, CanBeMadeAndCopied) {
    root();
    const QMetaType type{QMetaType::type(GetParam())};
    ASSERT_TRUE(type.isValid());
    void* original = type.create();
    void* copy = type.create(original);

    EXPECT_NE(copy, nullptr);
    EXPECT_NE(copy, original);
    type.destroy(copy);
    type.destroy(original);
}

TEST_P(PluginMetaType, StaysUsableAfterUnloading) {
    root();
    ASSERT_TRUE(loader.unload()) << loader.errorString().toStdString();
    const QMetaType type{QMetaType::type(GetParam())};
    ASSERT_TRUE(type.isValid());
    void* object = type.create();

    EXPECT_NE(object, nullptr);
    type.destroy(object);
}

TEST_P(PluginMetaType, IsTheSameAfterLoadingAgain) {
    root();
    const int before = QMetaType::type(GetParam());
    ASSERT_TRUE(loader.unload()) << loader.errorString().toStdString();
    root();

    EXPECT_EQ(QMetaType::type(GetParam()), before);
}

INSTANTIATE_TEST_SUITE_P(OfEachName, PluginMetaType,
                         testing::Values("Command", "RedisClient::Command", "Response",
                                         "RedisClient::Response", "QVector<QVariant*>",
                                         "QVariant*"));

TEST_F(Plugin, RegistersEachTypeUnderBothItsNames) {
    root();

    EXPECT_EQ(QMetaType::type("Command"), QMetaType::type("RedisClient::Command"));
    EXPECT_EQ(QMetaType::type("Response"), QMetaType::type("RedisClient::Response"));
    EXPECT_NE(QMetaType::type("Command"), QMetaType::type("Response"));
}

TEST_F(Plugin, RegistersTheTypesThatTheHostKnowsByTheSameNames) {
    root();

    const int variant = QMetaType::type("QVariant*");
    const int variants = QMetaType::type("QVector<QVariant*>");
    EXPECT_EQ(qRegisterMetaType<QVariant*>("QVariant*"), variant);
    EXPECT_EQ(qRegisterMetaType<QVector<QVariant*>>("QVector<QVariant*>"), variants);
}

} // namespace
