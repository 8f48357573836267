#include "tests/viewport/window/WindowTest.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;

namespace {

constexpr unsigned int FRAMES = 5;

class Window_playing_gl_test : public WindowTest {
protected:
    /// Frames in which two particles go different ways.
    std::string dump() const {
        std::string text;
        for (unsigned int i = 0; i < FRAMES; ++i) {
            std::string const x = std::to_string(i);
            text += "ITEM: TIMESTEP\n" + x +
                    "0\nITEM: NUMBER OF ATOMS\n2\nITEM: BOX BOUNDS pp pp pp\n0 8\n0 8\n0 8\n" +
                    "ITEM: ATOMS id type x y z\n1 1 " + x + " 1 1\n2 2 4 " + x + " 6\n";
        }
        return folder.write("walk.lammpstrj", text);
    }
};

}  // namespace

TEST_F(Window_playing_gl_test, spacePlaysAndStopsAtAFrameThatIsDrawnAsElsewhere) {
    std::vector<std::string> const words{
        dump(), "--size", "320x240", "--particles", "points", "--size-of-particles", "9"};
    std::vector<Picture> frames;
    for (unsigned int i = 0; i < FRAMES; ++i) {
        std::vector<std::string> of = words;
        of.insert(of.end(),
                  {"--frame", std::to_string(i), "--camera-position", "4,-30,4", "--camera-focus", "4,4,4"});
        frames.push_back(drawnOffScreen(of));
    }
    std::vector<std::string> first = words;
    first.insert(first.end(), {"--frame", "0", "--camera-position", "4,-30,4", "--camera-focus", "4,4,4"});
    auto const window = open(first);
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, frames[0]) == 0; }));
    window->type({"space"});
    EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, frames[0]) != 0; }));
    window->type({"space"});
    Picture const stopped = window->settled();
    EXPECT_TRUE(std::any_of(frames.begin(), frames.end(),
                            [&](Picture const& frame) { return differences(stopped, frame) == 0; }));
}

TEST_F(Window_playing_gl_test, aPictureIsSavedAsItIsSeen) {
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    Picture const seen = window->settled();
    window->type({"Control_L", "s"});
    EXPECT_TRUE(window->waitUntil([&](Picture const&) {
        Result<Picture> const saved = Picture::loadPng(folder.file("picture.png"));
        return saved.isOk() && differences(saved.value(), seen) == 0;
    }));
}
