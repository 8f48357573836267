#include "viewport/loading/Loader.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

/// A loader, and the wait for its outcome.
class Loader_test : public testing::Test {
protected:
    static Options optionsOf(std::vector<std::string> const& files) {
        Options options;
        options.files = files;
        return options;
    }

    /// A pipe that nobody writes: its loading ends by cancelling only.
    std::string endlessFile() const {
        std::string const pipe = folder.file("pipe");
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        return pipe;
    }

    std::string smallFile() const { return folder.write("a.xyz", "1\n\n0 0 7\n"); }

    void waitForWake() {
        std::unique_lock<std::mutex> lock(mutex);
        woken.wait(lock, [this] { return wakes > 0; });
        --wakes;
    }

    LoadOutcome outcome() {
        for (;;) {
            if (std::optional<LoadOutcome> outcome = loader.poll()) {
                return std::move(*outcome);
            }
            waitForWake();
        }
    }

    /// Until a file is being read.
    void waitForProgress() const {
        while (loader.progress().file.empty()) {
            std::this_thread::yield();
        }
    }

    TemporaryFolder const folder;
    std::mutex mutex;
    std::condition_variable woken;
    int wakes = 0;
    Loader loader{[this] {
        std::lock_guard<std::mutex> const lock(mutex);
        ++wakes;
        woken.notify_one();
    }};
};

}  // namespace

TEST_F(Loader_test, nothingStartedHasNoOutcome) {
    EXPECT_FALSE(loader.poll());
    EXPECT_FALSE(loader.isLoading());
    EXPECT_EQ(loader.progress().file, "");
    loader.cancel();
    EXPECT_FALSE(loader.poll());
}

TEST_F(Loader_test, aLoadingGivesItsContentOnceWithNotes) {
    std::string const file = folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nwhat\nf 1 2 3\n");
    loader.start(optionsOf({file, smallFile()}));
    EXPECT_TRUE(loader.isLoading());
    LoadOutcome const ended = outcome();
    ASSERT_TRUE(ended.loaded) << ended.fault.value_or(Fault{}).line();
    EXPECT_FALSE(ended.fault);
    EXPECT_FALSE(ended.isCancelled);
    EXPECT_EQ(ended.loaded->options.files.size(), 2U);
    EXPECT_EQ(ended.loaded->subject.scene.models().size(), 1U);
    EXPECT_EQ(ended.loaded->subject.scene.clouds().size(), 1U);
    ASSERT_EQ(ended.notes.size(), 2U);
    EXPECT_THAT(ended.notes[0].line(), HasSubstr("a.obj: line 4"));
    EXPECT_THAT(ended.notes[1].line(), HasSubstr("is up in it"));
    EXPECT_FALSE(loader.isLoading());
    EXPECT_FALSE(loader.poll());
}

TEST_F(Loader_test, aDamagedFileGivesItsFaultAlone) {
    loader.start(optionsOf({smallFile(), folder.write("b.xyz", "2\n\n0 0 0\n")}));
    LoadOutcome const ended = outcome();
    EXPECT_FALSE(ended.loaded);
    EXPECT_FALSE(ended.isCancelled);
    ASSERT_TRUE(ended.fault);
    EXPECT_THAT(ended.fault->line(), HasSubstr("b.xyz"));
}

TEST_F(Loader_test, cancellingEndsAPipeThatNobodyWrites) {
    std::string const pipe = endlessFile();
    loader.start(optionsOf({pipe}));
    waitForProgress();
    EXPECT_EQ(loader.progress().file, pipe);
    EXPECT_FALSE(loader.poll());
    loader.cancel();
    LoadOutcome const ended = outcome();
    EXPECT_TRUE(ended.isCancelled);
    EXPECT_FALSE(ended.loaded);
    EXPECT_FALSE(ended.fault);
}

TEST_F(Loader_test, cancellingDropsAnOutcomeThatIsReady) {
    loader.start(optionsOf({smallFile()}));
    waitForWake();
    loader.cancel();
    std::optional<LoadOutcome> const ended = loader.poll();
    ASSERT_TRUE(ended);
    EXPECT_TRUE(ended->isCancelled);
    EXPECT_FALSE(ended->loaded);
}

TEST_F(Loader_test, aSecondStartReplacesTheFirst) {
    loader.start(optionsOf({endlessFile()}));
    waitForProgress();
    loader.start(optionsOf({folder.file("gone.xyz")}));
    loader.start(optionsOf({smallFile()}));
    LoadOutcome const ended = outcome();
    ASSERT_TRUE(ended.loaded);
    EXPECT_EQ(ended.loaded->options.files[0], folder.file("a.xyz"));
    EXPECT_FALSE(loader.poll());
}

TEST_F(Loader_test, theEndOfALoaderEndsItsLoading) {
    {
        Loader other;
        other.start(optionsOf({endlessFile()}));
    }
    // No thread is left that could wake or lead to a hanging test.
    EXPECT_FALSE(loader.isLoading());
}

TEST_F(Loader_test, meshesAreImportedBesideOtherThreads) {
    std::string const mesh = folder.write("a.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n");
    Loader other;
    other.start(optionsOf({mesh}));
    loader.start(optionsOf({mesh}));
    LoadOutcome const ended = outcome();
    ASSERT_TRUE(ended.loaded) << ended.fault.value_or(Fault{}).line();
    EXPECT_EQ(ended.loaded->subject.scene.models().size(), 1U);
    std::optional<LoadOutcome> second;
    while (!second) {
        second = other.poll();
        std::this_thread::yield();
    }
    EXPECT_TRUE(second->loaded);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process is left";
}

TEST_F(Loader_test, aForgottenLoadingHasNoOutcome) {
    loader.start(optionsOf({endlessFile()}));
    waitForProgress();
    loader.forget();
    EXPECT_FALSE(loader.isLoading());
    EXPECT_FALSE(loader.poll());
    loader.start(optionsOf({smallFile()}));
    LoadOutcome const ended = outcome();
    EXPECT_TRUE(ended.loaded);
    EXPECT_FALSE(ended.isCancelled);
}
