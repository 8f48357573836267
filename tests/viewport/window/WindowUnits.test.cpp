#include "viewport/window/WindowUnits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>

using namespace vellum::viewport;

namespace {

constexpr double SCALES[] = {1, 1.25, 1.5, 2};

/// Of a window that measures the same on the screen at each scale: units are pixels, as on X11.
WindowUnits inPixels(double scale) {
    int const width = static_cast<int>(800 * scale);
    int const height = static_cast<int>(600 * scale);
    return WindowUnits::of(width, height, width, height, scale);
}

/// The same where units are points, as on Wayland.
WindowUnits inPoints(double scale) {
    return WindowUnits::of(800, 600, static_cast<int>(800 * scale), static_cast<int>(600 * scale), scale);
}

}  // namespace

TEST(WindowUnits_test, aCursorInTheMiddleIsAtTheMiddlePixelAtEachScale) {
    for (double const scale : SCALES) {
        SCOPED_TRACE(scale);
        int const x = static_cast<int>(400 * scale);
        int const y = static_cast<int>(300 * scale);
        Pixel const ofPixels = inPixels(scale).pixelAt(x, y);
        EXPECT_EQ(ofPixels.x, x);
        EXPECT_EQ(ofPixels.y, y);
        Pixel const ofPoints = inPoints(scale).pixelAt(400, 300);
        EXPECT_EQ(ofPoints.x, x);
        EXPECT_EQ(ofPoints.y, y);
    }
}

TEST(WindowUnits_test, theLastUnitIsInTheLastPixelsAndNoneIsBeyondThem) {
    for (double const scale : SCALES) {
        SCOPED_TRACE(scale);
        WindowUnits const units = inPoints(scale);
        Pixel const last = units.pixelAt(std::nextafter(800.0, 0.0), std::nextafter(600.0, 0.0));
        EXPECT_EQ(last.x, units.framebuffer.width - 1);
        EXPECT_EQ(last.y, units.framebuffer.height - 1);
        Pixel const outside = units.pixelAt(-0.25, -0.25);
        EXPECT_EQ(outside.x, -1);
        EXPECT_EQ(outside.y, -1);
    }
}

TEST(WindowUnits_test, lengthsComeBackFromPixels) {
    for (double const scale : SCALES) {
        SCOPED_TRACE(scale);
        for (WindowUnits const& units : {inPixels(scale), inPoints(scale)}) {
            for (double const length : {0.0, 1.0, 33.5, 799.0}) {
                EXPECT_NEAR(units.toUnits(units.toPixels(length)), length, 1e-9);
            }
        }
    }
}

TEST(WindowUnits_test, whatIsMeasuredInPointsCoversTheSamePixelsOnBothKindsOfScreens) {
    for (double const scale : SCALES) {
        SCOPED_TRACE(scale);
        for (WindowUnits const& units : {inPixels(scale), inPoints(scale)}) {
            EXPECT_NEAR(units.toPixels(units.pointsToUnits(320)), 320 * scale, 1e-9);
        }
        EXPECT_NEAR(inPixels(scale).pointsToUnits(320), 320 * scale, 1e-9);
        EXPECT_NEAR(inPoints(scale).pointsToUnits(320), 320, 1e-9);
    }
}

TEST(WindowUnits_test, aWindowWithoutASizeHasOnePixelAndPlainUnits) {
    WindowUnits const minimized = WindowUnits::of(0, 0, 0, 0, 1.5);
    EXPECT_EQ(minimized.framebuffer, (PictureSize{1, 1}));
    EXPECT_EQ(minimized.pixelsPerUnit, 1);
    EXPECT_EQ(minimized.pixelsPerPoint, 1.5);
    EXPECT_EQ(WindowUnits::of(800, 0, 1600, 0, 2).pixelsPerUnit, 1);
}

TEST(WindowUnits_test, scalesThatNoScreenHasAreNotTaken) {
    double const infinity = std::numeric_limits<double>::infinity();
    for (double const scale : {0.0, -2.0, infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(WindowUnits::of(8, 6, 8, 6, scale).pixelsPerPoint, 1) << scale;
    }
    EXPECT_EQ(WindowUnits::of(8, 6, 8, 6, 0.01).pixelsPerPoint, 0.5);
    EXPECT_EQ(WindowUnits::of(8, 6, 8, 6, 100).pixelsPerPoint, 8);
}

TEST(WindowUnits_test, theyAreOthersWhenTheScreenOrTheSizeIs) {
    EXPECT_EQ(inPixels(1.5), inPixels(1.5));
    EXPECT_NE(inPixels(1.5), inPixels(2));
    EXPECT_NE(inPixels(1.5), inPoints(1.5));
    EXPECT_NE(WindowUnits::of(8, 6, 8, 6, 1), WindowUnits::of(8, 6, 8, 6, 1.25));
    EXPECT_NE(WindowUnits::of(8, 6, 8, 6, 1), WindowUnits::of(8, 7, 8, 7, 1));
}
