#include "viewport/content/Content.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <thread>

#include <sys/stat.h>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

Result<Content> load(std::vector<std::string> const& files, Options options = {}) {
    options.files = files;
    LoadObserver nobody;
    return Content::load(options, nobody);
}

/// Writes a text into a named pipe while the program reads it.
Result<Content> loadFromPipe(TemporaryFolder const& folder, std::string const& text) {
    std::string const pipe = folder.file("pipe");
    EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] {
        std::FILE* const end = std::fopen(pipe.c_str(), "w");
        std::fputs(text.c_str(), end);
        std::fclose(end);
    });
    Result<Content> content = load({pipe});
    writer.join();
    return content;
}

}  // namespace

TEST(Content, aPipeIsReadOnce) {
    TemporaryFolder const folder;
    Result<Content> const content = loadFromPipe(folder, "2\n\n0 0 0\n1 1 1\n");
    ASSERT_TRUE(content.isOk()) << content.fault().line();
    EXPECT_EQ(content.value().particles.at(0).positions.size(), 2U);
}

TEST(Content, anEmptyPipeIsAFault) {
    TemporaryFolder const folder;
    EXPECT_THAT(loadFromPipe(folder, "").fault().line(), HasSubstr("the file is empty"));
}

TEST(Content, aFormatThatIsGivenOutranksTheContent) {
    TemporaryFolder const folder;
    std::string const file = folder.write("a.txt", "2\n\n0 0 0\n1 1 1\n");
    Options options;
    options.format = "csv";
    EXPECT_FALSE(load({file}, options).isOk());
    options.format = "xyz";
    EXPECT_TRUE(load({file}, options).isOk());
}

TEST(Content, filesOfASeriesAreOneDumpWhereThatIsAskedFor) {
    TemporaryFolder const folder;
    std::vector<std::string> files;
    for (char const* const number : {"2", "10", "1"}) {
        files.push_back(
            folder.write(std::string("a") + number + ".xyz", std::string("1\n\n0 0 ") + number + "\n"));
    }
    EXPECT_EQ(load(files).value().particles.size(), 3U);
    Options options;
    options.isSeries = true;
    Result<Content> const last = load(files, options);
    ASSERT_TRUE(last.isOk()) << last.fault().line();
    ASSERT_EQ(last.value().particles.size(), 1U);
    EXPECT_EQ(last.value().particles[0].positions[0].z, 10);
    options.particles.frame = 1;
    EXPECT_EQ(load(files, options).value().particles[0].positions[0].z, 2);
    options.particles.frame = 3;
    EXPECT_THAT(load(files, options).fault().line(), HasSubstr("the series has no frame 3"));
}

TEST(Content, filesThatAreNoSeriesAreAFault) {
    TemporaryFolder const folder;
    std::string const text = "1\n\n0 0 0\n";
    std::string const a = folder.write("a.xyz", text);
    Options options;
    options.isSeries = true;
    EXPECT_THAT(load({a}, options).fault().line(), HasSubstr("needs several particle files"));
    EXPECT_THAT(load({a, folder.write("b.xyz", text)}, options).fault().line(), HasSubstr("is of no series"));
}

TEST(Content, aTimeNeedsTimes) {
    TemporaryFolder const folder;
    EXPECT_FALSE(load({folder.write("a.xyz", "1\n\n0 0 0\n")}).value().hasTimes);
    EXPECT_TRUE(load({folder.write("b.xyz", "1\nTime=2\nH 0 0 0\n")}).value().hasTimes);
}

TEST(Content, filesThatDisagreeOnWhatIsUpHaveOneNote) {
    TemporaryFolder const folder;
    std::string const mesh = folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    std::string const first = folder.write("b.xyz", "1\n\n0 0 0\n");
    std::string const second = folder.write("c.xyz", "1\n\n1 0 0\n");
    auto const notesOf = [](std::vector<std::string> const& files, std::optional<UpAxis> up) {
        Options options;
        options.files = files;
        options.up = up;
        testing::internal::CaptureStderr();
        EXPECT_TRUE(Content::load(options).isOk());
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(notesOf({mesh, first, second}, std::nullopt), "vl_viewport: " + first +
                                                                ": z is up in it, but y in " + mesh +
                                                                ", which decides unless --up is given\n");
    EXPECT_EQ(notesOf({mesh, first}, UpAxis::Y), "");
    EXPECT_EQ(notesOf({first, second}, std::nullopt), "");
}

TEST(Content, aMeshCanComeFromAPipe) {
    TemporaryFolder const folder;
    Result<Content> const content = loadFromPipe(folder, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    ASSERT_TRUE(content.isOk()) << content.fault().line();
    EXPECT_EQ(content.value().meshes.at(0).triangles.size(), 1U);
}
