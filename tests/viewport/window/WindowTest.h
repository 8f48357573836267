#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/program/program_runner.h"
#include "tests/viewport/window/WindowDriver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// The fixture of tests that drive a window.
namespace vellum::viewport {

inline constexpr char CUBE[] =
    "v -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\n"
    "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";

/// How many pixels differ; all, where the sizes do.
inline std::size_t differences(Picture const& a, Picture const& b) {
    if (a.width != b.width || a.height != b.height) {
        return std::max(a.pixels.size(), b.pixels.size()) / 4;
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.pixels.size(); i += 4) {
        count += std::equal(a.pixels.begin() + static_cast<std::ptrdiff_t>(i),
                            a.pixels.begin() + static_cast<std::ptrdiff_t>(i + 4),
                            b.pixels.begin() + static_cast<std::ptrdiff_t>(i))
                     ? 0
                     : 1;
    }
    return count;
}

/// The part of a picture from a pixel on; nothing where it reaches farther.
inline Picture cut(Picture const& picture, int left, int top, int width, int height) {
    Picture part;
    if (left + width > picture.width || top + height > picture.height) {
        return part;
    }
    part.width = width;
    part.height = height;
    for (int y = top; y < top + height; ++y) {
        auto const row = picture.pixels.begin() + 4 * (static_cast<std::ptrdiff_t>(y) * picture.width + left);
        part.pixels.insert(part.pixels.end(), row, row + 4 * static_cast<std::ptrdiff_t>(width));
    }
    return part;
}

/// A cube, and the settings of a user who has none.
class WindowTest : public testing::Test {
protected:
    void SetUp() override { cube = folder.write("cube.obj", CUBE); }

    /// The settings of a user who has none.
    std::vector<std::string> environment() const {
        return {"XDG_CONFIG_HOME=" + folder.file("config"), "XDG_DATA_HOME=" + folder.file("data")};
    }

    std::unique_ptr<WindowDriver> open(std::vector<std::string> const& arguments) const {
        return std::make_unique<WindowDriver>(arguments, environment(), folder.file(""));
    }

    /// From now on they are those of a user who has hidden the panel.
    void hidePanel() const {
        std::filesystem::create_directories(folder.file("config/vl_viewport"));
        folder.write("config/vl_viewport/window.json", "{\"panel\": false}\n");
    }

    /// Waits until a window shows a picture, and fails where it never does.
    static void expectShown(WindowDriver const& window, Picture const& expected, char const* what = "") {
        EXPECT_TRUE(window.waitUntil([&](Picture const& seen) { return differences(seen, expected) == 0; }))
            << what << ": " << differences(window.look(), expected) << " pixels differ";
    }

    /// Saves the view with the keys for it, and gives its file, which is there no more.
    std::string savedView(WindowDriver& window) const {
        window.type({"Control_L", "Shift_L", "s"});
        std::string text;
        EXPECT_TRUE(window.waitUntil([&](Picture const&) {
            for (std::string const& name : folder.names()) {
                if (std::filesystem::path(name).extension() == ".vlview") {
                    text = folder.read(name);
                    std::filesystem::remove(folder.file(name));
                }
            }
            return !text.empty();
        }));
        return text;
    }

    Picture drawnOffScreen(std::vector<std::string> arguments) const {
        std::string const file = folder.file("expected.png");
        arguments.insert(arguments.end(), {"--out", file});
        Outcome const outcome = runProgram(VL_VIEWPORT_PROGRAM, arguments, environment());
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        Result<Picture> picture = Picture::loadPng(file);
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    TemporaryFolder folder;
    std::string cube;
};

}  // namespace vellum::viewport
