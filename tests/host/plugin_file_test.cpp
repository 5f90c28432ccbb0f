#include "host/plugin_file.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

QString failureOf(const QString& fileName) {
    try {
        host::PluginFile plugin(fileName);
    } catch (const host::Failure& failure) {
        return QString::fromUtf8(failure.what());
    }
    return {};
}

TEST(PluginFile, NamesAFileThatIsMissing) {
    EXPECT_EQ(failureOf("/nonexistent.so"_q), "there is no plug-in file /nonexistent.so"_q);
}

TEST(PluginFile, NamesAFileThatIsNoPlugin) {
    const QTemporaryDir folder;
    const auto fileName = folder.filePath("damaged.so"_q);
    QFile file(fileName);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a library");
    file.close();

    const QString prefix = "cannot load the plug-in file "_q + fileName + ": "_q;
    const auto text = failureOf(fileName);
    EXPECT_TRUE(text.startsWith(prefix)) << text.toStdString();
    EXPECT_GT(text.size(), prefix.size());
}

TEST(PluginFile, NamesAPluginWithoutTheInterface) {
    const auto fileName = QStringLiteral(KELVRO_FOREIGN_PLUGIN);
    EXPECT_EQ(failureOf(fileName),
              "the plug-in file "_q + fileName +
                  " does not offer the interface org.kelvrostorage.idatabase_factory"_q);
}

} // namespace
