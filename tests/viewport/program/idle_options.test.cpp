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

constexpr ShownKinds MESHES{true, false, false, false, false, ParticleColoring::NOTHING};
constexpr ShownKinds PARTICLES{false, true, false, false, false, ParticleColoring::VALUES};

ShownKinds particlesColoredBy(ParticleColoring coloring) {
    return {false, true, false, false, false, coloring};
}

}  // namespace

TEST(idleOptions, optionsOfWhatIsNotThereHaveNoEffect) {
    Options options;
    options.given = {"--percent", "--edges", "--size", "--clip"};
    EXPECT_THAT(linesOf(options, MESHES), ElementsAre("--percent has no effect: there are no particles"));
    EXPECT_THAT(linesOf(options, PARTICLES), ElementsAre("--edges has no effect: there are no meshes"));
    EXPECT_THAT(linesOf(options, {true, true, false, false, false, ParticleColoring::VALUES}), IsEmpty());
}

TEST(idleOptions, aFrameIsOfParticlesOrOfASeries) {
    Options options;
    options.given = {"--frame"};
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--frame has no effect: there are no particles, and no series of meshes"));
    options.isSeries = true;
    EXPECT_THAT(linesOf(options, MESHES), IsEmpty());
}

TEST(idleOptions, aRangeNeedsValues) {
    Options options;
    options.given = {"--range", "--percent"};
    EXPECT_THAT(linesOf(options, particlesColoredBy(ParticleColoring::NOTHING)),
                ElementsAre("--range has no effect: there are no values to be shown"));
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--percent has no effect: there are no particles",
                            "--range has no effect: no values of meshes are shown"));
    EXPECT_THAT(linesOf(options, {true, false, true}),
                ElementsAre("--percent has no effect: there are no particles"));
}

TEST(idleOptions, ofAChannelThatIsHiddenANoteTells) {
    Options options;
    options.given = {"--channel", "--log"};
    ShownKinds hidden = MESHES;
    EXPECT_EQ(linesOf(options, hidden).size(), 2U);
    hidden.areMeshValuesHidden = true;
    EXPECT_THAT(linesOf(options, hidden), ElementsAre("--log has no effect: no values of meshes are shown"));
}

TEST(idleOptions, onlyAJpegHasAQuality) {
    Options options;
    options.given = {"--quality"};
    options.pictures[0].out = "a.png";
    EXPECT_THAT(linesOf(options, MESHES), ElementsAre("--quality has no effect: only JPEG has a quality"));
    options.pictures.emplace_back().out = "b.jpg";
    EXPECT_THAT(linesOf(options, MESHES), IsEmpty());
}

TEST(idleOptions, parametersOfTheSeaThatAreForOtherSeasHaveNoEffect) {
    Options options;
    options.effect = EffectSpec{OceanEffect{}, std::nullopt};
    options.given = {"--effect-param level", "--effect-param tilt", "--effect-param wind"};
    EXPECT_THAT(linesOf(options, {}),
                ElementsAre("--effect-param level has no effect: nothing stands in the sea"));
    options.files = {"a.obj"};
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--effect-param tilt has no effect: the camera is that of the files"));
    options.effect->onlyModel = 0;
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--effect-param level has no effect: the water is a mesh",
                            "--effect-param tilt has no effect: the water is a mesh"));
}

TEST(idleOptions, theSeaHasACameraOfItsOwn) {
    Options options;
    options.given = {"--view", "--light"};
    options.effect = EffectSpec{OceanEffect{}, std::nullopt};
    EXPECT_EQ(linesOf(options, {}).size(), 2U);
    options.files = {"a.obj"};
    options.given = {"--view", "--light", "--no-axes", "--background", "--no-grid"};
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--background has no effect: the sea has a sky of its own, and covers the ground",
                            "--no-grid has no effect: the sea has a sky of its own, and covers the ground"));
    options.effect->values = GlassEffect{};
    EXPECT_THAT(linesOf(options, MESHES),
                ElementsAre("--light has no effect: the effect has lights of its own"));
}

TEST(idleOptions, colorsOfValuesNeedValues) {
    Options options;
    options.given = {"--colors"};
    EXPECT_THAT(linesOf(options, particlesColoredBy(ParticleColoring::OWN)),
                ElementsAre("--colors has no effect: the particles have colors of their own"));
    EXPECT_THAT(linesOf(options, particlesColoredBy(ParticleColoring::KINDS)),
                ElementsAre("--colors has no effect: the colors show kinds, not values"));
    EXPECT_THAT(linesOf(options, PARTICLES), IsEmpty());
}

TEST(idleOptions, aListOfKindsCanBeLeftOutAsABarCan) {
    Options options;
    options.given = {"--no-bar"};
    EXPECT_THAT(linesOf(options, particlesColoredBy(ParticleColoring::KINDS)), IsEmpty());
    EXPECT_THAT(linesOf(options, particlesColoredBy(ParticleColoring::OWN)),
                ElementsAre("--no-bar has no effect: colors stand for nothing that could be listed"));
}

TEST(idleOptions, aTimeNeedsAnAnimationOrTimes) {
    Options options;
    options.given = {"--time"};
    EXPECT_THAT(linesOf(options, PARTICLES),
                ElementsAre("--time has no effect: the files hold neither an animation nor times"));
    ShownKinds animated = MESHES;
    animated.hasAnimations = true;
    EXPECT_THAT(linesOf(options, animated), IsEmpty());
    ShownKinds timed = PARTICLES;
    timed.hasTimes = true;
    EXPECT_THAT(linesOf(options, timed), IsEmpty());
}

TEST(idleOptions, aFilmNeedsWhatMoves) {
    Options options;
    options.film.frames = FrameRange{};
    options.given = {"--frames", "--fps"};
    EXPECT_THAT(linesOf(options, MESHES), ElementsAre("--frames has no effect: no file holds several frames",
                                                      "--fps has no effect: no mesh is animated"));
    ShownKinds moving = MESHES;
    moving.hasMoving = true;
    moving.hasAnimations = true;
    EXPECT_THAT(linesOf(options, moving), IsEmpty());
    options.film.frames.reset();
    options.given = {"--fps"};
    EXPECT_THAT(linesOf(options, moving),
                ElementsAre("--fps has no effect: only --frames shows an animation"));
}
