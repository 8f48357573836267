#include "toolkit/Layer.h"
#include "viewport/drawing/TiledPicture.h"
#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorLegend.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/viewport/scene/particle_frames.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

using namespace vellum;
using namespace vellum::viewport;

namespace {

/// Fits the context of the fixture.
constexpr Tiling tiles{2, 112, 112, 8};
constexpr unsigned int someMemory = 256;  // megabytes

std::unique_ptr<toolkit::Layer> layerWith(unsigned int megabytes) {
    auto layer = std::make_unique<toolkit::Layer>();
    layer->assumeFreeGpuMemory(megabytes);
    return layer;
}
constexpr int corner = 40;  // pixels; holds the axes

using Rgb = std::array<int, 3>;

Rgb at(Picture const& picture, int const& x, int const& y) {
    unsigned char const* p = picture.pixels.data() + 4 * (y * picture.width + x);
    return {p[0], p[1], p[2]};
}

/// The first and the last column or row in which some pixel is of a kind.
struct Extent {
    int first = 1 << 30;
    int last = -1;
    int size() const { return last - first + 1; }
    void take(int const& place) {
        first = std::min(first, place);
        last = std::max(last, place);
    }
};

struct Outline {
    Extent columns;
    Extent rows;
};

class ParticleViewer_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = layerWith(someMemory);
        camera.view = toolkit::ViewKind::FRONT;
        options.colors = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
    }

    void add(Vector3<float> const& position) {
        data.file = "folder/some.csv";
        if (!data.box) {
            // A box, however small, keeps the lines of the ground out of the picture.
            data.box = ParticleBox{convert<double>(position), {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
        }
        data.positions.push_back(convert<double>(position));
    }

    void add(Vector3<float> const& position, float const& value) {
        add(position);
        data.channels.resize(1);
        data.channels[0].name = "t";
        data.channels[0].values.push_back(value);
    }

    /// A square of `side` times `side` particles from 0 to 1 in the XY plane; values go from 0 at the left
    /// to 1.
    void addSquare(int const& side) {
        for (int i = 0; i < side * side; ++i) {
            float const x = static_cast<float>(i % side) / static_cast<float>(side - 1);
            add({x, static_cast<float>(i / side) / static_cast<float>(side - 1), 0}, x);
        }
        data.box = ParticleBox{{-0.3, -0.3, -0.8}, {{1.6, 0, 0}, {0, 1.6, 0}, {0, 0, 1.6}}};
    }

    void prepare() {
        Result<ParticleLook> result = lookOf({data}, options);
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        look = result.value();
        scene.reset(new Scene({}, nullptr, {data}, look, Scene::Imports::DROPPED, UpAxis::Y));
    }

    Picture draw() {
        prepare();
        Viewer viewer(*layer, *scene, style());
        Result<Picture> picture = drawTiles(viewer, tiles);
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    /// Whether a pixel may show particles: neither the axes in the corner nor the bar.
    bool isInside(int const& x, int const& y, int const& right) const {
        return x < right && (x >= corner || y < size.height - corner);
    }

    /// The pixels in the colors of particles; background and boxes are gray.
    int countParticles(Picture const& picture) const {
        int count = 0;
        int const right = picture.width - barWidth();
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                Rgb const c = at(picture, x, y);
                int const most = std::max({c[0], c[1], c[2]});
                int const least = std::min({c[0], c[1], c[2]});
                count += isInside(x, y, right) && most > 100 && most - least > 50 ? 1 : 0;
            }
        }
        return count;
    }

    Outline outlineOf(Picture const& picture, std::function<bool(Rgb const&)> const& isMeant) const {
        Outline outline;
        int const right = picture.width - barWidth();
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                if (isInside(x, y, right) && isMeant(at(picture, x, y))) {
                    outline.columns.take(x);
                    outline.rows.take(y);
                }
            }
        }
        return outline;
    }

    int barWidth() const { return look.scale ? ColorBar(*look.scale, look.colors, size).reservedWidth() : 0; }

    ViewStyle style() const { return {{}, ParticleStyle::of(look, options), camera, Gizmo::NONE}; }

    Result<Picture> drawTiles(Viewer& viewer, Tiling const& tiling) {
        return TiledPicture(size, tiling).draw(viewer, *layer, context());
    }

    std::string pick(Viewer& viewer, viewport::Pixel const& pixel) const {
        std::optional<Picked> const picked = viewer.pick(size, pixel);
        return picked ? std::to_string(picked->name) + " " + picked->owner : "nothing";
    }

    ParticleFrame data;
    PictureSize size{336, 224};
    CameraSpec camera;
    ParticleOptions options;
    ParticleLook look;
    std::unique_ptr<Scene> scene;
    std::unique_ptr<toolkit::Layer> layer;
};

void expectNear(Rgb const& color, Rgb const& wanted, int const& tolerance, std::string const& what) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(color[i], wanted[i], tolerance) << what << ", channel " << i;
    }
}

int largestDifference(Picture const& a, Picture const& b) {
    int largest = a.pixels.size() == b.pixels.size() ? 0 : 1000;
    for (std::size_t i = 0; i < a.pixels.size() && largest < 1000; ++i) {
        largest = std::max(largest, std::abs(a.pixels[i] - b.pixels[i]));
    }
    return largest;
}

/// How often a buffer was filled. What the end of a renderer maps is never unmapped.
std::size_t fillings(gl_spy::Recording const& recording) {
    return recording.count("glUnmapBuffer") + recording.count("glUnmapBufferARB");
}

bool isGreen(Rgb const& color) {
    return color[1] > 100 && color[1] > 2 * color[0] && color[1] > 2 * color[2];
}

bool isRed(Rgb const& color) {
    return color[0] > 100 && color[0] > 2 * color[1] && color[0] > 2 * color[2];
}

}  // namespace

TEST_F(ParticleViewer_gl_test, everyModeAndViewDrawsWithoutAnErrorOfOpenGL) {
    addSquare(6);
    particle_frames::addVelocities(data, {data.positions.size(), {0.1, 0.2, 0.3}});
    for (ParticleMode const mode :
         {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS, ParticleMode::SOLID_ARROWS}) {
        for (unsigned int view = 0; view < 7; ++view) {
            layer = layerWith(view % 2 == 0 ? 0 : someMemory);
            options.mode = mode;
            camera.view = static_cast<toolkit::ViewKind>(view);
            Picture const picture = draw();
            EXPECT_GT(countParticles(picture), 20) << static_cast<int>(mode) << " " << view;
        }
    }
    EXPECT_EQ(layer->currentDepthTest().mode, static_cast<unsigned int>(DEPTH_TEST_OFF))
        << "a push without a pop";
    EXPECT_EQ(layer->currentLineWidth(), 1.0F) << "a push without a pop";
}

TEST_F(ParticleViewer_gl_test, noParticlesAndNoValuesAreNoTrouble) {
    for (ParticleMode const& mode : {ParticleMode::POINTS, ParticleMode::SPHERES}) {
        options.mode = mode;
        data = {};
        data.box = ParticleBox{};
        EXPECT_EQ(countParticles(draw()), 0);
        add({0, 0, 0});
        EXPECT_GT(countParticles(draw()), 4);
    }
}

// == Spheres ==

TEST_F(ParticleViewer_gl_test, aSphereIsRoundInWideAndHighPictures) {
    add({5, 5, 5});
    for (toolkit::ViewKind const& view : {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::FRONT,
                                          toolkit::ViewKind::TOP, toolkit::ViewKind::LEFT}) {
        for (auto const& [width, height] : {std::pair{336, 224}, {224, 336}}) {
            size.width = width;
            size.height = height;
            camera.view = view;
            Picture const picture = draw();
            Outline const outline = outlineOf(picture, isGreen);
            // The sphere's box is what is framed: in 86 % of the shorter side, and nearer than that in
            // perspective.
            EXPECT_NEAR(outline.columns.size(), outline.rows.size(), 2)
                << width << " " << static_cast<int>(view);
            EXPECT_LT(outline.rows.size(), 224 * 0.87);
            if (view != toolkit::ViewKind::PERSPECTIVE) {
                EXPECT_GT(outline.rows.size(), 224 * 0.84);
            }
        }
    }
}

TEST_F(ParticleViewer_gl_test, aSphereHasTheColorOfItsValueInItsShade) {
    add({0, 0, 0});
    Picture const picture = draw();
    // Half Lambert with light from (1, 0.5, 0.5) on a surface that looks at the viewer.
    double const shade = 0.5 + 0.5 * 0.5 / std::sqrt(1.5);
    expectNear(at(picture, 168, 112), {0, static_cast<int>(std::lround(255 * shade)), 0}, 3, "the middle");
}

TEST_F(ParticleViewer_gl_test, spheresCutEachOtherWhereSpheresDo) {
    // Seen along z, two overlapping spheres side by side meet in a straight line half way between.
    add({-0.3F, 0, 0}, 0);
    add({0.3F, 0, 0}, 1);
    options.size = 1;
    for (toolkit::ViewKind const& view : {toolkit::ViewKind::FRONT, toolkit::ViewKind::BACK}) {
        camera.view = view;
        bool const isRedLeft = view == toolkit::ViewKind::FRONT;
        Picture const picture = draw();
        Outline const red = outlineOf(picture, isRed);
        Outline const green = outlineOf(picture, isGreen);
        Extent const& left = isRedLeft ? red.columns : green.columns;
        Extent const& right = isRedLeft ? green.columns : red.columns;
        EXPECT_NEAR(left.last, right.first, 3);
        // Each is cut at 0.8 of its diameter; above and below the line both are there.
        EXPECT_NEAR(left.size(), 0.8 * red.rows.size(), 4);
        EXPECT_NEAR(right.size(), 0.8 * red.rows.size(), 4);
    }
}

TEST_F(ParticleViewer_gl_test, theNearerSphereCoversTheOther) {
    add({0, 0, -1}, 0);
    add({0, 0, 1}, 1);
    options.size = 1;
    for (toolkit::ViewKind const& view : {toolkit::ViewKind::FRONT, toolkit::ViewKind::BACK}) {
        camera.view = view;
        Picture const picture = draw();
        int const middle = (size.width - barWidth()) / 2;
        EXPECT_TRUE(view == toolkit::ViewKind::FRONT ? isGreen(at(picture, middle, 112))
                                                     : isRed(at(picture, middle, 112)));
    }
}

TEST_F(ParticleViewer_gl_test, theSizeOfSpheresIsInUnitsOfTheFile) {
    add({0, 0, 0}, 1);
    add({10, 0, 0}, 1);
    add({5, 5, 0}, 0);
    options.size = 2;
    Picture const picture = draw();
    Outline const green = outlineOf(picture, isGreen);
    Outline const red = outlineOf(picture, isRed);
    EXPECT_NEAR(red.rows.size(), green.columns.size() * 2.0 / 12.0, 2);
}

// == Points ==

TEST_F(ParticleViewer_gl_test, thePixelsOfPointsAreThoseAskedFor) {
    addSquare(3);
    options.mode = ParticleMode::POINTS;
    for (double const& size : {4.0, 12.0}) {
        options.size = size;
        prepare();
        int const count = countParticles(draw());
        // Drivers draw discs or squares.
        EXPECT_GT(count, 9 * 0.7 * size * size);
        EXPECT_LT(count, 9 * 1.1 * size * size);
    }
}

TEST_F(ParticleViewer_gl_test, aPercentageOfTheParticlesIsDrawn) {
    addSquare(16);
    options.mode = ParticleMode::POINTS;
    options.size = 4;
    for (unsigned int const megabytes : {0U, someMemory}) {
        layer = layerWith(megabytes);
        options.percent = 100;
        int const all = countParticles(draw());
        for (float const percent : {0.0F, 10.0F, 50.0F, 75.0F}) {
            options.percent = percent;
            int const some = countParticles(draw());
            EXPECT_NEAR(some, all * percent / 100, 0.03 * all) << percent << " " << megabytes;
        }
    }
}

// == Arrows ==

TEST_F(ParticleViewer_gl_test, arrowsPointAlongTheVelocitiesAndAreAsLongAsAskedFor) {
    add({0, 0, 0});
    add({0, 4, 0});
    particle_frames::addVelocities(data, {{2, 0, 0}, {-1, 0, 0}});
    data.box = ParticleBox{{-5, -1, 0}, {{10, 0, 0}, {0, 6, 0}, {0, 0, 1}}};
    options.mode = ParticleMode::ARROWS;
    options.size = 2;
    options.range = ValueRange{1, 3};
    options.colors = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
    Picture const picture = draw();
    double const pixelsPerUnit = 0.86 * (size.width - barWidth()) / 10;
    double const middle = (size.width - barWidth()) / 2.0;
    // The slower one is red and goes to the left, 2 units long. The faster one is half way to green.
    Outline const red = outlineOf(picture, [](Rgb const& c) { return c[0] > 110 && c[1] < 45 && c[2] < 80; });
    EXPECT_NEAR(red.columns.last, middle, 3);
    EXPECT_NEAR(red.columns.first, middle - 2 * pixelsPerUnit, 3);
    Outline const mixed = outlineOf(picture, [](Rgb const& c) {
        return c[0] > 60 && c[1] > 60 && c[2] < 50 && std::abs(c[0] - c[1]) < 30;
    });
    EXPECT_NEAR(mixed.columns.first, middle, 3);
    EXPECT_NEAR(mixed.columns.last, middle + 4 * pixelsPerUnit, 3);
    EXPECT_GT(mixed.rows.first, red.rows.last);
}

// == Colors ==

TEST_F(ParticleViewer_gl_test, theColorBarShowsTheColorsThatParticlesHave) {
    options.mode = ParticleMode::POINTS;
    options.size = 14;
    options.range = ValueRange{0, 8};
    std::vector<float> const values{-2, 0, 2, 4, 6, 8, 9};
    for (std::size_t i = 0; i < values.size(); ++i) {
        add({static_cast<float>(i), 0, 0}, values[i]);
    }
    RampColors const& ramp = options.colors = {{0.2F, 0.4F, 0.8F, 1}, {1, 0.6F, 0.2F, 1}, {1, 1, 1, 1}};
    Picture const picture = draw();
    ColorBar const bar(*look.scale, look.colors, size);
    ASSERT_TRUE(bar.isShown());
    auto const channel = [](float const& c) {
        return static_cast<int>(std::lround(255 * std::clamp(c, 0.0F, 1.0F)));
    };
    auto const mixed = [&](float const& t) {
        return Rgb{channel(ramp.low.r + t * (ramp.high.r - ramp.low.r)),
                   channel(ramp.low.g + t * (ramp.high.g - ramp.low.g)),
                   channel(ramp.low.b + t * (ramp.high.b - ramp.low.b))};
    };
    double const frame = size.width - bar.reservedWidth();
    for (std::size_t i = 0; i < values.size(); ++i) {
        int const x = static_cast<int>(frame / 2 + (static_cast<double>(i) / 6 - 0.5) * 0.86 * frame);
        Rgb const wanted = values[i] > 8 ? Rgb{255, 255, 255} : mixed(values[i] / 8);
        expectNear(at(picture, x, size.height / 2), wanted, 2, "particle " + std::to_string(values[i]));
    }
    // Each row of the bar, in its middle column.
    PixelArea const area = bar.area();
    for (int row = 0; row < area.height; ++row) {
        auto const t = static_cast<float>((area.height - row - 0.5) / area.height);
        expectNear(at(picture, area.left + area.width / 2, area.top + row), mixed(t), 2,
                   "bar " + std::to_string(t));
    }
    // A frame is around it, the background beyond.
    EXPECT_GT(at(picture, area.left - 1, 112)[0], 90);
    EXPECT_LT(at(picture, area.left - 3, 112)[0], 90);
}

TEST_F(ParticleViewer_gl_test, particlesOfKindsHaveTheColorsOfTheLegend) {
    options.mode = ParticleMode::POINTS;
    options.size = 14;
    for (int i = 0; i < 3; ++i) {
        add({static_cast<float>(i), 0, 0});
    }
    data.labels.push_back({"element", {"O", "N", "Fe"}, {0, 1, 2}, true});
    Picture const picture = draw();
    ColorLegend const legend(*look.legend, size);
    ASSERT_TRUE(legend.isShown());
    double const frame = size.width - legend.reservedWidth();
    for (std::size_t i = 0; i < 3; ++i) {
        Color4<float> const color = findElement(data.labels[0].words[i])->color();
        auto const part = [](float c) { return static_cast<int>(std::lround(255 * c)); };
        Rgb const wanted{part(color.r), part(color.g), part(color.b)};
        int const x = static_cast<int>(frame / 2 + (static_cast<double>(i) / 2 - 0.5) * 0.86 * frame);
        expectNear(at(picture, x, size.height / 2), wanted, 2, "particle " + std::to_string(i));
        // In the order of the periodic system: N, O, Fe.
        PixelArea const swatch = legend.swatch(i == 0 ? 1 : i == 1 ? 0 : 2);
        expectNear(at(picture, swatch.left + 2, swatch.top + 2), wanted, 1, "swatch " + std::to_string(i));
    }
}

TEST_F(ParticleViewer_gl_test, withoutValuesThereIsNoBar) {
    add({0, 0, 0});
    Outline const green = outlineOf(draw(), isGreen);
    EXPECT_NEAR(green.columns.first + green.columns.last, size.width, 3) << "the picture's middle";
    data = {};
    add({1, 0, 0}, 1);
    Outline const beside = outlineOf(draw(), isRed);
    EXPECT_LT(beside.columns.first + beside.columns.last, size.width - 40);
}

// == Ways to draw ==

TEST_F(ParticleViewer_gl_test, withAndWithoutABufferThePictureIsTheSame) {
    // More than the particles that a driver without memory is trusted with.
    addSquare(7);
    particle_frames::addVelocities(data, {data.positions.size(), {0, 0.1, 0}});
    for (ParticleMode const& mode : {ParticleMode::POINTS, ParticleMode::SPHERES, ParticleMode::ARROWS}) {
        options.mode = mode;
        options.channel = mode == ParticleMode::ARROWS ? "" : "t";
        camera.view = toolkit::ViewKind::PERSPECTIVE;
        Picture with;
        Picture without;
        {
            gl_spy::Recording recording;
            with = draw();
            EXPECT_GT(fillings(recording), 0U);
        }
        layer = layerWith(0);
        {
            gl_spy::Recording recording;
            without = draw();
            EXPECT_EQ(fillings(recording), 0U);
        }
        layer = layerWith(someMemory);
        EXPECT_LE(largestDifference(with, without), 1) << static_cast<int>(mode);
    }
}

TEST_F(ParticleViewer_gl_test, buffersAreFilledOnceForAllTiles) {
    addSquare(7);
    prepare();
    Viewer viewer(*layer, *scene, style());
    gl_spy::Recording recording;
    ASSERT_TRUE(drawTiles(viewer, tiles).isOk());
    EXPECT_EQ(fillings(recording), 1U);
    EXPECT_GE(recording.count("glDrawArrays"), 6U) << "six tiles";
}

TEST_F(ParticleViewer_gl_test, tilesFitTogether) {
    addSquare(5);
    camera.view = toolkit::ViewKind::PERSPECTIVE;
    size.width = 220;
    size.height = 110;
    prepare();
    Viewer viewer(*layer, *scene, style());
    Result<Picture> const coarse = drawTiles(viewer, tiles);
    Result<Picture> const fine = drawTiles(viewer, Tiling{2, 96, 96, 16});
    ASSERT_TRUE(coarse.isOk() && fine.isOk());
    int different = 0;
    for (std::size_t i = 0; i < fine.value().pixels.size(); ++i) {
        different += std::abs(fine.value().pixels[i] - coarse.value().pixels[i]) > 12 ? 1 : 0;
    }
    // Lines and rims may take other samples where rounding differs.
    EXPECT_LT(different, 200);
}

// == Picking ==

TEST_F(ParticleViewer_gl_test, whatIsSeenOfParticlesCanBePicked) {
    add({0, 0, 0});
    prepare();
    Viewer viewer(*layer, *scene, style());
    EXPECT_EQ(pick(viewer, {168, 112}), "16 some.csv");
    EXPECT_EQ(pick(viewer, {168 + 80, 112}), "16 some.csv") << "a sphere is picked as wide as it is drawn";
    EXPECT_EQ(pick(viewer, {168 + 75, 112 + 75}), "nothing") << "the corner beside it";
    EXPECT_EQ(pick(viewer, {5, 5}), "nothing");
}

TEST_F(ParticleViewer_gl_test, theNearerOfModelAndParticlesIsPicked) {
    add({0, 0, 0});
    Result<ParticleLook> const result = lookOf({data}, options);
    ASSERT_TRUE(result.isOk());
    MeshData wall;
    wall.name = "wall.obj";
    wall.positions = {{-3, -3, 0}, {3, -3, 0}, {3, 3, 0}, {-3, 3, 0}};
    wall.triangles = {{0, 1, 2}, {0, 2, 3}};
    wall.normals.assign(4, {0, 0, 1});
    wall.colors.assign(4, {1, 1, 1, 1});
    for (double const& z : {-2.0, 2.0}) {
        for (Vector3<double>& corner : wall.positions) {
            corner.z = z;
        }
        Scene const both({wall}, nullptr, {data}, result.value());
        look = result.value();
        Viewer viewer(*layer, both, style());
        EXPECT_EQ(pick(viewer, {168, 112}), z < 0 ? "17 some.csv" : "16 wall.obj");
    }
}
