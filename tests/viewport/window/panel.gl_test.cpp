#include "tests/viewport/playback/moving_files.h"
#include "tests/viewport/window/WindowTest.h"

#include <regex>

using namespace vellum::viewport;

namespace {

using Point = WindowDriver::Point;

constexpr int PANEL = 320;    // pixels, see Panel.cpp
constexpr int STATUS = 26;    // pixels
constexpr int TIMELINE = 34;  // pixels

/// A window whose panel is pressed, beside pictures that are drawn with options.
class Window_panel_gl_test : public WindowTest {
protected:
    void start(std::vector<std::string> const& arguments) {
        given = arguments;
        std::vector<std::string> words = arguments;
        words.insert(words.end(), {"--size", std::to_string(width) + "x" + std::to_string(height)});
        window = open(words);
        ASSERT_TRUE(window->isOpen());
    }

    /// The middle of a text; the hints that cover others are gone before.
    Point find(std::string const& text, Point after = {0, 0}) {
        window->move({width - 5, 5});
        return window->find(text, after);
    }

    void press(std::string const& text) { window->click(1, find(text)); }

    /// Of a widget with its label at the right, the part that is pressed.
    void pressLeftOf(std::string const& label, int pixels = 30) {
        Point const at = find(label);
        window->click(1, {at.x - 4 * static_cast<int>(label.size()) - pixels, at.y});
    }

    void choose(std::string const& label, std::string const& entry) {
        Point const at = find(label);
        pressLeftOf(label);
        // The list is below the field; the field itself may say the same.
        window->click(1, window->find(entry, {0, at.y + 10}));
    }

    /// Into the first field of the widget with this label.
    void enter(std::string const& label, std::string const& number) {
        Point const at = find(label);
        // Sliders are typed into with Control.
        window->hold("Control_L");
        window->click(1, {40, at.y});
        window->letGo("Control_L");
        window->type({"Control_L", "a"});
        window->write(number);
        window->type({"Return"});
    }

    /// Closes the sections above, which would leave no room for others.
    void closeSections(std::vector<std::string> const& names) {
        for (std::string const& name : names) {
            press(name);
        }
    }

    /// The scene beside the panel is the picture with these options beside the first ones.
    /// \param bar height of the bar of frames below it
    void expectScene(std::vector<std::string> options, int bar = 0) {
        window->move({width - 5, 5});
        options.insert(options.begin(), given.begin(), given.end());
        options.insert(options.end(), {"--size", std::to_string(width - PANEL) + "x" +
                                                     std::to_string(height - STATUS - bar)});
        Picture const expected = drawnOffScreen(options);
        EXPECT_TRUE(window->waitUntil([&](Picture const& seen) {
            return differences(cut(seen, PANEL, 0, width - PANEL, expected.height), expected) == 0;
        })) << testing::PrintToString(options)
            << ' ' << differences(cut(window->look(), PANEL, 0, width - PANEL, expected.height), expected)
            << " pixels differ";
    }

    int width = 480;   // pixels of the window
    int height = 960;  // enough for most of the panel
    std::vector<std::string> given;
    std::unique_ptr<WindowDriver> window;
};

}  // namespace

TEST_F(Window_panel_gl_test, widgetsOfMeshesAreTheirOptions) {
    start({cube});
    expectScene({});
    choose("Shading", "wireframe");
    expectScene({"--shading", "wireframe"});
    choose("Shading", "faceted");
    choose("Edges", "all");
    expectScene({"--shading", "faceted", "--edges=all"});
    press("Wireframe back");
    press("One color");
    expectScene({"--shading", "faceted", "--edges=all", "--wireframe-back", "--mesh-color", "cccccc"});
}

TEST_F(Window_panel_gl_test, widgetsOfTheViewAreItsOptions) {
    start({cube});
    closeSections({"Data", "Meshes"});
    press("Grid");
    expectScene({"--no-grid"});
    press("Axes");
    press("Light from a place");
    expectScene({"--no-grid", "--no-axes", "--light", "40,40"});
    press("Left");
    expectScene({"--no-grid", "--no-axes", "--light", "40,40", "--view", "left"});
    press("Sizes");
    expectScene({"--no-grid", "--no-axes", "--light", "40,40", "--view", "left", "--sizes"});
}

TEST_F(Window_panel_gl_test, theBackgroundsColorIsPicked) {
    start({cube, "--no-grid"});
    closeSections({"Data", "Meshes"});
    // The field is a square in front of its label; its colors open beside it.
    pressLeftOf("Below", 12);
    Point const field = find("Below");
    window->click(1, {field.x + 40, field.y + 60});
    window->click(1, {PANEL / 2, height - STATUS - 20});
    std::string const view = savedView(*window);
    std::smatch found;
    ASSERT_TRUE(
        std::regex_search(view, found, std::regex("\"--background\": *\"([0-9a-f]{6},[0-9a-f]{6})\"")))
        << view;
    expectScene({"--background", found[1]});
}

TEST_F(Window_panel_gl_test, thePictureIsSavedWithItsButton) {
    start({cube, "--no-grid"});
    closeSections({"Data", "Meshes", "View"});
    press("Picture");
    press("Own size");
    enter("Pixels", "300");
    press("Transparent");
    press("Save");
    std::string const file = folder.file("picture.png");
    ASSERT_TRUE(window->waitUntil([&](Picture const&) { return Picture::loadPng(file).isOk(); }));
    Picture const saved = Picture::loadPng(file).value();
    EXPECT_EQ(saved.width, 300);
    EXPECT_EQ(saved.pixels[3], 0) << "the corner is transparent";
}

TEST_F(Window_panel_gl_test, numbersOfAnObjectAreTyped) {
    start({cube, "--no-grid"});
    closeSections({"Data", "Meshes", "View"});
    press("Object");
    choose("Selected", "cube.obj");
    enter("Move", "0.5");
    expectScene({"--transform", "1:0.5,0,0"});
    press("Undo");
    expectScene({});
}

TEST_F(Window_panel_gl_test, widgetsOfParticlesAreTheirOptions) {
    std::string rows = "60\n\n";
    for (int i = 0; i < 60; ++i) {
        rows += "H " + std::to_string(i % 4) + " " + std::to_string(i / 4 % 4) + " " +
                std::to_string(i / 16) + "\n";
    }
    start({folder.write("gas.xyz", rows)});
    closeSections({"Data"});
    choose("Shown as", "spheres");
    expectScene({"--particles", "spheres"});
    press("Own size");
    enter("Size", "0.5");
    press("Clip box");
    enter("Least", "1.5");
    expectScene({"--particles", "spheres", "--size-of-particles", "0.5", "--clip", "1.5,3,0,3,0,3"});
    press("Clip box");
    enter("Percent", "25");
    expectScene({"--particles", "spheres", "--size-of-particles", "0.5", "--percent", "25"});
}

TEST_F(Window_panel_gl_test, colorMapsAndChannelsAreChosen) {
    std::string rows =
        "ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n20\nITEM: BOX BOUNDS pp pp pp\n0 4\n0 4\n0 4\n"
        "ITEM: ATOMS id x y z c_heat\n";
    for (int i = 0; i < 20; ++i) {
        rows += std::to_string(i + 1) + " " + std::to_string(i % 4) + " " + std::to_string(i / 4 % 4) + " " +
                std::to_string(i / 16) + " " + std::to_string(i * i) + "\n";
    }
    start({folder.write("heat.dump", rows), "--particles", "spheres"});
    closeSections({"Data"});
    choose("Channel", "c_heat");
    expectScene({"--channel", "c_heat"});
    choose("Colors", "viridis");
    press("Range of the data");
    expectScene({"--channel", "c_heat", "--colormap", "viridis", "--range", "0,361"});
}

TEST_F(Window_panel_gl_test, theEndsOfTheRangeAreDraggedOnTheHistogram) {
    std::string rows = "id,x,y,z,heat\n";
    for (int i = 0; i < 11; ++i) {
        rows += std::to_string(i) + "," + std::to_string(i) + ",0,0," + std::to_string(i) + "\n";
    }
    start({folder.write("heat.csv", rows), "--channel", "heat"});
    closeSections({"Data"});
    // The strip of 52 pixels is above the first of the numbers.
    Point const from = find("From");
    int const y = from.y - 30;
    auto const scene = [this](Picture const& seen) { return cut(seen, PANEL, 0, width - PANEL, 800); };
    Picture const before = scene(window->settled());
    window->move({12, y});
    window->press(1);
    window->move({80, y});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(scene(seen), before) > 50; }))
        << "the scene follows while the end is held";
    window->release(1);
    window->drag(1, {294, y}, {220, y});
    std::string const view = savedView(*window);
    std::smatch found;
    ASSERT_TRUE(std::regex_search(view, found, std::regex("\"--range\": *\"?([-.0-9e]+),([-.0-9e]+)")))
        << view;
    EXPECT_NEAR(std::stod(found[1]), 10 * (80 - 8) / 290.0, 0.1);
    EXPECT_NEAR(std::stod(found[2]), 10 * (220 - 8) / 290.0, 0.1);
    expectScene({"--range", found[1].str() + "," + found[2].str()});
}

TEST_F(Window_panel_gl_test, anEffectAndItsParametersAreChosen) {
    start({cube});
    closeSections({"Data", "Meshes", "View"});
    press("Effect");
    // Of the two that say so, the field is the second one.
    Point const header = window->find("Effect");
    Point const field = find("Effect", {0, header.y + 12});
    window->click(1, {field.x - 60, field.y});
    window->click(1, window->find("sss", {0, field.y + 10}));
    expectScene({"--effect", "sss"});
    enter("thickness", "0.6");
    expectScene({"--effect", "sss", "--effect-param", "thickness=0.6"});
}

TEST_F(Window_panel_gl_test, framesAreScrubbedSteppedAndPlayed) {
    width = 1000;
    height = 300;
    start({folder.write("run.dump", moving_files::dumpOf(5)), "--particles", "spheres", "--range", "0,40",
           "--camera-position", "2,3,20", "--camera-focus", "2,2,2", "--frame", "0"});
    auto const expectFrame = [this](int frame) {
        given.back() = std::to_string(frame);
        expectScene({}, TIMELINE);
    };
    expectFrame(0);
    int const bar = height - STATUS - TIMELINE / 2;
    Point const text = find("of 0 to");
    window->drag(1, text, {width - 20, bar});
    expectFrame(4);
    window->drag(1, {width - 20, bar}, {PANEL + 10, bar});
    expectFrame(0);
    window->click(1, find(">", {PANEL, bar - TIMELINE / 2}));
    expectFrame(1);
    press("Play");
    expectFrame(4);
    window->click(1, find("<", {PANEL, bar - TIMELINE / 2}));
    expectFrame(3);
}
