#include "viewport/files/common/InputFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vellum::viewport;

namespace {

/// Takes the place of standard input.
class StandardInput {
public:
    explicit StandardInput(int descriptor) : saved(::dup(STDIN_FILENO)) { ::dup2(descriptor, STDIN_FILENO); }
    ~StandardInput() {
        ::dup2(saved, STDIN_FILENO);
        ::close(saved);
    }
    StandardInput(StandardInput const&) = delete;
    StandardInput& operator=(StandardInput const&) = delete;

private:
    int saved;
};

void writeAll(int descriptor, std::string const& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        ssize_t const count = ::write(descriptor, text.data() + done, text.size() - done);
        ASSERT_GT(count, 0);
        done += static_cast<std::size_t>(count);
    }
    ::close(descriptor);
}

}  // namespace

TEST(InputFile, regularFilesAreMapped) {
    TemporaryFolder const folder;
    std::string const path = folder.write("a.txt", "some text");
    Result<InputFile> const file = InputFile::open(path);
    ASSERT_TRUE(file.isOk());
    EXPECT_EQ(file.value().name(), path);
    EXPECT_EQ(file.value().bytes(), "some text");
    EXPECT_FALSE(file.value().isFromPipe());
    InputFile const copy = file.value();
    EXPECT_EQ(copy.bytes().data(), file.value().bytes().data());
}

TEST(InputFile, pipesAreReadToTheirEnd) {
    TemporaryFolder const folder;
    std::string const path = folder.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::string const text(300'000, 'x');
    std::thread writer([&] { writeAll(::open(path.c_str(), O_WRONLY), text); });
    Result<InputFile> const file = InputFile::open(path);
    writer.join();
    ASSERT_TRUE(file.isOk());
    EXPECT_EQ(file.value().bytes(), text);
    EXPECT_TRUE(file.value().isFromPipe());
}

TEST(InputFile, standardInputIsAPipeOrAFile) {
    TemporaryFolder const folder;
    for (char const* const path : {"-", "/dev/stdin"}) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        writeAll(ends[1], "from a pipe");
        {
            StandardInput const input(ends[0]);
            Result<InputFile> const file = InputFile::open(path);
            ASSERT_TRUE(file.isOk()) << file.fault().line();
            EXPECT_EQ(file.value().bytes(), "from a pipe");
            EXPECT_EQ(file.value().name(), path);
            EXPECT_TRUE(file.value().isFromPipe());
        }
        ::close(ends[0]);

        int const descriptor = ::open(folder.write("a.txt", "from a file").c_str(), O_RDONLY);
        {
            StandardInput const input(descriptor);
            Result<InputFile> const file = InputFile::open(path);
            ASSERT_TRUE(file.isOk()) << file.fault().line();
            EXPECT_EQ(file.value().bytes(), "from a file");
        }
        ::close(descriptor);
    }
}

TEST(InputFile, whatHasNoContentIsAFault) {
    TemporaryFolder const folder;
    EXPECT_EQ(InputFile::open(folder.write("empty", "")).fault().message, "the file is empty");
    EXPECT_EQ(InputFile::open(folder.file("")).fault().message, "is a folder, not a file");
    EXPECT_EQ(InputFile::open("/dev/zero").fault().message, "is not a regular file");
    EXPECT_EQ(InputFile::open(folder.file("none")).fault().message,
              "cannot be opened: No such file or directory");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[1]);
    {
        StandardInput const input(ends[0]);
        EXPECT_EQ(InputFile::open("-").fault().line(), "-: the file is empty");
    }
    ::close(ends[0]);
}

TEST(InputFile, releasedBytesStayValid) {
    TemporaryFolder const folder;
    std::string const text(100'000, 'a');
    Result<InputFile> const file = InputFile::open(folder.write("a.txt", text));
    ASSERT_TRUE(file.isOk()) << file.fault().line();
    EXPECT_EQ(file.value().bytes(), text);
    // How many pages of the file the process has is not its own doing: others may map it, too.
    for (std::size_t const bytes : {std::size_t(0), std::size_t(5000), text.size(), 2 * text.size()}) {
        file.value().release(bytes);
        EXPECT_EQ(file.value().bytes(), text) << bytes;
    }
}
