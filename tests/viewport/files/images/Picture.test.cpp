#include "viewport/files/images/Picture.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutRights.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <filesystem>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A picture that cannot be compressed.
Picture noise(int const& width, int const& height) {
    Picture picture{width, height, {}};
    std::uint32_t state = 1;
    for (int i = 0; i < 4 * width * height; ++i) {
        state = state * 1664525U + 1013904223U;
        picture.pixels.push_back(static_cast<unsigned char>(state >> 24));
    }
    return picture;
}

std::string faultOf(std::optional<Fault> const& fault) {
    return fault ? fault->line() : "";
}

}  // namespace

TEST(Picture, whatIsSavedIsLoaded) {
    TemporaryFolder const folder;
    Picture const saved = noise(13, 7);
    ASSERT_EQ(faultOf(saved.savePng(folder.file("a.png"))), "");
    Result<Picture> const loaded = Picture::loadPng(folder.file("a.png"));
    ASSERT_TRUE(loaded.isOk()) << loaded.fault().line();
    EXPECT_EQ(loaded.value().width, 13);
    EXPECT_EQ(loaded.value().height, 7);
    EXPECT_TRUE(loaded.value().pixels == saved.pixels);
    EXPECT_THAT(folder.names(), ElementsAre("a.png"));
}

TEST(Picture, theFileObeysTheUmask) {
    TemporaryFolder const folder;
    mode_t const before = umask(027);
    std::optional<Fault> const fault = noise(2, 2).savePng(folder.file("a.png"));
    umask(before);
    ASSERT_EQ(faultOf(fault), "");
    struct stat facts {};
    ASSERT_EQ(stat(folder.file("a.png").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0640U);
}

TEST(Picture, anExistingFileIsReplacedAlsoThroughALink) {
    TemporaryFolder const folder;
    folder.write("a.png", "old");
    std::filesystem::create_symlink("a.png", folder.file("link.png"));
    ASSERT_EQ(faultOf(noise(2, 2).savePng(folder.file("link.png"))), "");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.png")));
    EXPECT_TRUE(Picture::loadPng(folder.file("a.png")).isOk());
    EXPECT_THAT(folder.names(), ElementsAre("a.png", "link.png"));
}

TEST(Picture, leftoversOfAnEarlierProcessDoNotMatter) {
    TemporaryFolder const folder;
    std::string const name = ".vl_viewport-" + std::to_string(getpid()) + "-0.tmp";
    folder.write(name, "someone else's");
    ASSERT_EQ(faultOf(noise(2, 2).savePng(folder.file("a.png"))), "");
    EXPECT_EQ(folder.read(name), "someone else's");
    EXPECT_THAT(folder.names(), ElementsAre(name, "a.png"));
}

TEST(Picture, whatIsNoFileIsNotReplaced) {
    TemporaryFolder const folder;
    ASSERT_EQ(mkdir(folder.file("a.png").c_str(), 0755), 0);
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0644), 0);
    EXPECT_THAT(faultOf(noise(2, 2).savePng(folder.file("a.png"))), HasSubstr("folder"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng(folder.file("pipe"))), HasSubstr("not a regular file"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng(folder.file("a.png") + "/")), HasSubstr("folder"));
    EXPECT_THAT(folder.names(), ElementsAre("a.png", "pipe"));
}

TEST(Picture, aFileThatTheUserMayNotWriteIsNotReplaced) {
    TemporaryFolder const folder;
    std::string const kept = folder.write("kept.png", "kept");
    std::filesystem::permissions(kept, std::filesystem::perms(0444));
    // The folder alone would allow it.
    std::filesystem::permissions(folder.file(""), std::filesystem::perms(0777));
    {
        WithoutRights const user;
        std::optional<Fault> const fault = noise(4, 4).savePng(kept);
        ASSERT_TRUE(fault.has_value());
        EXPECT_THAT(fault->line(), HasSubstr("kept.png: cannot be written: Permission denied"));
        EXPECT_FALSE(noise(4, 4).savePng(folder.file("new.png")).has_value());
    }
    EXPECT_EQ(folder.read("kept.png"), "kept");
    EXPECT_THAT(folder.names(), ElementsAre("kept.png", "new.png"));
}

TEST(Picture, anInterruptLeavesNoTemporaryFile) {
    TemporaryFolder const folder;
    Picture const picture = noise(300, 300);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (useconds_t pause = 0; pause < 20000; pause += 2000) {
            pid_t const child = fork();
            if (child == 0) {
                std::signal(signal, SIG_DFL);
                while (!picture.savePng(folder.file("out.png"))) {
                }
                _exit(1);
            }
            usleep(pause);
            kill(child, signal);
            int status = 0;
            waitpid(child, &status, 0);
            EXPECT_TRUE(WIFSIGNALED(status)) << "it goes on after the interrupt";
            std::vector<std::string> const names = folder.names();
            EXPECT_TRUE(names.empty() || names == std::vector<std::string>{"out.png"})
                << testing::PrintToString(names);
        }
    }
    EXPECT_TRUE(Picture::loadPng(folder.file("out.png")).isOk());
}

TEST(Picture, aFolderThatDoesNotExistIsAFaultThatNamesThePicture) {
    TemporaryFolder const folder;
    std::string const path = folder.file("gone/a.png");
    EXPECT_EQ(faultOf(noise(2, 2).savePng(path)), path + ": cannot be written: No such file or directory");
    EXPECT_THAT(faultOf(noise(2, 2).savePng("/proc/a.png")), HasSubstr("/proc/a.png: cannot be written"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng("")), HasSubstr("cannot be written"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(Picture, aFullDiskLeavesNothingBehind) {
    TemporaryFolder const folder;
    folder.write("old.png", "old");
    // The limit of a file's size fails the writing as a full disk does.
    auto const onExcess = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    for (rlim_t const& most : {rlim_t(0), rlim_t(100), rlim_t(20'000)}) {
        rlimit const little{most, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &little), 0);
        std::optional<Fault> const fresh = noise(200, 200).savePng(folder.file("a.png"));
        std::optional<Fault> const old = noise(200, 200).savePng(folder.file("old.png"));
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_THAT(faultOf(fresh), HasSubstr("a.png: cannot be written: File too large"));
        EXPECT_THAT(faultOf(old), HasSubstr("old.png: cannot be written"));
        EXPECT_THAT(folder.names(), ElementsAre("old.png"));
        EXPECT_TRUE(folder.read("old.png") == "old");
    }
    std::signal(SIGXFSZ, onExcess);
}

TEST(Picture, aPictureThatIsNoneIsAFault) {
    TemporaryFolder const folder;
    EXPECT_THAT(faultOf(Picture{0, 0, {}}.savePng(folder.file("a.png"))), HasSubstr("cannot be written"));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_FALSE(Picture::loadPng(folder.file("gone.png")).isOk());
    EXPECT_FALSE(Picture::loadPng(folder.write("b.png", "no picture")).isOk());
    ASSERT_EQ(faultOf(noise(50, 50).savePng(folder.file("c.png"))), "");
    EXPECT_FALSE(Picture::loadPng(folder.write("d.png", folder.read("c.png").substr(0, 500))).isOk());
}
