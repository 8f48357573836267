#include "viewport/files/images/Picture.h"

#include "foundation/basic/threads.h"
#include "foundation/image/VL_Image.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutRights.h"
#include "tests/support/thread_limits.h"
#include "viewport/files/images/output_file.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
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
    int const socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string const name = folder.file("s");
    ASSERT_LT(name.size(), sizeof address.sun_path);
    std::copy(name.begin(), name.end(), address.sun_path);
    ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
    EXPECT_THAT(faultOf(noise(2, 2).savePng(folder.file("a.png"))), HasSubstr("folder"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng(name)), HasSubstr("not a regular file"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng(folder.file("a.png") + "/")), HasSubstr("folder"));
    EXPECT_THAT(folder.names(), ElementsAre("a.png", "s"));
    close(socket);
}

TEST(Picture, pipesAndDevicesAreWrittenStraight) {
    TemporaryFolder const folder;
    std::string const pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0644), 0);
    Picture const saved = noise(5, 3);
    pid_t const child = fork();
    if (child == 0) {
        _exit(saved.savePng(pipe) ? 1 : 0);
    }
    std::string const bytes = folder.read("pipe");
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    Result<Picture> const loaded = Picture::loadPng(folder.write("copy.png", bytes));
    ASSERT_TRUE(loaded.isOk());
    EXPECT_TRUE(loaded.value().pixels == saved.pixels);
    EXPECT_THAT(folder.names(), ElementsAre("copy.png", "pipe"));
    EXPECT_EQ(faultOf(saved.savePng("/dev/null")), "");
    EXPECT_EQ(faultOf(saved.savePng("/dev/full")), "/dev/full: cannot be written: No space left on device");
}

TEST(Picture, namesOfDescriptorsAreWrittenWhereTheyStand) {
    TemporaryFolder const folder;
    std::string const file = folder.write("all", "before");
    int const descriptor = open(file.c_str(), O_WRONLY | O_APPEND);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(faultOf(noise(2, 2).savePng("/dev/fd/" + std::to_string(descriptor))), "");
    close(descriptor);
    EXPECT_THAT(folder.read("all"), testing::StartsWith("before\x89PNG"));
    EXPECT_THAT(faultOf(noise(2, 2).savePng("/dev/fd/999")), HasSubstr("Bad file descriptor"));
    EXPECT_TRUE(isStandardOutput("-"));
    EXPECT_TRUE(isStandardOutput("/dev/stdout"));
    EXPECT_TRUE(isStandardOutput("/proc/self/fd/1"));
    EXPECT_FALSE(isStandardOutput("/dev/fd/12"));
    EXPECT_FALSE(isStandardOutput("./-"));
}

TEST(Picture, theFormatIsThatOfTheName) {
    TemporaryFolder const folder;
    EXPECT_EQ(pictureFormatOf("a.b/c.png"), PictureFormat::PNG);
    EXPECT_EQ(pictureFormatOf("c.JPG"), PictureFormat::JPEG);
    EXPECT_EQ(pictureFormatOf("c.jpeg"), PictureFormat::JPEG);
    EXPECT_EQ(pictureFormatOf("c.exr"), PictureFormat::EXR);
    EXPECT_EQ(pictureFormatOf("-"), PictureFormat::PNG);
    EXPECT_EQ(pictureFormatOf("/dev/stdout"), PictureFormat::PNG);
    EXPECT_EQ(pictureFormatOf("/dev/null"), PictureFormat::PNG);
    for (std::string const& name : {std::string("png"), std::string("c.bmp"), std::string("c.png.gz"),
                                    std::string("c."), std::string(".png"), std::string(), folder.file("")}) {
        EXPECT_FALSE(pictureFormatOf(name).has_value()) << name;
    }
}

TEST(Picture, aJpegIsSmallerWithLessQualityAndLooksAlike) {
    TemporaryFolder const folder;
    Picture ramp{64, 48, {}};
    for (int i = 0; i < 64 * 48; ++i) {
        unsigned char const level = static_cast<unsigned char>(i % 64 * 4);
        ramp.pixels.insert(ramp.pixels.end(), {level, 128, static_cast<unsigned char>(255 - level), 255});
    }
    ASSERT_EQ(faultOf(ramp.save(folder.file("a.jpg"), PictureFormat::JPEG, 95)), "");
    ASSERT_EQ(faultOf(ramp.save(folder.file("b.jpg"), PictureFormat::JPEG, 10)), "");
    EXPECT_LT(folder.read("b.jpg").size(), folder.read("a.jpg").size());
    vellum::VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.jpg").c_str()));
    ASSERT_EQ(image.width(), 64);
    ASSERT_EQ(image.pixdepth(), 24);
    // VL_Image has the lowest row first; all rows are alike.
    for (unsigned int x = 0; x < 64; ++x) {
        EXPECT_NEAR(image.getBuffer()[3 * x], 4 * x, 6);
        EXPECT_NEAR(image.getBuffer()[3 * x + 1], 128, 6);
    }
}

TEST(Picture, anExrHasLightAndDepths) {
    TemporaryFolder const folder;
    float const infinite = std::numeric_limits<float>::infinity();
    Picture const saved{2, 1, {255, 0, 188, 255, 255, 255, 255, 128}, {2.5F, infinite}};
    ASSERT_EQ(faultOf(saved.save(folder.file("a.exr"), PictureFormat::EXR)), "");
    Imf::InputFile file(folder.file("a.exr").c_str());
    std::vector<std::string> names;
    for (auto channel = file.header().channels().begin(); channel != file.header().channels().end();
         ++channel) {
        names.emplace_back(channel.name());
    }
    EXPECT_THAT(names, ElementsAre("A", "B", "G", "R", "depth.Z"));
    std::map<std::string, std::array<float, 2>> values;
    Imf::FrameBuffer buffer;
    for (std::string const& name : names) {
        buffer.insert(name, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(values[name].data()),
                                       sizeof(float), 2 * sizeof(float)));
    }
    file.setFrameBuffer(buffer);
    file.readPixels(0);
    EXPECT_EQ(values["R"][0], 1);
    EXPECT_EQ(values["G"][0], 0);
    EXPECT_NEAR(values["B"][0], 0.5028, 1e-3) << "light, not what the screen is sent";
    EXPECT_EQ(values["A"][0], 1);
    EXPECT_NEAR(values["R"][1], 128 / 255.0, 1e-3) << "multiplied with the opacity";
    EXPECT_NEAR(values["A"][1], 128 / 255.0, 1e-3);
    EXPECT_EQ(values["depth.Z"][0], 2.5F);
    EXPECT_EQ(values["depth.Z"][1], infinite);
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

TEST(Picture, aPngIsTheSameFileWhateverTheNumberOfThreads) {
    TemporaryFolder const folder;
    struct Row {
        int width;
        int height;
    };
    // Several ranges of rows; one range; rows longer than what a stream looks back.
    for (Row const& row : {Row{640, 240}, Row{1, 1}, Row{9001, 9}}) {
        Picture saved = noise(row.width, row.height);
        std::fill(saved.pixels.begin() + static_cast<std::ptrdiff_t>(saved.pixels.size() / 3),
                  saved.pixels.end() - 1, static_cast<unsigned char>(7));
        std::string first;
        for (int const threads : threadLimits()) {
            vellum::setThreadLimit(threads);
            std::string const file = folder.file("a.png");
            ASSERT_EQ(faultOf(saved.savePng(file)), "");
            std::ifstream stream(file, std::ios::binary);
            std::string const bytes{std::istreambuf_iterator<char>(stream), {}};
            first = first.empty() ? bytes : first;
            EXPECT_TRUE(bytes == first) << row.width << ", " << threads << " threads";
            EXPECT_LT(bytes.size(), saved.pixels.size() / 2 + 100);
            Result<Picture> const loaded = Picture::loadPng(file);
            ASSERT_TRUE(loaded.isOk()) << loaded.fault().line();
            EXPECT_TRUE(loaded.value().pixels == saved.pixels);
        }
    }
    vellum::setThreadLimit(0);
}
