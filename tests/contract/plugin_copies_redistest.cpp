#include "tests/contract/one_of_each.h"

#include <optional>

using namespace test_support;

// A host that has the plug-in twice in one process, from two files: an old one and a new one, say.
namespace {

class TwoPlugins : public EveryKindOfObject {
protected:
    QString copy(const QString& name) const {
        const QString file = folder.filePath(name);
        EXPECT_TRUE(QFile::copy(pluginFile(), file)) << file.toStdString();
        return file;
    }

    static interfaces::IDatabaseFactory* factoryOf(QPluginLoader& loader) {
        auto* factory = qobject_cast<interfaces::IDatabaseFactory*>(loader.instance());
        if (factory == nullptr) {
            throw std::runtime_error(loader.errorString().toStdString());
        }
        return factory;
    }

    QTemporaryDir folder;
    QPluginLoader one{copy("libone.so"_q)};
    QPluginLoader other{copy("libother.so"_q)};
};

TEST_F(TwoPlugins, HaveEachTheirOwnObjectAndClasses) {
    ASSERT_NE(factoryOf(one), factoryOf(other));

    EXPECT_NE(one.instance(), other.instance());
    EXPECT_NE(one.instance()->metaObject(), other.instance()->metaObject());
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(TwoPlugins, AreUsedSideBySide) {
    one_of_each ofOne = make(factoryOf(one), 0);
    one_of_each ofOther = make(factoryOf(other), 1);
    for (int number = 1; number <= 3; ++number) {
        ofOne.store(number);
        ofOther.store(number);
    }
    ofOne.expectToRead(3);
    ofOther.expectToRead(3);

    expectStored(0, 3);
    expectStored(1, 3);
}

TEST_F(TwoPlugins, AreUnloadedOneByOne) {
    one.setLoadHints({}); // by default Qt itself keeps a plug-in loaded
    std::optional ofOne = make(factoryOf(one), 0);
    one_of_each ofOther = make(factoryOf(other), 1);
    ofOne->store(1);
    ofOne.reset();
    ASSERT_TRUE(one.unload()) << one.errorString().toStdString();

    ofOther.store(1);
    ofOther.expectToRead(1);
    expectStored(1, 1);
    EXPECT_NE(factoryOf(other), nullptr);
}

} // namespace
