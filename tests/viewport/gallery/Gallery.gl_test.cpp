#include "tests/support/TemporaryFolder.h"
#include "viewport/files/images/Picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vellum::viewport::Picture;

struct Outcome {
    int exitStatus;
    std::string output;  ///< standard output and standard error
};

/// Runs the gallery program; the arguments as a shell reads them.
Outcome runGallery(std::string const& arguments) {
    std::string const command = std::string("'") + VL_GALLERY_PROGRAM + "' " + arguments + " 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    Outcome run{-1, ""};
    if (pipe == nullptr) {
        return run;
    }
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
        run.output += buffer;
    }
    int const status = pclose(pipe);
    run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

/// The part of the pixels that has a clear hue. Background and labels are nearly gray, drawings are not.
double hueShare(Picture const& picture) {
    constexpr int clear = 48;
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        unsigned char const* const pixel = &picture.pixels[i];
        count += *std::max_element(pixel, pixel + 3) - *std::min_element(pixel, pixel + 3) >= clear ? 1 : 0;
    }
    return static_cast<double>(count) / (static_cast<double>(picture.width) * picture.height);
}

std::vector<std::string> pictureNames(TemporaryFolder const& folder) {
    std::vector<std::string> names;
    for (std::string const& name : folder.names()) {
        if (name.size() > 4 && name.substr(name.size() - 4) == ".png") {
            names.push_back(name);
        }
    }
    return names;
}

TEST(Gallery, drawsEverySubjectAndListsItInThePage) {
    TemporaryFolder const folder;
    Outcome const run = runGallery("--out " + folder.file(""));
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(run.output, folder.file("index.html") + "\n");

    std::vector<std::string> const names = pictureNames(folder);
    EXPECT_THAT(names, ElementsAre("01-primitives.png", "02-boxes.png", "03-circles.png", "04-arrows.png",
                                   "05-vector-field.png", "06-gizmos.png", "07-grids.png", "08-ellipses.png",
                                   "09-textures.png", "10-luminance.png", "11-composed.png"));
    EXPECT_EQ(folder.names().size(), names.size() + 1) << "something else than the page was left";

    std::string const page = folder.read("index.html");
    for (std::string const& name : names) {
        SCOPED_TRACE(name);
        EXPECT_THAT(page, HasSubstr("<img src=\"" + name + "\""));
        auto const picture = Picture::loadPng(folder.file(name));
        ASSERT_TRUE(picture.isOk()) << picture.fault().line();
        EXPECT_EQ(picture.value().width, 1280);
        EXPECT_EQ(picture.value().height, 800);
        // The sparsest sheet, the grids, covers four per cent; labels and background alone cover nothing.
        EXPECT_GT(hueShare(picture.value()), 0.02);
    }
}

TEST(Gallery, drawsOneSubjectAlone) {
    TemporaryFolder const folder;
    Outcome const run = runGallery("--only boxes --out " + folder.file(""));
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_THAT(folder.names(), ElementsAre("02-boxes.png", "index.html"));
}

TEST(Gallery, indexListsFurtherPicturesInTheirOrder) {
    TemporaryFolder const folder;
    folder.write("b.png", "any");
    folder.write("a.png", "any");
    folder.write("captions.tsv", "b.png\tB & co\tA <small> one\na.png\tA\tThe other\n");
    Outcome const run = runGallery("--index " + folder.file(""));
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    std::string const page = folder.read("index.html");
    EXPECT_THAT(page, HasSubstr("<b>B &amp; co.</b> A &lt;small&gt; one"));
    EXPECT_LT(page.find("src=\"b.png\""), page.find("src=\"a.png\""));
}

TEST(Gallery, missingPictureLeavesThePageAlone) {
    TemporaryFolder const folder;
    folder.write("index.html", "former");
    folder.write("captions.tsv", "a.png\tA\tThe other\n");
    Outcome const run = runGallery("--index " + folder.file(""));
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.output, "vl_gallery: " + folder.file("a.png") + ": the picture does not exist\n");
    EXPECT_EQ(folder.read("index.html"), "former");
}

TEST(Gallery, incompleteLineOfTheListIsAFault) {
    TemporaryFolder const folder;
    folder.write("captions.tsv", "a.png without tabs\n");
    Outcome const run = runGallery("--index " + folder.file(""));
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.output, HasSubstr("captions.tsv: line 1 "));
    EXPECT_THAT(folder.names(), Not(testing::Contains("index.html")));
}

TEST(Gallery, senselessCommandLineIsAUsageError) {
    for (char const* arguments :
         {"", "--only boxes", "--out x --only nothing", "--out x --index y", "--outs x", "--contact-sheet x",
          "--tiles x", "--out x --contact-sheet y --tiles z"}) {
        Outcome const run = runGallery(arguments);
        EXPECT_EQ(run.exitStatus, 2) << arguments;
        EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
    }
}

/// A picture in which every pixel has another color.
void writeRamp(std::string const& path, int width, int height, unsigned char blue) {
    Picture ramp{width, height, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int const value : {5 * x, 7 * y, int{blue}, 255}) {
                ramp.pixels.push_back(static_cast<unsigned char>(value));
            }
        }
    }
    ASSERT_FALSE(ramp.savePng(path).has_value());
}

TEST(Gallery, aContactSheetShowsItsPicturesPixelByPixel) {
    constexpr int width = 41;
    constexpr int height = 30;
    TemporaryFolder const folder;
    std::string list;
    for (int i = 0; i < 5; ++i) {
        std::string const name = std::to_string(i) + ".png";
        writeRamp(folder.file(name), width, height, static_cast<unsigned char>(50 * i));
        list += name + "\tlabel " + std::to_string(i) + "\n";
    }
    folder.write("list.tsv", list);
    Outcome const run =
        runGallery("--contact-sheet " + folder.file("sheet.png") + " --tiles " + folder.file("list.tsv"));
    ASSERT_EQ(run.exitStatus, 0) << run.output;

    auto const sheet = Picture::loadPng(folder.file("sheet.png"));
    ASSERT_TRUE(sheet.isOk()) << sheet.fault().line();
    // Five pictures in two rows of three, 10 pixels apart, each over a label of 24 pixels.
    ASSERT_EQ(sheet.value().width, 3 * width + 4 * 10);
    ASSERT_EQ(sheet.value().height, 2 * (height + 24) + 3 * 10);
    for (int i = 0; i < 5; ++i) {
        int const left = 10 + i % 3 * (width + 10);
        int const top = 10 + i / 3 * (height + 24 + 10);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                auto const index =
                    4 * (static_cast<std::size_t>(top + y) * static_cast<std::size_t>(sheet.value().width) +
                         static_cast<std::size_t>(left + x));
                unsigned char const* const pixel = &sheet.value().pixels[index];
                ASSERT_THAT(std::vector<int>(pixel, pixel + 4), ElementsAre(5 * x, 7 * y, 50 * i, 255))
                    << "picture " << i << ", pixel " << x << ", " << y;
            }
        }
    }
}

TEST(Gallery, aContactSheetOfBadPicturesIsAFault) {
    TemporaryFolder const folder;
    writeRamp(folder.file("a.png"), 20, 10, 0);
    writeRamp(folder.file("b.png"), 20, 11, 0);
    writeRamp(folder.file("wide.png"), 6000, 1, 0);
    folder.write("text.png", "no picture");
    struct {
        char const* list;
        char const* fault;
    } const cases[] = {{"", "names no picture"},
                       {"a.png\n", "line 1 is not a file and a label with a tab between them"},
                       {"a.png\tA\nb.png\t\n", "line 2 is not a file and a label with a tab between them"},
                       {"a.png\tA\nb.png\tB\n", "b.png: has another size than the first picture of the list"},
                       {"wide.png\tA\n", "makes a sheet of more than 5461 pixels"},
                       {"missing.png\tA\n", "missing.png: "},
                       {"text.png\tA\n", "text.png: "}};
    for (auto const& bad : cases) {
        folder.write("list.tsv", bad.list);
        Outcome const run =
            runGallery("--contact-sheet " + folder.file("sheet.png") + " --tiles " + folder.file("list.tsv"));
        EXPECT_EQ(run.exitStatus, 1) << bad.list;
        EXPECT_THAT(run.output, HasSubstr(bad.fault));
        EXPECT_THAT(folder.names(), Not(testing::Contains("sheet.png")));
    }
    Outcome const run = runGallery("--contact-sheet x.png --tiles " + folder.file("missing.tsv"));
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.output, HasSubstr("missing.tsv: cannot be read"));
}

TEST(Gallery, folderThatCannotBeMadeIsAFault) {
    TemporaryFolder const folder;
    Outcome const run = runGallery("--out " + folder.write("file", "in the way") + "/pictures");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.output, HasSubstr("vl_gallery: " + folder.file("file") + "/pictures: "));
}

}  // namespace
