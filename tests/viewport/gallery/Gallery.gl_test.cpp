#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/program/program_runner.h"
#include "viewport/files/images/Picture.h"
#include "viewport/gallery/PictureList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vellum::gallery::ListedPicture;
using vellum::gallery::readPictureList;
using vellum::viewport::Picture;

/// Runs the gallery program.
Outcome runGallery(std::string const& list, std::string const& out, std::string const& viewport,
                   std::vector<std::string> const& further = {}) {
    std::vector<std::string> arguments{"--list", list, "--out", out, "--viewport", viewport};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(VL_GALLERY_PROGRAM, arguments);
}

/// A list's lines for one picture.
std::string entry(std::string const& file, std::string const& source) {
    return "picture " + file + "\n  title 'Title & of " + file + "'\n  caption 'Caption <of> it.'\n  " +
           source + "\n";
}

std::string const HEAD = "section 'First section'\ngroup 'first things'\n";

/// A program in place of vl_viewport.
std::string writeProgram(TemporaryFolder const& folder, std::string const& name, std::string const& script) {
    std::string const path = folder.write(name, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms(0755));
    return path;
}

/// Puts a copy of its first argument in the place of the picture: FILE --out PICTURE --size SIZE.
std::string writeCopier(TemporaryFolder const& folder) {
    return writeProgram(folder, "copier", "exec cp \"$1\" \"$3\"\n");
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

TEST(Gallery, everySheetOfTheListIsDrawn) {
    auto const list = readPictureList(VL_GALLERY_LIST);
    ASSERT_TRUE(list.isOk()) << list.fault().line();
    std::vector<std::string> sheets;
    std::vector<std::string> options;
    for (ListedPicture const& picture : list.value()) {
        if (!picture.sheet.empty()) {
            sheets.push_back(picture.file);
            options.insert(options.end(), {"--only", picture.file});
        }
    }
    TemporaryFolder const folder;
    Outcome const run = runGallery(VL_GALLERY_LIST, folder.file(""), "/nowhere", options);
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, "drawing the sheets\nwriting the page\ndone: " + folder.file("index.html") + "\n");
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(folder.names().size(), sheets.size() + 1) << "something else than the page was left";

    std::string const page = folder.read("index.html");
    for (std::string const& name : sheets) {
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

TEST(Gallery, picturesOfTheProgramGetTheirSizeAndVariables) {
    TemporaryFolder const folder;
    std::string const list = folder.write(
        "list",
        HEAD + entry("a.png", "viewport {mine}/cube.obj") +
            entry("b.png", "size 64x48\n  viewport {inputs}/room.obj {inputs}/glass.obj --effect glass"));
    folder.write("cube.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    Outcome const run =
        runGallery(list, folder.file("out"), VL_VIEWPORT_PROGRAM, {"--define", "mine=" + folder.file("")});
    ASSERT_EQ(run.status, 0) << run.error;
    auto const first = Picture::loadPng(folder.file("out/a.png"));
    ASSERT_TRUE(first.isOk()) << first.fault().line();
    EXPECT_EQ(first.value().width, 1280);
    EXPECT_EQ(first.value().height, 800);
    auto const second = Picture::loadPng(folder.file("out/b.png"));
    ASSERT_TRUE(second.isOk()) << second.fault().line();
    EXPECT_EQ(second.value().width, 64);
    EXPECT_GT(hueShare(second.value()), 0.02);
}

TEST(Gallery, pageShowsThePicturesInTheirSections) {
    TemporaryFolder const folder;
    std::string const list = folder.write("list", HEAD + entry("b.png", "viewport " VL_GALLERY_LIST) +
                                                      "section 'The & other'\ngroup more\n" +
                                                      entry("a.png", "viewport " VL_GALLERY_LIST) +
                                                      entry("c.png", "viewport " VL_GALLERY_LIST));
    Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder));
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.output, testing::StartsWith("drawing first things\ndrawing more\nwriting the page\n"));
    std::string const page = folder.read("out/index.html");
    std::size_t last = 0;
    for (char const* const part :
         {"<h2>First section</h2>\n<div", "src=\"b.png\"", "</div>\n<h2>The &amp; other</h2>",
          "src=\"a.png\"", "src=\"c.png\"", "</div>\n</main>"}) {
        std::size_t const place = page.find(part, last);
        ASSERT_NE(place, std::string::npos) << part;
        last = place;
    }
    EXPECT_THAT(page, HasSubstr("<b>Title &amp; of a.png.</b> Caption &lt;of&gt; it."));
}

TEST(Gallery, pictureWithoutItsNeedIsLeftOutAndReported) {
    TemporaryFolder const folder;
    std::string const list = folder.write("list", HEAD + entry("a.png", "viewport " VL_GALLERY_LIST) +
                                                      entry("b.png", "needs melt\n  viewport {melt}"));
    Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder));
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_THAT(run.output, HasSubstr("leaving out b.png\n"));
    EXPECT_TRUE(std::filesystem::exists(folder.file("out/a.png")));
    EXPECT_FALSE(std::filesystem::exists(folder.file("out/b.png")));
    EXPECT_THAT(folder.read("out/index.html"), Not(HasSubstr("b.png")));
}

TEST(Gallery, onlyDrawsThePicturesNamedAndListsThoseOfEarlierRuns) {
    TemporaryFolder const folder;
    std::filesystem::create_directory(folder.file("out"));
    folder.write("out/c.png", "earlier");
    std::string const list = folder.write("list", HEAD + entry("a.png", "viewport " VL_GALLERY_LIST) +
                                                      entry("b.png", "viewport " VL_GALLERY_LIST) +
                                                      entry("c.png", "viewport " VL_GALLERY_LIST));
    Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder), {"--only", "b.png"});
    ASSERT_EQ(run.status, 0) << run.error;
    EXPECT_FALSE(std::filesystem::exists(folder.file("out/a.png")));
    EXPECT_EQ(folder.read("out/c.png"), "earlier");
    std::string const page = folder.read("out/index.html");
    EXPECT_THAT(page, HasSubstr("src=\"b.png\""));
    EXPECT_THAT(page, HasSubstr("src=\"c.png\""));
    EXPECT_THAT(page, Not(HasSubstr("src=\"a.png\"")));
}

TEST(Gallery, failureNamesListLineAndPictureAndKeepsTheFormerPage) {
    TemporaryFolder const folder;
    std::filesystem::create_directory(folder.file("out"));
    folder.write("out/index.html", "former");
    folder.write("out/a.png", "former");
    std::string const program = writeProgram(folder, "failing", "echo half > \"$3\"; exit 3\n");
    std::string const list = folder.write("list", HEAD + entry("a.png", "viewport " VL_GALLERY_LIST));
    Outcome const run = runGallery(list, folder.file("out"), program);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.error,
              "vl_gallery: " + list + ": line 3: a.png: " + program + ": ended with exit status 3\n");
    EXPECT_EQ(folder.read("out/index.html"), "former");
    EXPECT_EQ(folder.read("out/a.png"), "former");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.file("out")), {}), 2);
}

TEST(Gallery, faultOfTheListIsFoundBeforeAnythingIsDrawn) {
    struct {
        std::string list;
        char const* fault;
    } const cases[] = {{"picture\n", ": line 1: picture takes one word or quoted text\n"},
                       {HEAD + entry("a.png", "viewport " VL_GALLERY_LIST) + entry("b.png", "viewport {b}"),
                        ": line 7: no value is given for {b}\n"},
                       {HEAD + entry("a.png", "sheet nothing"), ": a.png: there is no sheet 'nothing'\n"}};
    for (auto const& wrong : cases) {
        TemporaryFolder const folder;
        std::string const list = folder.write("list", wrong.list);
        Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder));
        EXPECT_EQ(run.status, 1) << wrong.list;
        EXPECT_THAT(run.error, testing::EndsWith(wrong.fault));
        EXPECT_FALSE(std::filesystem::exists(folder.file("out/a.png")));
    }
}

TEST(Gallery, interruptionLeavesNoTemporaryFile) {
    TemporaryFolder const folder;
    std::string const program =
        writeProgram(folder, "interrupting", "echo half > \"$3\"; kill -TERM $PPID; exec sleep 900\n");
    std::string const list = folder.write("list", HEAD + entry("a.png", "viewport " VL_GALLERY_LIST) +
                                                      entry("b.png", "viewport " VL_GALLERY_LIST));
    std::filesystem::create_directory(folder.file("out"));
    Outcome const run = runGallery(list, folder.file("out"), program);
    EXPECT_EQ(run.status, 128 + SIGTERM) << run.error;
    EXPECT_TRUE(std::filesystem::is_empty(folder.file("out")));
}

TEST(Gallery, senselessCommandLineIsAUsageError) {
    std::vector<std::string> const required{"--list", "l", "--out", "o", "--viewport", "v"};
    auto const with = [&](std::vector<std::string> const& further) {
        std::vector<std::string> all = required;
        all.insert(all.end(), further.begin(), further.end());
        return all;
    };
    for (std::vector<std::string> const& arguments :
         {std::vector<std::string>{},
          {"--list", "l", "--out", "o"},
          {"--list", "l", "--viewport", "v"},
          {"--out", "o", "--viewport", "v"},
          with({"word"}),
          with({"--outs", "x"}),
          with({"--define", "x"}),
          with({"--define", "=x"}),
          with({"--list", VL_GALLERY_LIST, "--only", "99-none.png"})}) {
        Outcome const run = runProgram(VL_GALLERY_PROGRAM, arguments);
        EXPECT_EQ(run.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(std::count(run.error.begin(), run.error.end(), '\n'), 1) << run.error;
        EXPECT_THAT(run.error, testing::StartsWith("vl_gallery: "));
    }
    Outcome const run = runGallery(VL_GALLERY_LIST, "o", "v", {"--only", "99-none.png"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.error, HasSubstr("lists no 99-none.png"));
}

TEST(Gallery, folderThatCannotBeMadeIsAFault) {
    TemporaryFolder const folder;
    Outcome const run = runGallery(VL_GALLERY_LIST, folder.write("file", "in the way") + "/pictures", "v");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.error, HasSubstr("vl_gallery: " + folder.file("file") + "/pictures: "));
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

TEST(Gallery, contactSheetShowsItsPicturesPixelByPixel) {
    constexpr int width = 41;
    constexpr int height = 30;
    TemporaryFolder const folder;
    std::string tiles;
    for (int i = 0; i < 5; ++i) {
        std::string const name = folder.file(std::to_string(i) + ".png");
        writeRamp(name, width, height, static_cast<unsigned char>(50 * i));
        tiles += "\n  tile 'label " + std::to_string(i) + "' " + name;
    }
    std::string const list = folder.write("list", HEAD + entry("sheet.png", tiles));
    Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder));
    ASSERT_EQ(run.status, 0) << run.error;

    auto const sheet = Picture::loadPng(folder.file("out/sheet.png"));
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

TEST(Gallery, contactSheetOfBadPicturesIsAFault) {
    TemporaryFolder const folder;
    writeRamp(folder.file("a.png"), 20, 10, 0);
    writeRamp(folder.file("b.png"), 20, 11, 0);
    writeRamp(folder.file("wide.png"), 6000, 1, 0);
    folder.write("text.png", "no picture");
    struct {
        std::vector<char const*> tiles;
        char const* fault;
    } const cases[] = {{{"a.png", "b.png"}, "has another size than the first picture of its sheet"},
                       {{"wide.png"}, "makes a sheet of more than 5461 pixels"},
                       {{"missing.png"}, "copier: ended with exit status 1"},
                       {{"text.png"}, "line 3: sheet.png: "}};
    for (auto const& bad : cases) {
        std::string tiles;
        for (char const* const name : bad.tiles) {
            tiles += std::string("\n  tile label ") + folder.file(name);
        }
        std::string const list = folder.write("list", HEAD + entry("sheet.png", tiles));
        Outcome const run = runGallery(list, folder.file("out"), writeCopier(folder));
        EXPECT_EQ(run.status, 1) << tiles;
        EXPECT_THAT(run.error, HasSubstr(bad.fault));
        EXPECT_TRUE(std::filesystem::is_empty(folder.file("out")));
    }
}

}  // namespace
