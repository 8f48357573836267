#include "viewport/content/frame_at_time.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum::viewport;

namespace {

std::string dumpAt(int step, double time) {
    return "ITEM: TIME\n" + std::to_string(time) + "\nITEM: TIMESTEP\n" + std::to_string(step) +
           "\nITEM: NUMBER OF ATOMS\n1\nITEM: BOX BOUNDS pp pp pp\n0 1\n0 1\n0 1\n"
           "ITEM: ATOMS x y z\n0 0 0\n";
}

}  // namespace

TEST(frame_at_time, theNearestTimeIsFoundAmongThoseThatAreKnown) {
    EXPECT_EQ(nearestTime({0.0, 1.0, 2.0}, 1.4), 1U);
    EXPECT_EQ(nearestTime({0.0, 1.0, 2.0}, 0.5), 0U) << "of equally near ones the first";
    EXPECT_EQ(nearestTime({5.0, std::nullopt, -3.0}, -100), 2U);
    EXPECT_EQ(nearestTime({std::nan(""), 7.0}, 0), 1U);
    EXPECT_EQ(nearestTime({std::nullopt}, 0), std::nullopt);
}

TEST(frame_at_time, aFileGivesTheFrameOfTheNearestTime) {
    TemporaryFolder const folder;
    ParticleFile const file(folder.write("a.dump", dumpAt(0, 0) + dumpAt(10, 0.5) + dumpAt(20, 1)));
    EXPECT_EQ(loadAtTime(file, 0.6, {}).value().frame.timestep, 10);
    EXPECT_EQ(loadAtTime(file, 50, {}).value().frame.timestep, 20);
    EXPECT_TRUE(hasTimes(loadAtTime(file, 0, {}).value()));
}

TEST(frame_at_time, withoutTimesTheLastFrameIsShown) {
    TemporaryFolder const folder;
    ParticleFile const file(folder.write("a.xyz", "1\n\n0 0 0\n1\n\n1 1 1\n"));
    Result<LoadedFrame> const loaded = loadAtTime(file, 0, {});
    EXPECT_EQ(loaded.value().number, 1U);
    EXPECT_FALSE(hasTimes(loaded.value()));
}

TEST(frame_at_time, aSeriesGivesTheFileOfTheNearestTime) {
    TemporaryFolder const folder;
    std::vector<std::string> files;
    for (int const number : {1, 2, 10}) {
        files.push_back(folder.write("a." + std::to_string(number) + ".dump", dumpAt(number, number / 2.0)));
    }
    ParticleSeries const series = ParticleSeries::of(files).value();
    EXPECT_EQ(loadAtTime(series, 0.9, {}, std::nullopt).value().frame.timestep, 2);
    EXPECT_EQ(loadAtTime(series, 0.9, {}, std::nullopt).value().number, 1U);
    EXPECT_EQ(loadAtTime(series, 99, {}, std::nullopt).value().frame.timestep, 10);
    EXPECT_EQ(loadAtTime(series, 0, {}, ParticleFormat::CSV).isOk(), false);
}
