#include "viewport/live/WindowSettings.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(WindowSettings, areReadBackAsTheyWereSaved) {
    TemporaryFolder const folder;
    std::string const path = folder.file("deep/vl_viewport/window.json");
    WindowSettings settings;
    EXPECT_FALSE(settings.load(path).has_value());
    settings.width = 801;
    settings.height = 602;
    settings.hasPanel = false;
    settings.remember({"/a", "/b"});
    EXPECT_FALSE(settings.save().has_value());
    WindowSettings again;
    EXPECT_FALSE(again.load(path).has_value());
    EXPECT_EQ(again.width, 801);
    EXPECT_EQ(again.height, 602);
    EXPECT_FALSE(again.hasPanel);
    EXPECT_THAT(again.recentFiles(), ElementsAre("/a", "/b"));
}

TEST(WindowSettings, areWrittenOnlyWhereTheyChanged) {
    TemporaryFolder const folder;
    std::string const path = folder.file("window.json");
    WindowSettings settings;
    static_cast<void>(settings.load(path));
    EXPECT_FALSE(settings.save().has_value());
    EXPECT_THAT(folder.names(), IsEmpty());
    settings.hasPanel = false;
    EXPECT_FALSE(settings.save().has_value());
    std::filesystem::remove(path);
    EXPECT_FALSE(settings.save().has_value());
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WindowSettings, rememberTheLastTenFilesEachOnce) {
    WindowSettings settings;
    settings.remember({"/x/../a", "-", "b"});
    EXPECT_THAT(settings.recentFiles(), ElementsAre("/a", (std::filesystem::current_path() / "b").string()));
    for (int i = 0; i < 20; ++i) {
        settings.remember({"/" + std::to_string(i % 12)});
    }
    EXPECT_EQ(settings.recentFiles().size(), WindowSettings::MOST_FILES);
    EXPECT_EQ(settings.recentFiles().front(), "/7");
    settings.forget("/7");
    EXPECT_EQ(settings.recentFiles().front(), "/6");
}

TEST(WindowSettings, damagedFilesAreNotTakenAndReplaced) {
    TemporaryFolder const folder;
    for (char const* const text : {"", "{\"width\":", "[1]", "\xFF"}) {
        std::string const path = folder.write("window.json", text);
        WindowSettings settings;
        std::optional<Fault> const fault = settings.load(path);
        ASSERT_TRUE(fault.has_value()) << text;
        EXPECT_EQ(fault->message, "is damaged and not taken");
        EXPECT_TRUE(settings.hasPanel);
        EXPECT_FALSE(settings.save().has_value());
        EXPECT_THAT(folder.read("window.json"), HasSubstr("\"panel\": true"));
    }
}

TEST(WindowSettings, valuesThatMakeNoSenseAreAsByDefault) {
    TemporaryFolder const folder;
    std::string const path = folder.write(
        "window.json", R"({"width":1e9,"height":70,"panel":"x","recent":[1,"relative","/a\u0000b","/ok"]})");
    WindowSettings settings;
    EXPECT_FALSE(settings.load(path).has_value());
    EXPECT_FALSE(settings.width.has_value());
    EXPECT_FALSE(settings.height.has_value());
    EXPECT_TRUE(settings.hasPanel);
    EXPECT_THAT(settings.recentFiles(), ElementsAre("/ok"));
}
