#include "viewport/drawing/Picker.h"

#include "toolkit/Layer.h"
#include "viewport/drawing/Viewer.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <GL/gl.h>

using namespace vellum;
using namespace vellum::viewport;

namespace {

constexpr std::size_t many = 21;
constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

class Picker_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<toolkit::Layer>();
        layer->assumeFreeGpuMemory(256);
        // By these colors a pixel tells the number of its particle.
        options.colors = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
        style.background = Background::of({0, 0, 0, 1});
        style.explanations = {false, false, false, false};
    }

    /// Particles anywhere in a box of 4, with velocities of lengths from 1 to 2.
    void scatter(std::size_t count, double depth = 4) {
        std::mt19937 random(7);
        auto const next = [&random](double size) {
            return size * static_cast<double>(random()) / 4294967296.0;
        };
        std::vector<Vector3<double>> velocities;
        for (std::size_t i = 0; i < count; ++i) {
            frame.positions.push_back({next(4), next(4), next(depth)});
            Vector3<double> const along{next(2) - 1, next(2) - 1, next(2) - 1};
            velocities.push_back(along / length(along) *
                                 (1 + static_cast<double>(i) / static_cast<double>(many - 1)));
        }
        frame.file = "some.dump";
        frame.box = ParticleBox{{0, 0, 0}, {{4, 0, 0}, {0, 4, 0}, {0, 0, 4}}};
        particle_frames::addVelocities(frame, velocities);
    }

    void prepare(std::vector<MeshData> meshes = {}) {
        Result<ParticleLook> result = lookOf({frame}, options);
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        std::vector<ParticleFrame> frames;
        if (!frame.positions.empty()) {
            frames.push_back(frame);
        }
        scene = std::make_unique<Scene>(meshes, nullptr, std::move(frames), result.value(),
                                        Scene::Imports::DROPPED, std::nullopt, Scene::Frames::KEPT);
        scene->keep(std::move(meshes));
        style.particles = ParticleStyle::of(result.value(), options);
        viewer = std::make_unique<Viewer>(*layer, *scene, style);
    }

    std::optional<Picked> pick(int x, int y) { return viewer->pick(size, {x, y}); }

    /// Draws the picture without softened edges.
    std::vector<unsigned char> draw() {
        glDisable(GL_MULTISAMPLE);
        glViewport(0, 0, size.width, size.height);
        viewer->draw(size);
        std::vector<unsigned char> pixels(4 * static_cast<std::size_t>(size.width) *
                                          static_cast<std::size_t>(size.height));
        glReadPixels(0, 0, size.width, size.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }

    /// The number of the particle in a pixel, by its color; nothing where there is none.
    std::optional<std::size_t> shownAt(std::vector<unsigned char> const& pixels, int x, int y) const {
        if (x < 0 || y < 0 || x >= size.width || y >= size.height) {
            return std::nullopt;
        }
        std::size_t const place = static_cast<std::size_t>((size.height - 1 - y) * size.width + x);
        double const red = pixels[4 * place];
        double const green = pixels[4 * place + 1];
        if (red + green < 60) {
            return std::nullopt;
        }
        return static_cast<std::size_t>(std::lround(green / (red + green) * (many - 1)));
    }

    /// Picks what the picture shows, in every third column and row.
    /// \param border so many pixels beside it may show it: OpenGL rounds the rims of lines otherwise in other
    /// viewports
    void expectWhatIsShown(std::string const& what, int border = 0) {
        std::vector<unsigned char> const pixels = draw();
        int shown = 0;
        int wrong = 0;
        for (int y = 0; y < size.height; y += 3) {
            for (int x = 0; x < size.width; x += 3) {
                std::optional<std::size_t> const wanted = shownAt(pixels, x, y);
                if (!wanted) {
                    continue;
                }
                ++shown;
                std::optional<Picked> const picked = pick(x, y);
                bool isRight = false;
                for (int k = 0; k < (2 * border + 1) * (2 * border + 1); ++k) {
                    isRight =
                        isRight || (picked && picked->particle &&
                                    shownAt(pixels, x - border + k % (2 * border + 1),
                                            y - border + k / (2 * border + 1)) == picked->particle->index);
                }
                wrong += isRight ? 0 : 1;
                if (!isRight && wrong < 4) {
                    ADD_FAILURE() << what << ": at " << x << ", " << y << " is " << *wanted << ", not "
                                  << (picked && picked->particle ? std::to_string(picked->particle->index)
                                                                 : "nothing");
                }
            }
        }
        EXPECT_GT(shown, 15) << what;
        EXPECT_EQ(wrong, 0) << what << ", of " << shown;
    }

    ParticleFrame frame;
    ParticleOptions options;
    ViewStyle style;
    PictureSize size{112, 84};
    std::unique_ptr<toolkit::Layer> layer;
    std::unique_ptr<Scene> scene;
    std::unique_ptr<Viewer> viewer;
};

/// A square from -2 to 2 at a height in files whose y is up, of two triangles.
MeshData square(double z) {
    MeshData mesh;
    mesh.name = "wall.obj";
    mesh.positions = {{-2, -2, z}, {2, -2, z}, {2, 2, z}, {-2, 2, z}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
    mesh.normals.assign(4, {0, 0, 1});
    mesh.colors.assign(4, {1, 1, 1, 1});
    mesh.scalars.push_back({"stress", "Pa", {1, 2, undefined, 4}});
    return mesh;
}

}  // namespace

TEST_F(Picker_gl_test, theParticleThatAPixelShowsIsPickedInEveryMode) {
    scatter(many);
    struct Row {
        char const* name;
        ParticleMode mode;
        double size;
    };
    for (Row const& row :
         {Row{"points", ParticleMode::POINTS, 7}, Row{"spheres", ParticleMode::SPHERES, 1.2},
          Row{"arrows", ParticleMode::ARROWS, 0.7}, Row{"solid arrows", ParticleMode::SOLID_ARROWS, 0.7}}) {
        options.mode = row.mode;
        options.size = row.size;
        for (toolkit::ViewKind const view : {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::TOP}) {
            style.camera.view = view;
            prepare();
            expectWhatIsShown(std::string(row.name) +
                                  (view == toolkit::ViewKind::TOP ? " from above" : " in perspective"),
                              row.mode == ParticleMode::ARROWS ? 1 : 0);
        }
    }
}

TEST_F(Picker_gl_test, particlesKeepTheirNumbersWhateverIsShownOfThem) {
    scatter(many);
    options.mode = ParticleMode::SPHERES;
    options.size = 1.2;
    options.range = ValueRange{1, 2};
    options.isWrapped = true;
    options.selection = "x > 1";
    prepare();
    expectWhatIsShown("selected");
    options.copies = {2, 1, 2};
    prepare();
    expectWhatIsShown("replicated");
    options.percent = 60;
    prepare();
    expectWhatIsShown("thinned");
    options.size.reset();
    frame.sizes = ParticleSizes{frame.channels.size(), 1};
    frame.channels.push_back({"diameter", {}, {}});
    for (std::size_t i = 0; i < many; ++i) {
        frame.channels.back().values.push_back(0.5 + 0.1 * static_cast<double>(i % 9));
    }
    prepare();
    expectWhatIsShown("of their own sizes");
}

TEST_F(Picker_gl_test, particlesThatAreNotDrawnAreNotPicked) {
    // All in one depth, which therefore tells nothing.
    constexpr int side = 21;
    for (int i = 0; i < side * side; ++i) {
        frame.positions.push_back({static_cast<double>(i % side), static_cast<double>(i / side), 0});
    }
    frame.file = "flat.csv";
    options.mode = ParticleMode::POINTS;
    options.size = 5;
    options.percent = 20;
    style.camera.view = toolkit::ViewKind::TOP;
    prepare();
    std::vector<unsigned char> const pixels = draw();
    int found = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; x += 2) {
            std::optional<Picked> const picked = pick(x, y);
            if (!picked || !picked->particle || !shownAt(pixels, x, y)) {
                continue;
            }
            ++found;
            toolkit::View const view = toolkit::View::current();
            toolkit::ScreenPoint const place = view.project(scene->placeToScene(picked->particle->position));
            EXPECT_LE(std::hypot(place.x - 2.5, place.y - 2.5), 3.6) << "the pixel is in its square";
        }
    }
    EXPECT_GT(found, 100);
}

TEST_F(Picker_gl_test, allValuesOfAParticleAreTold) {
    frame.file = "some.dump";
    frame.positions = {{1e12, 0.1, -3}};
    frame.box = ParticleBox{{1e12 - 2, -2, -5}, {{4, 0, 0}, {0, 4, 0}, {0, 0, 4}}};
    frame.channels = {{"id", {77}, {}}, {"type", {2}, {}}, {"energy", {undefined}, "eV"}};
    frame.typeNames[2] = "iron";
    frame.labels.push_back({"element", {"H", "Fe"}, {1}, true});
    particle_frames::addVelocities(frame, {{1, 2, 3}});
    options.mode = ParticleMode::SPHERES;
    prepare();
    std::optional<Picked> const picked = pick(56, 42);
    ASSERT_TRUE(picked && picked->particle);
    PickedParticle const& particle = *picked->particle;
    EXPECT_EQ(particle.id, 77);
    EXPECT_EQ(particle.position.x, 1e12);
    EXPECT_EQ(particle.position.y, 0.1);
    EXPECT_EQ(particle.shownAt.x, 1e12);
    ASSERT_EQ(particle.values.size(), 7U);
    EXPECT_EQ(std::get<std::string>(particle.values[0].value), "Fe");
    EXPECT_EQ(particle.values[1].name, "type");
    EXPECT_EQ(particle.values[1].meaning, "iron");
    EXPECT_TRUE(std::isnan(std::get<double>(particle.values[2].value)));
    EXPECT_EQ(particle.values[2].unit, "eV");
    EXPECT_EQ(particle.values[6].name, "velocity");
    EXPECT_EQ(std::get<Vector3<double>>(particle.values[6].value).y, 2);
}

TEST_F(Picker_gl_test, copiesAreTheParticleAtAnotherPlace) {
    frame.file = "some.dump";
    frame.positions = {{5, 1, 1}};
    frame.box = ParticleBox{{0, 0, 0}, {{4, 0, 0}, {0, 4, 0}, {0, 0, 4}}};
    options.mode = ParticleMode::SPHERES;
    options.size = 3;
    options.isWrapped = true;
    options.copies = {2, 1, 1};
    style.camera.view = toolkit::ViewKind::TOP;
    prepare();
    for (double const x : {1.0, 5.0}) {
        draw();
        toolkit::ScreenPoint const place = toolkit::View::current().project(scene->placeToScene({x, 1, 1}));
        std::optional<Picked> const picked = pick(static_cast<int>(place.x), static_cast<int>(place.y));
        ASSERT_TRUE(picked && picked->particle) << x;
        EXPECT_EQ(picked->particle->position.x, 5);
        EXPECT_EQ(picked->particle->shownAt.x, x);
    }
}

TEST_F(Picker_gl_test, aParticleHalfBehindAMeshIsPickedWhereItIsSeen) {
    frame.file = "some.csv";
    frame.positions = {{0, 0, 0}};
    MeshData wall = square(0.2);
    // Its right half hides that of the ball, which the lower one of its triangles cuts.
    for (Vector3<double>& p : wall.positions) {
        p.x = p.x < 0 ? 0 : p.x;
        p.z = 3;
    }
    options.mode = ParticleMode::SPHERES;
    options.size = 2;
    style.camera.view = toolkit::ViewKind::FRONT;
    prepare({wall});
    std::optional<Picked> const left = pick(size.width / 2 - 14, size.height / 2);
    std::optional<Picked> const right = pick(size.width / 2 - 3, size.height / 2);
    ASSERT_TRUE(left && right);
    EXPECT_EQ(left->owner, "some.csv");
    ASSERT_TRUE(left->particle);
    EXPECT_FALSE(left->element);
    EXPECT_EQ(right->owner, "wall.obj");
    EXPECT_TRUE(right->element);
}

TEST_F(Picker_gl_test, aMeshTellsTrianglePlaceVertexAndValues) {
    style.camera.view = toolkit::ViewKind::FRONT;
    MeshData mesh = square(1e6);
    mesh.materials.resize(2);
    mesh.materials[1].name = "steel";
    mesh.triangleMaterials = {0, 1};
    prepare({mesh});
    // The square is as high as the picture but for a margin.
    std::optional<Picked> const picked = pick(size.width / 2 - 15, size.height / 2 - 20);
    ASSERT_TRUE(picked && picked->element);
    PickedElement const& element = *picked->element;
    EXPECT_EQ(element.kind, MeshElement::TRIANGLE);
    EXPECT_EQ(element.index, 1U);
    EXPECT_EQ(element.vertex, 3U);
    EXPECT_EQ(element.vertexPosition.x, -2);
    EXPECT_EQ(element.position.z, 1e6);
    EXPECT_LT(element.position.x, -0.5);
    EXPECT_GT(element.position.y, 0.8);
    EXPECT_EQ(element.material, "steel");
    ASSERT_EQ(element.values.size(), 1U);
    EXPECT_EQ(element.values[0].name, "stress");
    EXPECT_EQ(std::get<double>(element.values[0].value), 4);
}

TEST_F(Picker_gl_test, trianglesFromBehindLinesAndPointsAreFound) {
    MeshData mesh = square(0);
    mesh.lines = {{0, 1}, {0, 2}};
    mesh.points = {1, 3};
    style.camera.view = toolkit::ViewKind::BACK;
    prepare({mesh});
    int const x = size.width / 2;
    int const y = size.height / 2;
    std::optional<Picked> picked = pick(x + 12, y + 3);
    ASSERT_TRUE(picked && picked->element);
    EXPECT_EQ(picked->element->kind, MeshElement::TRIANGLE);
    picked = pick(x, y);
    ASSERT_TRUE(picked && picked->element);
    EXPECT_EQ(picked->element->kind, MeshElement::LINE) << "a line over the surface";
    EXPECT_EQ(picked->element->index, 1U);
    EXPECT_NEAR(picked->element->position.x, picked->element->position.y, 1e-9);
    // The corner at the upper right of those who look from behind.
    int found = 0;
    for (int up = 0; up < y; ++up) {
        for (int right = 0; right < y; ++right) {
            picked = up == right ? pick(x + right, y - up) : std::nullopt;
            if (picked && picked->element && picked->element->kind == MeshElement::POINT) {
                EXPECT_EQ(picked->element->index, 1U);
                EXPECT_EQ(picked->element->vertex, 3U);
                ++found;
            }
        }
    }
    EXPECT_GT(found, 0);
}

TEST_F(Picker_gl_test, clippedTrianglesAndModesWithoutSurfacesHaveNoPlace) {
    style.camera.view = toolkit::ViewKind::FRONT;
    MeshData near = square(1);
    near.triangles.push_back({4, 5, 6});
    near.triangles.push_back({4, 6, 7});
    for (std::size_t k = 0; k < 4; ++k) {
        near.positions.push_back(near.positions[k] - Vector3<double>{0, 0, 2});
        near.normals.push_back({0, 0, 1});
        near.colors.push_back({1, 1, 1, 1});
        near.scalars[0].values.push_back(5);
    }
    style.clip = Box3<double>{{-3, -3, -3}, {3, 3, 0}};
    prepare({near});
    std::optional<Picked> picked = pick(size.width / 2 + 9, size.height / 2);
    ASSERT_TRUE(picked && picked->element);
    EXPECT_EQ(picked->element->index, 2U) << "the nearer square is cut away";
    style.clip.reset();
    for (Shading const shading : {Shading::BOX, Shading::WIREFRAME}) {
        style.mesh.shading = shading;
        prepare({near});
        picked = pick(size.width / 2 + 9, size.height / 2);
        ASSERT_TRUE(picked);
        EXPECT_EQ(picked->owner, "wall.obj");
        EXPECT_FALSE(picked->element);
    }
}

TEST_F(Picker_gl_test, pixelsAtTheBorderShowWhatReachesBeyondIt) {
    scatter(1);
    options.mode = ParticleMode::SPHERES;
    options.size = 3;
    style.camera.zoom = 8;
    style.camera.focus = frame.positions[0];
    prepare();
    MeshData wall = square(0);
    for (int const x : {0, size.width - 1}) {
        for (int const y : {0, size.height - 1}) {
            std::optional<Picked> const picked = pick(x, y);
            ASSERT_TRUE(picked && picked->particle) << x << ", " << y;
        }
    }
    frame = {};
    style.camera.focus = Vector3<double>{0.1, 0.2, 0};
    prepare({wall});
    for (int const x : {0, size.width - 1}) {
        for (int const y : {0, size.height - 1}) {
            std::optional<Picked> const picked = pick(x, y);
            ASSERT_TRUE(picked && picked->element) << x << ", " << y;
            EXPECT_EQ(picked->element->position.x < 0.1, x == 0);
        }
    }
}

TEST_F(Picker_gl_test, scenesThatKeepNothingTellNames) {
    scatter(many);
    options.mode = ParticleMode::SPHERES;
    options.size = 3;
    Result<ParticleLook> const look = lookOf({frame}, options);
    ASSERT_TRUE(look.isOk());
    scene = std::make_unique<Scene>(std::vector<MeshData>(), nullptr, std::vector<ParticleFrame>{frame},
                                    look.value());
    style.particles = ParticleStyle::of(look.value(), options);
    viewer = std::make_unique<Viewer>(*layer, *scene, style);
    std::optional<Picked> const picked = pick(56, 42);
    ASSERT_TRUE(picked);
    EXPECT_EQ(picked->owner, "some.dump");
    EXPECT_FALSE(picked->particle);
}
