#include "viewport/live/Change.h"

#include <gtest/gtest.h>

#include <functional>

using namespace vellum::viewport;

TEST(changeBetween, tellsHowMuchIsToBeDoneAgain) {
    struct Row {
        char const* name;
        std::function<void(Options&)> change;
        Change expected;
    } const ROWS[] = {
        {"nothing", [](Options&) {}, Change::NOTHING},
        {"zoom", [](Options& o) { o.pictures[0].camera.zoom = 2; }, Change::CAMERA},
        {"grid", [](Options& o) { o.pictures[0].explanations.hasGrid = false; }, Change::LOOK},
        {"opacity", [](Options& o) { o.mesh.opacity = 0.5F; }, Change::LOOK},
        {"select", [](Options& o) { o.particles.selection = "x > 0"; }, Change::SUBJECT},
        {"channel", [](Options& o) { o.particles.channel = "vx"; }, Change::SUBJECT},
        {"frame", [](Options& o) { o.particles.frame = 2; }, Change::FRAME},
        {"time", [](Options& o) { o.time = 2; }, Change::FRAME},
        {"series", [](Options& o) { o.isSeries = true; }, Change::FILES},
        {"files", [](Options& o) { o.files = {"b"}; }, Change::FILES},
    };
    for (Row const& row : ROWS) {
        SCOPED_TRACE(row.name);
        Options const before;
        Options after;
        row.change(after);
        EXPECT_EQ(changeBetween(before, after), row.expected);
        EXPECT_EQ(changeBetween(after, after), Change::NOTHING);
    }
}
