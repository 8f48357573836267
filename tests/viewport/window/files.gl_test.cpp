#include "tests/viewport/window/WindowTest.h"

#include <fstream>

#include <sys/stat.h>

using namespace vellum::viewport;

namespace {

constexpr char TRIANGLE[] = "v -1 -1 0\nv 1 -1 0\nv 0 2 0\nf 1 2 3\n";

class Window_files_gl_test : public WindowTest {
protected:
    /// A file that never comes to its end.
    std::string endless() {
        std::string const pipe = folder.file("pipe.obj");
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        writer.open(pipe, std::ios::in | std::ios::out);
        writer << "v 0 0 0\n" << std::flush;
        return pipe;
    }

private:
    std::fstream writer;
};

}  // namespace

TEST_F(Window_files_gl_test, whatWasOpenAndTheSizeAreKnownInTheNextRun) {
    hidePanel();
    auto window = open({cube, "--size", "400x300"});
    ASSERT_TRUE(window->isOpen());
    window->settled();
    window->resize(640, 200);
    window->type({"Tab"});
    EXPECT_EQ(window->close(), 0);
    window = open({});
    ASSERT_TRUE(window->isOpen());
    EXPECT_TRUE(
        window->waitUntil([](Picture const& seen) { return seen.width == 640 && seen.height == 200; }));
    window->click(1, window->find("cube.obj"));
    window->type({"Tab"});
    expectShown(*window, drawnOffScreen({cube, "--size", "640x200"}),
                "the panel was shown, and is hidden now");
}

TEST_F(Window_files_gl_test, aFileThatChangesIsShownAndOneThatIsDamagedThenIsNot) {
    hidePanel();
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    expectShown(*window, drawnOffScreen({cube, "--size", "320x240"}));
    window->type({"1"});
    window->settled();
    folder.write("cube.obj", TRIANGLE);
    Picture const expected = drawnOffScreen({cube, "--size", "320x240", "--view", "front"});
    expectShown(*window, expected, "the view is kept");
    folder.write("cube.obj", "f 1 2 3\n");
    window->find("Not opened");
    window->type({"Return"});
    expectShown(*window, expected, "what was open stays");
}

TEST_F(Window_files_gl_test, aBrokenFileThatIsDroppedSaysWhyAndLeavesWhatWasOpen) {
    hidePanel();
    auto const window = open({cube, "--size", "480x360"});
    ASSERT_TRUE(window->isOpen());
    Picture const before = window->settled();
    window->drop({folder.write("broken.stl", "solid nothing\nfacet normal x y\n")});
    window->find("Not opened");
    window->find("'outer loop'");
    window->click(1, window->find("OK"));
    window->move({5, 5});
    expectShown(*window, before);
    EXPECT_EQ(window->close(), 0);
}

TEST_F(Window_files_gl_test, noSizeDoesHarmOrIsKeptInMind) {
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    Picture const before = window->settled();
    for (auto const& [width, height] : {std::pair{1, 1}, {64, 64}, {1, 700}, {1390, 990}}) {
        window->resize(width, height);
        Picture const seen = window->settled();
        EXPECT_EQ(seen.width, width);
        EXPECT_EQ(seen.height, height);
    }
    window->resize(320, 240);
    expectShown(*window, before);
    window->type({"Tab"});
    expectShown(*window, drawnOffScreen({cube, "--size", "320x240"}));
    window->resize(64, 64);
    expectShown(*window, drawnOffScreen({cube, "--size", "64x64"}));
    EXPECT_EQ(window->close(), 0);
}

TEST_F(Window_files_gl_test, loadingThatIsCancelledLeavesWhatWasOpenAndFilesThatAreDroppedThenAreShown) {
    hidePanel();
    std::string const pipe = endless();
    std::string const triangle = folder.write("triangle.obj", TRIANGLE);
    auto const window = open({cube, "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    Picture const before = window->settled();
    window->drop({pipe});
    window->find("Cancel");
    window->type({"Escape"});
    expectShown(*window, before, "with the key");
    window->drop({pipe});
    window->click(1, window->find("Cancel"));
    window->move({5, 5});
    expectShown(*window, before, "with the button");
    window->drop({pipe});
    window->find("Cancel");
    window->drop({triangle});
    expectShown(*window, drawnOffScreen({triangle, "--size", "320x240"}), "in place of what is loading");
}

TEST_F(Window_files_gl_test, theCrossClosesItWhileAFileIsLoaded) {
    hidePanel();
    auto const window = open({endless(), "--size", "320x240"});
    ASSERT_TRUE(window->isOpen());
    window->find("Cancel");
    EXPECT_EQ(window->close(), 0);
}
