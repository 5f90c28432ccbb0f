#include "tests/contract/plugin_file.h"
#include "model/dl_queues.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonObject>
#include <QLibrary>
#include <QProcess>

#include <dlfcn.h>

using namespace test_support::literals;
using testing::IsSubsetOf;
using testing::UnorderedElementsAre;

namespace {

/// What a tool prints about the plug-in file; the test fails if the tool does.
QString outputOf(const QString& program, QStringList arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    arguments << pluginFile();
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished()) << program.toStdString() << " does not run";
    const QString output = QString::fromUtf8(process.readAll());
    EXPECT_EQ(process.exitCode(), 0) << output.toStdString();
    return output;
}

bool isMapped(const QString& file) {
    QFile maps("/proc/self/maps"_q);
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(QFile::encodeName(file));
}

TEST_F(PluginCopy, GivesItsMetadataWithoutBeingLoaded) {
    QPluginLoader loader{copy};

    EXPECT_EQ(loader.metaData().value("className"_q).toString(), "DbDriverMongoFactory"_q);
    EXPECT_FALSE(loader.isLoaded());
    EXPECT_FALSE(isMapped(copy));
}

TEST(PluginMetadata, HoldsTheInterfaceIdentifierAndTheClassName) {
    const QJsonObject metadata = QPluginLoader{pluginFile()}.metaData();

    EXPECT_EQ(metadata.value("IID"_q), QJsonValue("org.kelvrostorage.idatabase_factory"_q));
    EXPECT_EQ(metadata.value("className"_q), QJsonValue("DbDriverMongoFactory"_q));
}

TEST(PluginMetadata, IsThatOfAReleaseInEveryBuild) {
    EXPECT_EQ(QPluginLoader{pluginFile()}.metaData().value("debug"_q), QJsonValue(false));
    // Qt itself says so of every build but a debug one; that one needs the plug-in's own word.
    EXPECT_THAT(QStringLiteral(KELVRO_PLUGIN_DEFINITIONS).split(" "_q),
                testing::Contains("QT_NO_DEBUG"_q));
}

TEST(PluginMetadata, HoldsNothingOfItsOwn) {
    const QJsonObject metadata = QPluginLoader{pluginFile()}.metaData();

    EXPECT_EQ(metadata.value("MetaData"_q).toObject(), QJsonObject());
    EXPECT_THAT(metadata.keys(), IsSubsetOf({"IID"_q, "MetaData"_q, "className"_q, "archreq"_q,
                                             "debug"_q, "version"_q}));
}

TEST(PluginMetadata, TellsTheVersionOfQtThatItWasBuiltAgainst) {
    const int version = QPluginLoader{pluginFile()}.metaData().value("version"_q).toInt();

    EXPECT_EQ(version & ~0xff, QT_VERSION & ~0xff) << std::hex << version;
}

TEST(PluginSymbols, AreOnlyQtsEntryPointsAndTheRecordsJsonConversions) {
    const QString listed = outputOf(
        "nm"_q, {"--dynamic"_q, "--defined-only"_q, "--demangle"_q, "--format=just-symbols"_q});

    EXPECT_THAT(
        listed.split("\n"_q, Qt::SkipEmptyParts),
        UnorderedElementsAre(
            "qt_plugin_instance"_q, "qt_plugin_query_metadata"_q,
            "model_convertors::toJson(model::dev_value const&)"_q,
            "model_convertors::toJson(model::dev_event const&)"_q,
            "model_convertors::toJson(model::message const&)"_q,
            "model_convertors::toJson(model::dl_message const&)"_q,
            "model_convertors::toJson(model::dl_queues const&)"_q,
            "model::dl_message model_convertors::fromJson<model::dl_message>(QJsonObject const&)"_q,
            "model::hb_message model_convertors::fromJson<model::hb_message>(QJsonObject const&)"_q,
            "model::in_message model_convertors::fromJson<model::in_message>(QJsonObject const&)"_q,
            "model::message model_convertors::fromJson<model::message>(QJsonObject const&)"_q,
            "model::custom_cmd model_convertors::fromJson<model::custom_cmd>(QJsonObject const&)"_q,
            "model::dl_queues model_convertors::fromJson<model::dl_queues>(QJsonObject const&)"_q));
}

TEST(PluginSymbols, ConvertRecordsForAHostThatResolvesThemByName) {
    QLibrary library{pluginFile()};
    using to_json = QJsonObject (*)(const model::dl_queues&);
    using from_json = model::dl_queues (*)(const QJsonObject&);
    const auto toJson = reinterpret_cast<to_json>(
        library.resolve("_ZN16model_convertors6toJsonERKN5model9dl_queuesE"));
    const auto fromJson = reinterpret_cast<from_json>(
        library.resolve("_ZN16model_convertors8fromJsonIN5model9dl_queuesEEET_RK11QJsonObject"));
    ASSERT_NE(toJson, nullptr) << library.errorString().toStdString();
    ASSERT_NE(fromJson, nullptr) << library.errorString().toStdString();
    model::dl_queues queues;
    queues.lock = true;
    queues.status = model::dl_queues::status::WAIT;

    EXPECT_EQ(toJson(queues).value("status"_q), QJsonValue("WAIT"_q));
    EXPECT_TRUE(fromJson(toJson(queues)).lock);
    EXPECT_EQ(fromJson(toJson(queues)).status, model::dl_queues::status::WAIT);
}

TEST(PluginSymbols, AreAllResolvedByTheLibrariesThatTheFileNames) {
    const QString output = outputOf("ldd"_q, {"-r"_q});

    EXPECT_FALSE(output.contains("undefined symbol"_q)) << output.toStdString();
    EXPECT_FALSE(output.contains("not found"_q)) << output.toStdString();
    EXPECT_TRUE(output.contains("libmongocxx"_q)) << output.toStdString();
}

TEST(PluginSymbols, CanAllBeBoundAtOnce) {
    void* library = dlopen(QFile::encodeName(pluginFile()).constData(), RTLD_NOW | RTLD_LOCAL);

    ASSERT_NE(library, nullptr) << dlerror();
    dlclose(library);
}

TEST_F(PluginCopy, StaysMappedAfterUnloading) {
    QPluginLoader loader{copy};
    loader.setLoadHints({}); // by default Qt itself keeps a plug-in mapped
    ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
    EXPECT_TRUE(loader.unload()) << loader.errorString().toStdString();

    EXPECT_FALSE(loader.isLoaded());
    EXPECT_TRUE(isMapped(copy));
}

/// A file that is not what it should be must give a host an error text, and no crash.
class DamagedPlugin : public PluginCopy {
protected:
    static void expectRefusal(const QString& file) {
        QPluginLoader loader{file};
        EXPECT_FALSE(loader.load());
        EXPECT_EQ(loader.instance(), nullptr);
        EXPECT_NE(loader.errorString(), QString());
        EXPECT_FALSE(loader.isLoaded());
    }
};

TEST_F(DamagedPlugin, CutToHalfIsRefused) {
    ASSERT_TRUE(QFile::resize(copy, QFile(copy).size() / 2));
    expectRefusal(copy);
}

TEST_F(DamagedPlugin, WithoutItsLastPageIsRefused) {
    ASSERT_TRUE(QFile::resize(copy, QFile(copy).size() - 4096));
    expectRefusal(copy);
}

TEST_F(DamagedPlugin, CutToItsFirstBytesIsRefused) {
    ASSERT_TRUE(QFile::resize(copy, 64));
    expectRefusal(copy);
}

TEST_F(DamagedPlugin, OfNoBytesIsRefused) {
    ASSERT_TRUE(QFile::resize(copy, 0));
    expectRefusal(copy);
}

TEST_F(DamagedPlugin, WithItsHeaderOverwrittenIsRefused) {
    QFile file{copy};
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_EQ(file.write(QByteArray(64, 'x')), 64);
    file.close();
    expectRefusal(copy);
}

TEST_F(DamagedPlugin, ThatIsMissingIsRefused) {
    ASSERT_TRUE(QFile::remove(copy));
    expectRefusal(copy);
}

} // namespace
