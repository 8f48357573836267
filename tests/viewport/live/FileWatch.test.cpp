#include "viewport/live/FileWatch.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace vellum::viewport;

namespace {

constexpr int QUIET = 30;

void pass(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

/// Waits for a call of wake(), at most five seconds.
bool isWoken(std::atomic<int> const& wakes, int count) {
    for (int i = 0; i < 500 && wakes < count; ++i) {
        pass(10);
    }
    return wakes >= count;
}

}  // namespace

TEST(FileWatch, noticesWritingAndReplacingOfItsFilesAlone) {
    TemporaryFolder const folder;
    std::string const file = folder.write("a.xyz", "1");
    std::atomic<int> wakes{0};
    FileWatch watch([&wakes] { ++wakes; }, QUIET);
    watch.setFiles({file, "-"});
    EXPECT_FALSE(watch.takeChange());

    folder.write("a.xyz", "2");
    EXPECT_TRUE(isWoken(wakes, 1));
    EXPECT_TRUE(watch.takeChange());
    EXPECT_FALSE(watch.takeChange());

    std::filesystem::rename(folder.write("new", "3"), file);
    EXPECT_TRUE(isWoken(wakes, 2));
    EXPECT_TRUE(watch.takeChange());

    folder.write("other", "4");
    pass(5 * QUIET);
    EXPECT_EQ(wakes, 2);
    EXPECT_FALSE(watch.takeChange());
}

TEST(FileWatch, severalWritesAreOneChange) {
    constexpr int LONG_QUIET = 400;
    TemporaryFolder const folder;
    std::string const file = folder.write("a.xyz", "1");
    std::atomic<int> wakes{0};
    FileWatch watch([&wakes] { ++wakes; }, LONG_QUIET);
    watch.setFiles({file});
    std::ofstream stream(file);
    for (int i = 0; i < 5; ++i) {
        stream << "line" << std::endl;
        pass(10);
    }
    EXPECT_EQ(wakes, 0);
    EXPECT_TRUE(isWoken(wakes, 1));
    pass(100);
    EXPECT_EQ(wakes, 1);
}

TEST(FileWatch, forgetsFormerFiles) {
    TemporaryFolder const folder;
    std::string const file = folder.write("a.xyz", "1");
    std::atomic<int> wakes{0};
    FileWatch watch([&wakes] { ++wakes; }, QUIET);
    watch.setFiles({file});
    watch.setFiles({"/no/such/folder/b.xyz"});
    folder.write("a.xyz", "2");
    pass(5 * QUIET);
    EXPECT_EQ(wakes, 0);
}
