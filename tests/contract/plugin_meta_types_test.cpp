#include "interfaces/idatabase_factory.h"
#include "tests/contract/plugin_file.h"
#include "tests/support/log_capture.h"
#include "tests/support/qt_literals.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QVariant>
#include <QVector>

#include <array>
#include <cstdlib>
#include <iostream>
#include <vector>

using namespace test_support;
using namespace test_support::literals;

// Hosts that have registered types of their own under the names that the plug-in registers.
namespace {

/// As large as the plug-in's types of these names.
struct command {
    QList<QByteArray> parts;
    int db;
};
struct response {
    int type;
    QVariant value;
    QByteArray text;
};

struct meta_type {
    const char* name;
    std::size_t size;

    friend void PrintTo(const meta_type& type, std::ostream* out) { *out << type.name; }
};

const std::array metaTypes{
    meta_type{"Command", sizeof(command)},
    meta_type{"RedisClient::Command", sizeof(command)},
    meta_type{"Response", sizeof(response)},
    meta_type{"RedisClient::Response", sizeof(response)},
    meta_type{"QVector<QVariant*>", sizeof(QVector<QVariant*>)},
    meta_type{"QVariant*", sizeof(QVariant*)},
};

/// Registers a type as a host does that has one of this name, and gives its number.
int registerOfTheHost(const char* name, std::size_t size, QMetaType::TypeFlags flags) {
    return QMetaType::registerNormalizedType(
        name, [](void* /*object*/) {}, [](void* place, const void* /*from*/) { return place; },
        static_cast<int>(size), flags, nullptr);
}

void endUnless(bool condition, const char* what) {
    if (!condition) {
        std::cerr << what << " is not so\n";
        std::exit(1);
    }
}

/// Ends the process; its code is 0 if the plug-in works, has left the host's type what it was and
/// says so in one line.
[[noreturn]] void endByLoadingOver(const char* name, std::size_t size, QMetaType::TypeFlags flags) {
    const int host = registerOfTheHost(name, size, flags);
    endUnless(host >= QMetaType::User, "that nobody else registers the type");
    const log_capture log;
    QPluginLoader loader{pluginFile()};
    endUnless(qobject_cast<interfaces::IDatabaseFactory*>(loader.instance()) != nullptr,
              "that the plug-in gives a factory");

    const QMetaType kept{QMetaType::type(name)};
    endUnless(kept.id() == host, "that the name is still the host's");
    endUnless(kept.sizeOf() == static_cast<int>(size) && kept.flags() == flags,
              "that the host's type is what it was");
    for (const meta_type& type : metaTypes) {
        const QMetaType known{QMetaType::type(type.name)};
        endUnless(known.isValid(), "that all names are known");
        endUnless(known.id() == host || known.sizeOf() == static_cast<int>(type.size),
                  "that the others are the plug-in's");
    }
    const log_line warning{
        QtWarningMsg, "default"_q,
        "Kelvrostorage leaves the meta-type name \"%1\" to the host's type"_q.arg(
            QLatin1String(name))};
    endUnless(log.lines() == std::vector{warning}, "that one line says so");
    std::exit(0);
}

// What is registered stays so until the end of a process, so each case has one of its own.
class PluginMetaTypeOfTheHost : public testing::TestWithParam<meta_type> {
protected:
    PluginMetaTypeOfTheHost() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_P(PluginMetaTypeOfTheHost, OfAnotherSizeStays) {
    EXPECT_EXIT(endByLoadingOver(GetParam().name, GetParam().size + 8,
                                 QMetaType::NeedsConstruction | QMetaType::NeedsDestruction),
                testing::ExitedWithCode(0), "");
}

TEST_P(PluginMetaTypeOfTheHost, OfAnotherKindStays) {
    EXPECT_EXIT(
        endByLoadingOver(GetParam().name, GetParam().size, QMetaType::SharedPointerToQObject),
        testing::ExitedWithCode(0), "");
}

TEST_P(PluginMetaTypeOfTheHost, IsMeasuredHereByWhatThePluginRegisters) {
    QPluginLoader loader{pluginFile()};
    ASSERT_NE(loader.instance(), nullptr);

    EXPECT_EQ(QMetaType::sizeOf(QMetaType::type(GetParam().name)),
              static_cast<int>(GetParam().size));
}

/// Ends the process; its code is 0 if the host's types of the plug-in's names are the same types.
[[noreturn]] void endByLoadingAfterTheHostsSame() {
    const int variant = qRegisterMetaType<QVariant*>("QVariant*");
    const int variants = qRegisterMetaType<QVector<QVariant*>>("QVector<QVariant*>");
    const log_capture log;
    QPluginLoader loader{pluginFile()};
    endUnless(loader.instance() != nullptr, "that the plug-in gives an object");
    endUnless(QMetaType::type("QVariant*") == variant &&
                  QMetaType::type("QVector<QVariant*>") == variants,
              "that the types are the host's");
    endUnless(log.lines().empty(), "that nothing is said");
    std::exit(0);
}

TEST(PluginMetaTypes, ThatTheHostHasRegisteredItselfAreTheSame) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(endByLoadingAfterTheHostsSame(), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(OfEachName, PluginMetaTypeOfTheHost, testing::ValuesIn(metaTypes));

} // namespace
