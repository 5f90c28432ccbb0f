#include "tests/contract/one_of_each.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;

// How objects fare when a host's process forks or ends.
namespace {

class PluginInAProcess : public EveryKindOfObject {
protected:
    one_of_each makeUsed(int n = 0) {
        one_of_each objects = make(plugin.factory(), n);
        objects.store(1);
        objects.expectToRead(1);
        return objects;
    }

    LoadedPlugin plugin;
};

TEST_F(PluginInAProcess, ThatEndsMayKeepObjectsInItsStatics) {
    EXPECT_EXIT(
        {
            mongoUrl(); // has made the MongoDB driver's instance: it goes after the objects
            static const one_of_each objects = makeUsed();
            std::exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(PluginInAProcess, ThatEndsMayLeaveObjectsUndestroyed) {
    EXPECT_EXIT(
        {
            static const auto* objects = new one_of_each{makeUsed()};
            std::exit(objects == nullptr || HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

int exitCodeOf(pid_t child) {
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(PluginInAProcess, ThatForksGoesOnBesideAChildWithItsOwnObjects) {
    one_of_each objects = makeUsed();
    const auto asAChild = [&]() noexcept {
        one_of_each own = makeUsed(1);
        own.store(2);
        own.expectToRead(2);
        ::_exit(HasFailure() ? 1 : 0); // nothing of the parent's is destroyed
    };
    const pid_t child = ::fork();
    if (child == 0) {
        asAChild();
    }
    objects.store(2);
    objects.expectToRead(2);

    EXPECT_EQ(exitCodeOf(child), 0);
    objects.store(3);
    objects.expectToRead(3);
    expectStored(0, 3);
    expectStored(1, 2);
}

/// Sockets that a program has which this one starts.
int inheritedSockets() {
    FILE* const listing = ::popen("ls -l /proc/self/fd", "r");
    int sockets = 0;
    std::array<char, 512> line{};
    while (std::fgets(line.data(), line.size(), listing) != nullptr) {
        sockets += std::string_view{line.data()}.find("socket:") != std::string_view::npos ? 1 : 0;
    }
    EXPECT_EQ(::pclose(listing), 0);
    return sockets;
}

TEST_F(PluginInAProcess, ThatStartsProgramsDoesNotHandThemItsConnections) {
    const int before = inheritedSockets();
    const one_of_each objects = makeUsed();

    EXPECT_EQ(inheritedSockets(), before);
}

} // namespace
