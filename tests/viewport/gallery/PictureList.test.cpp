#include "viewport/gallery/PictureList.h"
#include "tests/support/TemporaryFolder.h"
#include "viewport/gallery/sheets/subjects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using namespace vellum::gallery;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string const HEAD = "section S\ngroup G\n";
std::string const PICTURE = "picture a.png\ntitle T\ncaption C\n";

std::string faultOf(std::string const& text) {
    auto const list = parsePictureList(text, "list");
    return list.isOk() ? "none" : list.fault().line();
}

ListedPicture onlyPicture(std::string const& text) {
    auto const list = parsePictureList(text, "list");
    EXPECT_TRUE(list.isOk()) << list.fault().line();
    return list.isOk() && list.value().size() == 1 ? list.value().front() : ListedPicture();
}

TEST(PictureList, pictureHasAllThatIsListed) {
    ListedPicture const picture = onlyPicture(
        "section 'Real models'\ngroup \"the models\"\n\n"
        "picture 20-duck.png\n  title The duck\n  caption 'In two' \\\n    parts.\n  needs melt models\n"
        "  size 10x20\n  viewport duck.dae --view 'a b'\n");
    EXPECT_EQ(picture.line, 4);
    EXPECT_EQ(picture.section, "Real models");
    EXPECT_EQ(picture.group, "the models");
    EXPECT_EQ(picture.file, "20-duck.png");
    EXPECT_EQ(picture.title, "The duck");
    EXPECT_EQ(picture.caption, "In two parts.");
    EXPECT_THAT(picture.needs, ElementsAre("melt", "models"));
    EXPECT_EQ(picture.size, "10x20");
    EXPECT_THAT(picture.arguments, ElementsAre("duck.dae", "--view", "a b"));
    EXPECT_EQ(picture.sheet, "");
    EXPECT_THAT(picture.tiles, IsEmpty());
}

TEST(PictureList, tilesKeepTheirOrderAndLines) {
    ListedPicture const picture = onlyPicture(HEAD + PICTURE + "tile 'the first' a --b\ntile second c\n");
    ASSERT_THAT(picture.tiles, SizeIs(2));
    EXPECT_EQ(picture.tiles[0].line, 6);
    EXPECT_EQ(picture.tiles[0].label, "the first");
    EXPECT_THAT(picture.tiles[0].arguments, ElementsAre("a", "--b"));
    EXPECT_EQ(picture.tiles[1].line, 7);
    EXPECT_THAT(picture.tiles[1].arguments, ElementsAre("c"));
}

TEST(PictureList, sectionsAndGroupsHoldUntilTheNext) {
    std::string const rest = "title T\ncaption C\nsheet boxes\n";
    auto const list = parsePictureList(HEAD + "picture a.png\n" + rest + "group H\npicture b.png\n" + rest +
                                           "section T\npicture c.png\n" + rest,
                                       "list");
    ASSERT_TRUE(list.isOk()) << list.fault().line();
    std::vector<std::string> places;
    for (ListedPicture const& picture : list.value()) {
        places.push_back(picture.section + picture.group);
    }
    EXPECT_THAT(places, ElementsAre("SG", "SH", "TH"));
}

TEST(PictureList, wrongLineIsNamedWithItsFile) {
    struct {
        std::string text;
        char const* fault;
    } const cases[] = {
        {"", "list: lists no picture"},
        {"# nothing\n", "list: lists no picture"},
        {"'\n", "list: line 1: the quote has no end"},
        {"pictures a.png\n", "list: line 1: 'pictures' is no statement"},
        {"title T\n", "list: line 1: comes before the first picture"},
        {PICTURE, "list: line 1: section and group come before the first picture"},
        {"section S\n" + PICTURE, "list: line 2: section and group come before the first picture"},
        {"section A B\n", "list: line 1: section takes one word or quoted text"},
        {"group ''\n", "list: line 1: group takes one word or quoted text"},
        {HEAD + "picture\n", "list: line 3: picture takes one word or quoted text"},
        {HEAD + "picture a.jpg\n", "list: line 3: a.jpg is not the name of a PNG file without a folder"},
        {HEAD + "picture .png\n", "list: line 3: .png is not the name of a PNG file without a folder"},
        {HEAD + "picture ../a.png\n",
         "list: line 3: ../a.png is not the name of a PNG file without a folder"},
        {HEAD + "picture b/a.png\n", "list: line 3: b/a.png is not the name of a PNG file without a folder"},
        {HEAD + PICTURE + "sheet a\n" + PICTURE, "list: line 7: a.png is listed on line 3 already"},
        {HEAD + PICTURE, "list: line 3: a.png has no sheet, viewport or tile statement"},
        {HEAD + PICTURE + "picture b.png\n", "list: line 3: a.png has no sheet, viewport or tile statement"},
        {HEAD + "picture a.png\ntitle T\nsheet a\n", "list: line 3: a.png has no title or no caption"},
        {HEAD + "picture a.png\ntitle\ncaption C\nsheet a\n",
         "list: line 3: a.png has no title or no caption"},
        {HEAD + PICTURE + "sheet\n", "list: line 6: sheet takes one word"},
        {HEAD + PICTURE + "size 1 2\n", "list: line 6: size takes one word"},
        {HEAD + PICTURE + "viewport\n", "list: line 6: viewport takes the arguments of vl_viewport"},
        {HEAD + PICTURE + "tile label\n",
         "list: line 6: tile takes a label and the arguments of vl_viewport"},
        {HEAD + PICTURE + "sheet a\nviewport b\n",
         "list: line 7: a.png has more than one of sheet, viewport and tile"},
    };
    for (auto const& wrong : cases) {
        EXPECT_EQ(faultOf(wrong.text), wrong.fault) << wrong.text;
    }
}

TEST(PictureList, missingFileIsAFault) {
    TemporaryFolder const folder;
    auto const list = readPictureList(folder.file("none"));
    ASSERT_FALSE(list.isOk());
    EXPECT_EQ(list.fault().line(), folder.file("none") + ": cannot be read");
}

TEST(PictureList, variablesAreFilledIn) {
    ListedPicture picture = onlyPicture(HEAD + PICTURE + "viewport {models}/a.obj x{a}{b}y z\n");
    auto const filled = withVariables(picture, {{"models", "/m"}, {"a", "1"}, {"b", "{a}"}}, "list");
    ASSERT_TRUE(filled.isOk()) << filled.fault().line();
    EXPECT_THAT(filled.value().arguments, ElementsAre("/m/a.obj", "x1{a}y", "z"));

    picture = onlyPicture(HEAD + PICTURE + "tile {a} {a}\n");
    auto const tiled = withVariables(picture, {{"a", "1"}}, "list");
    ASSERT_TRUE(tiled.isOk());
    EXPECT_EQ(tiled.value().tiles[0].label, "{a}");
    EXPECT_THAT(tiled.value().tiles[0].arguments, ElementsAre("1"));
}

TEST(PictureList, missingVariableIsAFaultOfItsLine) {
    struct {
        char const* source;
        char const* fault;
    } const cases[] = {
        {"viewport b {c}\n", "list: line 3: no value is given for {c}"},
        {"viewport {}\n", "list: line 3: no value is given for {}"},
        {"viewport {a\n", "list: line 3: a brace of '{a' has no partner"},
        {"viewport a}\n", "list: line 3: a brace of 'a}' has no partner"},
        {"tile l {a}\ntile l {c}\n", "list: line 7: no value is given for {c}"},
    };
    for (auto const& wrong : cases) {
        auto const filled = withVariables(onlyPicture(HEAD + PICTURE + wrong.source), {{"a", "1"}}, "list");
        ASSERT_FALSE(filled.isOk()) << wrong.source;
        EXPECT_EQ(filled.fault().line(), wrong.fault);
    }
}

TEST(PictureList, needsAreMetByTheirVariables) {
    ListedPicture picture;
    EXPECT_TRUE(hasAllNeeds(picture, {}));
    picture.needs = {"a", "b"};
    EXPECT_FALSE(hasAllNeeds(picture, {{"a", ""}}));
    EXPECT_TRUE(hasAllNeeds(picture, {{"a", ""}, {"b", ""}}));
}

TEST(PictureList, deliveredListAsksForEverySheetOnce) {
    auto const list = readPictureList(VL_GALLERY_LIST);
    ASSERT_TRUE(list.isOk()) << list.fault().line();
    std::vector<std::string> asked;
    for (ListedPicture const& picture : list.value()) {
        if (!picture.sheet.empty()) {
            asked.push_back(picture.sheet);
        }
    }
    std::vector<std::string> drawn;
    for (Subject const& subject : allSubjects()) {
        drawn.push_back(subject.name);
    }
    EXPECT_EQ(asked, drawn);
}

TEST(PictureList, deliveredListIsInTheOrderOfItsNumbers) {
    auto const list = readPictureList(VL_GALLERY_LIST);
    ASSERT_TRUE(list.isOk()) << list.fault().line();
    EXPECT_THAT(list.value(), SizeIs(53));
    std::set<std::string> numbers;
    std::string last;
    for (ListedPicture const& picture : list.value()) {
        std::string const number = picture.file.substr(0, 3);
        EXPECT_EQ(number.back(), '-') << picture.file;
        EXPECT_LT(last, number) << picture.file;
        last = number;
    }
}

TEST(PictureList, onlyTheMeltMayBeMissingFromTheDeliveredList) {
    auto const list = readPictureList(VL_GALLERY_LIST);
    ASSERT_TRUE(list.isOk()) << list.fault().line();
    ListVariables const given{{"inputs", "i"}, {"models", "m"}, {"shaders", "s"}};
    for (ListedPicture const& picture : list.value()) {
        if (hasAllNeeds(picture, given)) {
            auto const filled = withVariables(picture, given, "list");
            EXPECT_TRUE(filled.isOk()) << filled.fault().line();
        } else {
            EXPECT_THAT(picture.needs, ElementsAre("melt"));
        }
    }
}

}  // namespace
