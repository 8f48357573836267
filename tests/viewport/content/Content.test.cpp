#include "viewport/content/Content.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

#include <sys/stat.h>
#include <zlib.h>

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

/// Gives up in the midst of a file, and keeps what it is told.
/// Keeps the notes of a loading, a line for each.
class NoteTaker : public LoadObserver {
public:
    void note(Fault const& what) override { lines += what.line() + "\n"; }

    std::string lines;
};

class Canceller : public LoadObserver {
public:
    void progress(std::string const& file, std::uint64_t done, std::uint64_t all) override {
        wasInTheMidst = wasInTheMidst || (done > 0 && done < all);
        callsAfterwards += isGivenUp ? 1 : 0;
        files.push_back(file);
    }
    bool isCancelled() override {
        isGivenUp = isGivenUp || (wasInTheMidst && !isPatient);
        return isGivenUp;
    }
    void note(Fault const& what) override { notes.push_back(what.line()); }

    bool wasInTheMidst = false;
    bool isGivenUp = false;
    bool isPatient = false;
    int callsAfterwards = 0;
    std::vector<std::string> files;
    std::vector<std::string> notes;
};

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] auto const& each : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

std::string repeated(std::string const& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string gzipped(TemporaryFolder const& folder, std::string const& text) {
    std::string const path = folder.file("gz");
    gzFile const file = gzopen(path.c_str(), "wb");
    gzwrite(file, text.data(), static_cast<unsigned int>(text.size()));
    gzclose(file);
    return path;
}

}  // namespace

TEST(Content, readersOfFilesAreCancelledInTheirMidst) {
    // Each has some megabytes, of which a reader that reports too seldom would read all.
    constexpr std::size_t COUNT = 200'000;
    std::string const number = std::to_string(COUNT);
    std::string const rows = repeated("1.25 2.25 3.25\n", COUNT);
    std::string const ply = "element vertex " + number +
                            "\nproperty float x\nproperty float y\nproperty float z\n"
                            "element face 0\nproperty list uchar int vertex_indices\nend_header\n";
    std::string const facet = "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                              "endloop\nendfacet\n";
    std::string const count("\x40\x0d\x03\0", 4);  // 200,000
    TemporaryFolder const folder;
    struct Row {
        char const* name;
        std::string file;
    } const ROWS[] = {
        {"XYZ", folder.write("a.xyz", number + "\n\n" + repeated("H 1.25 2.25 3.25\n", COUNT))},
        {"gzip", gzipped(folder, number + "\n\n" + repeated("H 1.25 2.25 3.25\n", COUNT))},
        {"CSV", folder.write("a.csv", "x,y,z\n" + repeated("1.25,2.25,3.25\n", COUNT))},
        {"OBJ", folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + repeated("f 1 2 3\n", COUNT * 2))},
        {"PLY, text", folder.write("t.ply", "ply\nformat ascii 1.0\n" + ply + rows)},
        {"PLY, binary", folder.write("b.ply", "ply\nformat binary_little_endian 1.0\n" + ply +
                                                  std::string(COUNT * 12, '\0'))},
        {"STL, text", folder.write("t.stl", "solid\n" + repeated(facet, COUNT / 4) + "endsolid\n")},
        {"STL, binary", folder.write("b.stl", std::string(80, 'x') + count + std::string(COUNT * 50, '\0'))},
    };
    for (Row const& row : ROWS) {
        SCOPED_TRACE(row.name);
        std::size_t const descriptors = openDescriptors();
        Options options;
        options.files = {row.file};
        if (row.name == std::string("gzip")) {
            options.format = "xyz";
        }
        Canceller observer;
        Result<Content> const content = Content::load(options, observer);
        EXPECT_TRUE(observer.wasInTheMidst);
        ASSERT_FALSE(content.isOk());
        EXPECT_TRUE(content.fault().isCancelled) << content.fault().line();
        EXPECT_EQ(observer.callsAfterwards, 0);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_THAT(observer.files, testing::Each(row.file));
        EXPECT_THAT(observer.notes, testing::IsEmpty());
    }
}

TEST(Content, preparingIsCancelledToo) {
    TemporaryFolder const folder;
    Result<Content> content = load({folder.write("a.xyz", "1\n\n0 0 0\n")});
    ASSERT_TRUE(content.isOk());
    Canceller observer;
    observer.isGivenUp = true;
    Result<Subject> const subject = Subject::prepare(Options(), content.value(), observer);
    ASSERT_FALSE(subject.isOk());
    EXPECT_TRUE(subject.fault().isCancelled);
}

TEST(Content, aFileThatIsReadGivesAllItsNotes) {
    TemporaryFolder const folder;
    Options options;
    options.files = {folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nwhat\nf 1 2 3\n")};
    Canceller observer;
    observer.isPatient = true;
    ASSERT_TRUE(Content::load(options, observer).isOk());
    EXPECT_THAT(observer.notes, testing::ElementsAre(HasSubstr("line 4")));
}

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
        NoteTaker taker;
        EXPECT_TRUE(Content::load(options, taker).isOk());
        return taker.lines;
    };
    EXPECT_EQ(notesOf({mesh, first, second}, std::nullopt),
              first + ": z is up in it, but y in " + mesh + ", which decides unless --up is given\n");
    EXPECT_EQ(notesOf({mesh, first}, UpAxis::Y), "");
    EXPECT_EQ(notesOf({first, second}, std::nullopt), "");
}

TEST(Content, aMeshCanComeFromAPipe) {
    TemporaryFolder const folder;
    Result<Content> const content = loadFromPipe(folder, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    ASSERT_TRUE(content.isOk()) << content.fault().line();
    EXPECT_EQ(content.value().meshes.at(0).triangles.size(), 1U);
}

namespace {

std::string triangle(std::string const& z) {
    return "v 0 0 " + z + "\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
}

}  // namespace

TEST(Content, numberedMeshesAreASeriesWhereThatIsAskedFor) {
    TemporaryFolder const folder;
    std::vector<std::string> files;
    for (char const* const number : {"2", "10", "1"}) {
        files.push_back(folder.write(std::string("a") + number + ".obj", triangle(number)));
    }
    EXPECT_EQ(load(files).value().meshes.size(), 3U);
    Options options;
    options.isSeries = true;
    Result<Content> const last = load(files, options);
    ASSERT_TRUE(last.isOk()) << last.fault().line();
    ASSERT_EQ(last.value().meshes.size(), 1U);
    EXPECT_EQ(last.value().meshes[0].positions[0].z, 10);
    options.particles.frame = 1;
    EXPECT_EQ(load(files, options).value().meshes[0].positions[0].z, 2);
    options.particles.frame = 3;
    EXPECT_THAT(load(files, options).fault().line(), HasSubstr("the series has no frame 3"));
    options.particles.frame.reset();
    options.film.frames = FrameRange{};
    Result<Content> const film = load(files, options);
    ASSERT_TRUE(film.isOk()) << film.fault().line();
    EXPECT_EQ(film.value().frames.size(), 3U);
    EXPECT_EQ(film.value().meshes.at(0).positions.at(0).z, 1) << "a film begins with the first one";
}

TEST(Content, meshesBesideASeriesStayAsTheyAre) {
    TemporaryFolder const folder;
    std::string const mesh = folder.write("cup.obj", triangle("5"));
    Options options;
    options.isSeries = true;
    Result<Content> const content =
        load({folder.write("a1.xyz", "1\n\n0 0 1\n"), mesh, folder.write("a2.xyz", "1\n\n0 0 2\n")}, options);
    ASSERT_TRUE(content.isOk()) << content.fault().line();
    EXPECT_EQ(content.value().meshes.size(), 1U);
    EXPECT_EQ(content.value().particles.at(0).positions.at(0).z, 2);
}

TEST(Content, aFileWithASingleFrameStandsStillBesideOthers) {
    TemporaryFolder const folder;
    std::string const moving = folder.write("a.xyz", "1\n\n0 0 1\n1\n\n0 0 2\n1\n\n0 0 3\n");
    std::string const still = folder.write("b.xyz", "1\n\n0 0 9\n");
    Options options;
    options.particles.frame = 1;
    Result<Content> const both = load({still, moving}, options);
    ASSERT_TRUE(both.isOk()) << both.fault().line();
    EXPECT_EQ(both.value().particles.at(0).positions.at(0).z, 9);
    EXPECT_EQ(both.value().particles.at(1).positions.at(0).z, 2);
    EXPECT_THAT(load({still}, options).fault().line(), HasSubstr("has no frame 1"));
    EXPECT_THAT(load({still, folder.write("c.xyz", "1\n\n0 0 8\n")}, options).fault().line(),
                HasSubstr("b.xyz: has no frame 1"));
    options.particles.frame = 3;
    EXPECT_THAT(load({still, moving}, options).fault().line(), HasSubstr("a.xyz: has no frame 3"));
}

TEST(Content, valuesAreLeftOutForOnePictureOfOneFileAlone) {
    TemporaryFolder const folder;
    std::string const file = folder.file("a.dump");
    folder.write("a.dump",
                 "ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n2\nITEM: BOX BOUNDS pp pp pp\n0 1\n0 1\n0 1\n"
                 "ITEM: ATOMS id type x y z vx vy vz\n1 1 0 0 0 2 3 6\n2 2 1 1 1 0 0 1\n");
    auto const keepsAll = [](Result<Content> const& content) {
        ParticleFrame const& frame = content.value().particles.front();
        bool const hasValues = !frame.channel("vx")->values.empty() && !frame.channel("id")->values.empty();
        EXPECT_EQ(frame.vectors.front().lengths.empty(), hasValues);
        return hasValues;
    };
    Options picture;
    picture.pictures.front().out = "a.png";
    EXPECT_FALSE(keepsAll(load({file}, picture)));
    EXPECT_TRUE(keepsAll(load({file, file}, picture))) << "they share what they show";
    EXPECT_TRUE(keepsAll(load({file}))) << "a window";
    Options described = picture;
    described.info = InfoForm::TEXT;
    EXPECT_TRUE(keepsAll(load({file}, described)));
    Options picking = picture;
    picking.pictures.front().pick = Pixel{1, 1};
    EXPECT_TRUE(keepsAll(load({file}, picking)));
    Options film = picture;
    film.film.turn = 4;
    EXPECT_TRUE(keepsAll(load({file}, film)));
}
