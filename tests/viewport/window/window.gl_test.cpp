#include "tests/viewport/window/WindowTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

using namespace vellum::viewport;

namespace {

class Window_gl_test : public WindowTest {};

}  // namespace

TEST_F(Window_gl_test, withoutItsPanelItShowsThePictureThatOutWrites) {
    auto const window = open({cube, "--size", "640x480"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    Picture const expected = drawnOffScreen({cube, "--size", "640x480"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, expected) == 0; }))
        << differences(window->look(), expected) << " pixels differ";
    EXPECT_EQ(window->close(), 0);
}

TEST_F(Window_gl_test, aRestingWindowUsesNoProcessorTime) {
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    window->settled();
    double const before = window->processorTime();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_LE(window->processorTime() - before, 0.01);
}

TEST_F(Window_gl_test, aFieldThatWaitsForLettersLeavesTheProcessorToOthers) {
    auto const window = open({cube, "--size", "400x700"});
    ASSERT_TRUE(window->isOpen());
    WindowDriver::Point const field = window->find("Texture");
    window->click(1, {field.x - 100, field.y});
    window->write("a");
    double const before = window->processorTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    // The cursor blinks. A program that draws all the time needs more than a second on the threads of the
    // rasterizer.
    EXPECT_LE(window->processorTime() - before, 0.4);
}

TEST_F(Window_gl_test, theMouseTurnsMovesAndZoomsAndFShowsEverythingAgain) {
    auto const window = open({cube, "--size", "480x360"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    Picture const first = window->settled();
    window->drag(1, {240, 180}, {330, 200});
    Picture const turned = window->settled();
    EXPECT_GT(differences(first, turned), 2000U);
    window->type({"f"});
    Picture const fitted = window->settled();
    window->drag(3, {240, 180}, {280, 150});
    Picture const moved = window->settled();
    EXPECT_GT(differences(fitted, moved), 2000U);
    window->turnWheel(3, {100, 100});
    Picture const zoomed = window->settled();
    EXPECT_GT(differences(moved, zoomed), 2000U);
    window->type({"f"});
    EXPECT_LE(differences(window->settled(), fitted), 20U) << "turning is kept, the rest is undone";
}

TEST_F(Window_gl_test, numbersAreTheViewsOfTheCommandLine) {
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    window->type({"3"});
    Picture const expected = drawnOffScreen({cube, "--size", "320x240", "--view", "top"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, expected) == 0; }));
    window->type({"0"});
    Picture const perspective = drawnOffScreen({cube, "--size", "320x240"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, perspective) == 0; }));
}

TEST_F(Window_gl_test, anotherSizeShowsThePictureOfThatSize) {
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    window->resize(401, 283);
    Picture const expected = drawnOffScreen({cube, "--size", "401x283"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, expected) == 0; }));
}

TEST_F(Window_gl_test, aFileThatIsDroppedIsShown) {
    auto const window = open({"--size", "320x240"});
    ASSERT_TRUE(window->isOpen()) << "without files";
    window->type({"Tab"});
    window->settled();
    window->drop({cube});
    Picture const expected = drawnOffScreen({cube, "--size", "320x240"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, expected) == 0; }));
}

TEST_F(Window_gl_test, withoutADisplayItEndsInOneLineThatNamesTheWayWithoutOne) {
    Outcome const outcome =
        runProgram(VL_VIEWPORT_PROGRAM, {cube}, {"DISPLAY=", "WAYLAND_DISPLAY=", "XDG_RUNTIME_DIR="});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.error, testing::HasSubstr("--out"));
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
}

TEST_F(Window_gl_test, aHandleMovesTheObjectAndTheStepCanBeTakenBack) {
    auto const window = open({cube, "--size", "480x480", "--view", "front", "--gizmo", "move"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    Picture const before = window->settled();
    // The handle of x goes to the right from the middle.
    window->move({280, 240});
    EXPECT_GT(differences(window->settled(), before), 20U) << "the handle under the cursor is highlighted";
    window->drag(1, {280, 240}, {350, 240});
    window->move({20, 20});
    Picture const moved = window->settled();
    EXPECT_GT(differences(moved, before), 5000U);
    window->type({"Control_L", "z"});
    EXPECT_EQ(differences(window->settled(), before), 0U);
    window->type({"Control_L", "Shift_L", "z"});
    EXPECT_EQ(differences(window->settled(), moved), 0U);
    window->type({"Control_L", "z"});
    window->settled();
    for (char const* const gizmo : {"t", "s"}) {
        window->type({gizmo});
        EXPECT_GT(differences(window->settled(), before), 100U) << gizmo;
    }
}

TEST_F(Window_gl_test, aPictureOfTheWindowItselfIsWrittenAndTheWindowCloses) {
    std::string const file = folder.file("window.png");
    auto const window = open({cube, "--size", "640x480", "--window-picture", file});
    EXPECT_TRUE(window->isOpen());
    std::optional<int> const status = window->waitForEnd();
    EXPECT_EQ(status, 0);
    Result<Picture> const picture = Picture::loadPng(file);
    ASSERT_TRUE(picture.isOk()) << picture.fault().line();
    EXPECT_EQ(picture.value().width, 640);
    EXPECT_EQ(picture.value().height, 480);
}

TEST_F(Window_gl_test, aPictureOfTheWindowReplacesNoTextureOfAModel) {
    Picture paint;
    paint.width = 1;
    paint.height = 1;
    paint.pixels = {255, 0, 0, 255};
    std::string const texture = folder.file("paint.png");
    ASSERT_FALSE(paint.savePng(texture));
    std::string const before = folder.read("paint.png");
    folder.write("model.mtl", "newmtl red\nmap_Kd paint.png\n");
    std::string const model = folder.write(
        "model.obj",
        "mtllib model.mtl\nusemtl red\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n");
    auto const window = open({model, "--size", "320x240", "--window-picture", texture});
    EXPECT_TRUE(window->isOpen());
    EXPECT_EQ(window->waitForEnd(), 2);
    EXPECT_EQ(folder.read("paint.png"), before);
}

TEST_F(Window_gl_test, framesArePlayedToTheLastOne) {
    std::string frames;
    for (int i = 0; i < 24; ++i) {  // more than two seconds
        frames += "2\n\nH 0 0 " + std::to_string(i / 8.0) + "\nO 1 1 1\n";
    }
    std::string const file = folder.write("run.xyz", frames);
    auto const window = open({file, "--size", "800x500", "--frame", "0", "--particles", "spheres"});
    ASSERT_TRUE(window->isOpen());
    Picture const first = window->settled();
    window->type({"space"});
    Picture const last = window->settled();
    EXPECT_GT(differences(first, last), 500U);
    window->type({"space"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, last) > 100; }))
        << "from the end it plays from the beginning";
    EXPECT_EQ(window->close(), 0);
}
