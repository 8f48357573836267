#include "viewport/files/particles/ParticleSeries.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;

TEST(ParticleSeries, filesThatDifferInOneNumberAreOrderedByIt) {
    std::optional<ParticleSeries> const series =
        ParticleSeries::of({"run2/dump.100.gz", "run2/dump.20.gz", "run2/dump.0.gz", "run2/dump.003.gz"});
    ASSERT_TRUE(series);
    EXPECT_THAT(series->files(),
                ElementsAre("run2/dump.0.gz", "run2/dump.003.gz", "run2/dump.20.gz", "run2/dump.100.gz"));
    EXPECT_THAT(ParticleSeries::of({"9", "100000000000000000000000000001", "100000000000000000000000000000"})
                    ->files(),
                ElementsAre("9", "100000000000000000000000000000", "100000000000000000000000000001"));
}

TEST(ParticleSeries, otherFilesAreNoSeries) {
    for (std::vector<std::string> const& paths : {std::vector<std::string>{},
                                                  {"dump.1"},
                                                  {"dump.1", "dump.1"},
                                                  {"dump.1", "dump.01"},
                                                  {"dump.1", "melt.2"},
                                                  {"dump.1.gz", "dump.2"},
                                                  {"run1/dump.1", "run2/dump.2"},
                                                  {"a1.2.xyz", "a1.3.xyz", "a2.2.xyz"},
                                                  {"water.xyz", "ice.xyz"},
                                                  {"dump", "dump.1"}}) {
        EXPECT_FALSE(isSeries(paths)) << (paths.empty() ? "none" : paths.back());
    }
}

TEST(ParticleSeries, onlyTheFileOfTheFrameIsOpened) {
    TemporaryFolder const folder;
    std::string const first = folder.write("a.9.xyz", "1\n\nH 1 0 0\n");
    std::string const second = folder.write("a.10.xyz", "1\n\nH 2 0 0\n1\n\nH 3 0 0\n");
    std::optional<ParticleSeries> const series = ParticleSeries::of({second, folder.file("a.11.xyz"), first});
    ASSERT_TRUE(series);
    Result<LoadedFrame> const result = series->load(0, nobody);
    ASSERT_EQ(faultOf(result), "");
    EXPECT_EQ(result.value().frame.positions[0].x, 1);
    EXPECT_EQ(result.value().frame.file, first);
    EXPECT_EQ(result.value().number, 0U);
    EXPECT_EQ(result.value().count, 3U);
    EXPECT_EQ(result.value().warning, "");
    EXPECT_EQ(series->load(1, nobody).value().frame.positions[0].x, 3);
    EXPECT_EQ(series->load(1, nobody).value().warning,
              "holds 2 frames, of which the series has the last one");
    EXPECT_EQ(series->load(std::nullopt, nobody).fault().file, folder.file("a.11.xyz"));
    EXPECT_EQ(faultOf(series->load(3, nobody)), "the series has no frame 3; its last one is 2, this file");
}
