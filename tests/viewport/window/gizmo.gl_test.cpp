#include "tests/viewport/window/WindowTest.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <regex>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

/// Three numbers each: the move, the angles and the scales of an object.
using Placement = std::array<std::array<double, 3>, 3>;

constexpr Placement AT_REST{{{0, 0, 0}, {0, 0, 0}, {1, 1, 1}}};

/// A handle, where it is seen, and which numbers of the placement it changes, a bit for each.
struct Handle {
    char const* name;
    WindowDriver::Point at;
    WindowDriver::Point to;
    unsigned int changes;
};

class Window_gizmo_gl_test : public WindowTest {
protected:
    /// Saves the view, and takes out of its file what it says of the cube.
    Placement placed(WindowDriver& window) const {
        std::string const text = savedView(window);
        std::smatch found;
        Placement placement = AT_REST;
        std::string const three = "([-+.0-9e]+),([-+.0-9e]+),([-+.0-9e]+)";
        if (std::regex_search(text, found,
                              std::regex("\"1:" + three + "(:" + three + ")?(:" + three + ")?\""))) {
            std::size_t const FIRST[3] = {1, 5, 9};
            for (std::size_t part = 0; part < 3; ++part) {
                for (std::size_t axis = 0; axis < 3 && found[FIRST[part]].matched; ++axis) {
                    placement[part][axis] = std::stod(found[FIRST[part] + axis].str());
                }
            }
        }
        return placement;
    }

    /// Drags each handle of a gizmo, sees what changes, and takes it back.
    void dragEach(std::string const& gizmo, std::vector<Handle> const& handles) {
        std::vector<std::string> const words{cube, "--size", "320x240", "--gizmo", gizmo};
        auto const window = open(words);
        ASSERT_TRUE(window->isOpen());
        window->type({"Tab"});
        Picture const before = window->settled();
        for (Handle const& handle : handles) {
            SCOPED_TRACE(gizmo + " " + handle.name);
            window->move(handle.at);
            EXPECT_TRUE(window->waitUntil([&](Picture const& seen) { return differences(seen, before) > 4; }))
                << "highlighted";
            window->drag(1, handle.at, handle.to);
            window->move({5, 5});
            EXPECT_TRUE(window->waitUntil([&](Picture const& seen) {
                return differences(seen, before) > 200;
            })) << "dragged";
            Placement const placement = placed(*window);
            for (unsigned int i = 0; i < 9; ++i) {
                double const change = std::abs(placement[i / 3][i % 3] - AT_REST[i / 3][i % 3]);
                if ((handle.changes >> i & 1U) != 0) {
                    EXPECT_GT(change, 0.02) << "number " << i;
                } else {
                    EXPECT_LT(change, 1e-6) << "number " << i;
                }
            }
            window->type({"Control_L", "z"});
            EXPECT_TRUE(window->waitUntil([&](Picture const& seen) {
                return differences(seen, before) == 0;
            })) << "taken back";
        }
    }
};

constexpr unsigned int bits(std::initializer_list<unsigned int> numbers) {
    unsigned int all = 0;
    for (unsigned int const number : numbers) {
        all |= 1U << number;
    }
    return all;
}

}  // namespace

TEST_F(Window_gizmo_gl_test, eachHandleMovesAlongItsAxisOrInItsPlane) {
    dragEach("move", {{"X", {183, 109}, {215, 119}, bits({0})},
                      {"Y", {163, 83}, {163, 50}, bits({1})},
                      {"Z", {143, 115}, {110, 135}, bits({2})},
                      {"XY", {173, 96}, {200, 75}, bits({0, 1})},
                      {"YZ", {155, 98}, {125, 80}, bits({1, 2})},
                      {"ZX", {166, 112}, {175, 145}, bits({0, 2})}});
}

TEST_F(Window_gizmo_gl_test, eachRingTurnsAboutItsAxis) {
    dragEach("rotate", {{"X", {139, 98}, {142, 130}, bits({3})},
                        {"Z", {196, 103}, {185, 130}, bits({5})},
                        {"Y", {124, 106}, {145, 117}, bits({4})}});
}

TEST_F(Window_gizmo_gl_test, eachHandleScalesAlongItsAxisAndTheMiddleAlongAll) {
    dragEach("scale", {{"X", {194, 114}, {215, 121}, bits({6})},
                       {"Y", {163, 70}, {163, 50}, bits({7})},
                       {"Z", {140, 116}, {120, 128}, bits({8})},
                       {"center", {163, 104}, {195, 90}, bits({6, 7, 8})}});
}

TEST_F(Window_gizmo_gl_test, withControlTheSizesAreRound) {
    auto const window = open({cube, "--size", "320x240", "--gizmo", "rotate"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    window->settled();
    window->hold("Control_L");
    window->drag(1, {124, 106}, {150, 118});
    window->letGo("Control_L");
    double const angle = placed(*window)[1][1];
    EXPECT_GT(std::abs(angle), 1);
    EXPECT_NEAR(std::remainder(angle, 15), 0, 1e-6) << angle;
}

TEST_F(Window_gizmo_gl_test, aSavedViewShowsTheSameElsewhereAndThePanelStaysHidden) {
    auto const window = open({cube, "--size", "320x240", "--gizmo", "move"});
    ASSERT_TRUE(window->isOpen());
    window->type({"Tab"});
    window->settled();
    window->drag(1, {183, 109}, {215, 119});
    window->type({"Escape"});
    window->turnWheel(1, {160, 120});
    window->move({5, 5});
    Picture const left = window->settled();
    window->type({"Control_L", "Shift_L", "s"});
    EXPECT_EQ(differences(window->settled(), left), 0U);
    EXPECT_EQ(window->close(), 0);
    EXPECT_EQ(differences(drawnOffScreen({folder.file("cube.vlview")}), left), 0U);
    auto const again = open({folder.file("cube.vlview")});
    ASSERT_TRUE(again->isOpen());
    again->move({5, 5});
    EXPECT_TRUE(again->waitUntil([&](Picture const& seen) { return differences(seen, left) == 0; }));
}
