#include "tests/contract/one_of_each.h"
#include "tests/contract/process_use.h"

#include <iostream>

using namespace test_support;

// A host that loads, uses and unloads the plug-in again and again in one process. Compiled twice:
// KELVRO_RELOADS is the number of rounds.
namespace {

class PluginLoadedAgain : public EveryKindOfObject {
protected:
    /// One round: loads the plug-in, uses all of it, unloads it.
    void loadUseAndUnload() {
        QPluginLoader loader{pluginFile()};
        loader.setLoadHints({}); // by default Qt itself keeps a plug-in loaded
        {
            one_of_each objects =
                make(qobject_cast<interfaces::IDatabaseFactory*>(loader.instance()));
            objects.store(1);
            objects.expectToRead(1);
        }
        ASSERT_TRUE(loader.unload()) << loader.errorString().toStdString();
        ASSERT_FALSE(loader.isLoaded());
        for (const char* collection : {"ul_messages", "dl_messages", "eav_values", "eav_events"}) {
            database.run(R"({"delete": ")" + std::string{collection} +
                         R"(", "deletes": [{"q": {}, "limit": 0}]})");
        }
        log.clear();
    }
};

TEST_F(PluginLoadedAgain, KeepsNeitherMemoryNorDescriptors) {
    constexpr int rounds = KELVRO_RELOADS;
    constexpr int first = rounds / 10;
    // Sanitizers keep books of their own; their leak check is as good.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr std::size_t growth = std::size_t{1} << 30;
#else
    // Room for the allocator; a round that kept three kilobytes would show.
    constexpr std::size_t growth = std::size_t{256} << 10;
#endif
    for (int round = 0; round < first; ++round) {
        ASSERT_NO_FATAL_FAILURE(loadUseAndUnload());
    }
    const std::ptrdiff_t descriptors = openDescriptors();
    const std::size_t bytes = residentBytes();
    for (int round = first; round < rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(loadUseAndUnload());
    }

    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_LE(residentBytes(), bytes + growth);
    RecordProperty("grown_bytes", std::to_string(static_cast<std::int64_t>(residentBytes()) -
                                                 static_cast<std::int64_t>(bytes)));
    std::cout << "from round " << first << " to " << rounds << ": " << bytes / 1024 << " KiB to "
              << residentBytes() / 1024 << " KiB, " << descriptors << " descriptors\n";
}

} // namespace
