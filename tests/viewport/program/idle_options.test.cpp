#include "viewport/program/idle_options.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> linesOf(Options const& options, ShownKinds const& shown) {
    std::vector<std::string> lines;
    for (Fault const& fault : idleOptions(options, shown)) {
        lines.push_back(fault.line());
    }
    return lines;
}

constexpr ShownKinds MESHES{true, false, false};
constexpr ShownKinds PARTICLES{false, true, true};

}  // namespace

TEST(idleOptions, optionsOfWhatIsNotThereHaveNoEffect) {
    Options options;
    options.given = {"--percent", "--edges", "--size", "--clip"};
    EXPECT_THAT(linesOf(options, MESHES), ElementsAre("--percent has no effect: there are no particles"));
    EXPECT_THAT(linesOf(options, PARTICLES), ElementsAre("--edges has no effect: there are no meshes"));
    EXPECT_THAT(linesOf(options, {true, true, true}), IsEmpty());
}

TEST(idleOptions, aRangeNeedsValues) {
    Options options;
    options.given = {"--range", "--percent"};
    EXPECT_THAT(linesOf(options, {false, true, false}),
                ElementsAre("--range has no effect: there are no values to be shown"));
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--percent has no effect: there are no particles",
                            "--range has no effect: no values of meshes are shown"));
    EXPECT_THAT(linesOf(options, {true, false, true}),
                ElementsAre("--percent has no effect: there are no particles"));
}

TEST(idleOptions, onlyAJpegHasAQuality) {
    Options options;
    options.given = {"--quality"};
    options.pictures[0].out = "a.png";
    EXPECT_THAT(linesOf(options, MESHES), ElementsAre("--quality has no effect: only JPEG has a quality"));
    options.pictures.emplace_back().out = "b.jpg";
    EXPECT_THAT(linesOf(options, MESHES), IsEmpty());
}

TEST(idleOptions, theSeaHasACameraOfItsOwn) {
    Options options;
    options.given = {"--view", "--light"};
    options.effect = EffectSpec{OceanEffect{}, std::nullopt};
    EXPECT_EQ(linesOf(options, {false, false, false}).size(), 2U);
    options.files = {"a.obj"};
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--light has no effect: the effect has lights of its own"));
}
