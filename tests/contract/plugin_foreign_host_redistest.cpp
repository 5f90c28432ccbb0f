#include "tests/contract/foreign_host.h"
#include "tests/contract/one_of_each.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <set>

using namespace test_support;

// This program is a host that links and uses hiredis and mongocxx itself, and exports functions and
// classes of its own by the names of the plug-in's (foreign_host.cpp).
namespace {

class ForeignHost : public EveryKindOfObject {
protected:
    LoadedPlugin plugin;
};

TEST_F(ForeignHost, IsNotCalledByThePlugin) {
    one_of_each objects = make(plugin.factory());
    objects.store(1);
    objects.expectToRead(1);

    expectStored(0, 1);
    EXPECT_THAT(foreign_host::calls(), testing::IsEmpty());
}

struct binding {
    QString from;
    QString to;
    QString symbol;

    friend bool operator<(const binding& a, const binding& b) {
        return std::tie(a.from, a.to, a.symbol) < std::tie(b.from, b.to, b.symbol);
    }
    friend void PrintTo(const binding& binding, std::ostream* out) {
        *out << qUtf8Printable(binding.from + " is bound to "_q + binding.to + " by "_q +
                               binding.symbol);
    }
};

/// What the dynamic linker binds to what while this program runs the test with everything bound at
/// once.
std::set<binding> bindingsOf(const QString& test) {
    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_DEBUG"_q, "bindings"_q);
    environment.insert("LD_DEBUG_OUTPUT"_q, folder.filePath("bindings"_q));
    environment.insert("LD_BIND_NOW"_q, "1"_q);
    environment.remove("GTEST_OUTPUT"_q);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("/proc/self/exe"_q, {"--gtest_filter="_q + test});
    EXPECT_TRUE(process.waitForFinished(-1));
    EXPECT_EQ(process.exitCode(), 0) << process.readAll().toStdString();

    static const QRegularExpression line{
        R"(binding file (\S+) \[\d+\] to (\S+) \[\d+\]: .* symbol `([^']+)')"_q};
    std::set<binding> bindings;
    for (const QFileInfo& output : QDir{folder.path()}.entryInfoList(QDir::Files)) {
        QFile file{output.filePath()};
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        while (!file.atEnd()) {
            const auto match = line.match(QString::fromUtf8(file.readLine()));
            if (match.hasMatch()) {
                bindings.insert({match.captured(1), match.captured(2), match.captured(3)});
            }
        }
    }
    return bindings;
}

/// Every C++ program offers its copies of the standard library's templates to all the others.
bool isOfTheStandardLibrary(const binding& binding) {
    static const QRegularExpression name{"^_Z(N[VKRO]*S[tabsiod]|St|[A-Z]+N?[VKRO]*S[tabsiod])"_q};
    return name.match(binding.symbol).hasMatch();
}

TEST(ForeignHostBindings, AreNoneBetweenTheHostAndThePluginButQtsEntryPoint) {
    const QString host = "/proc/self/exe"_q;
    std::set<binding> toTheHost;
    std::set<QString> toThePlugin;
    for (const binding& found : bindingsOf("ForeignHost.IsNotCalledByThePlugin"_q)) {
        if (found.from == pluginFile() && found.to == host && !isOfTheStandardLibrary(found)) {
            toTheHost.insert(found);
        }
        if (found.to == pluginFile()) {
            toThePlugin.insert(found.symbol);
        }
    }

    EXPECT_THAT(toTheHost, testing::IsEmpty());
    EXPECT_THAT(toThePlugin, testing::ElementsAre("qt_plugin_instance"_q));
}

} // namespace
