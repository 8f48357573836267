#include "viewport/drawing/FilmCamera.h"

#include "viewport/drawing/ViewLayout.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

MeshData triangle(double size) {
    MeshData mesh;
    mesh.name = "t.off";
    mesh.up = UpAxis::Z;
    mesh.positions = {{1000, 5, 0}, {1000 + size, 5, 0}, {1000, 9, size}};
    mesh.triangles = {{0, 1, 2}};
    mesh.colors.assign(3, {1, 1, 1, 1});
    return mesh;
}

FilmCamera filmOf(Scene const& scene, CameraSpec const& spec, std::size_t turn) {
    ViewStyle style;
    style.camera = spec;
    Result<FilmCamera> const film = FilmCamera::of(scene, style, {300, 200}, turn);
    EXPECT_TRUE(film.isOk()) << film.fault().message;
    return film.value();
}

/// What the options of the camera of a picture are, drawn of a scene.
std::string optionsOf(Scene const& scene, CameraSpec const& spec) {
    ViewStyle style;
    style.camera = spec;
    return ViewLayout::of(scene, style, nullptr, {300, 200}).camera.options();
}

CameraSpec parallel() {
    CameraSpec spec;
    spec.projection = Projection::PARALLEL;
    spec.zoom = 1.5;
    return spec;
}

}  // namespace

TEST(FilmCamera, withoutATurnTheFirstCameraStays) {
    Scene const first({triangle(2)});
    Scene const other({triangle(7)}, nullptr, {}, {}, Scene::Imports::DROPPED, std::nullopt,
                      Scene::Frames::DROPPED, first.extent());
    CameraSpec zoomed;
    zoomed.zoom = 2;
    zoomed.azimuth = 10;
    for (CameraSpec const& spec : {CameraSpec{}, zoomed}) {
        FilmCamera const film = filmOf(first, spec, 0);
        EXPECT_EQ(optionsOf(first, film.at(0)), optionsOf(first, spec));
        EXPECT_EQ(optionsOf(other, film.at(5)), optionsOf(first, spec));
    }
    CameraSpec top;
    top.view = toolkit::ViewKind::TOP;
    EXPECT_EQ(filmOf(first, top, 0).at(3).view, toolkit::ViewKind::TOP);
}

TEST(FilmCamera, aParallelCameraShowsTheSameHeight) {
    Scene const first({triangle(2)});
    Scene const other({triangle(7)}, nullptr, {}, {}, Scene::Imports::DROPPED, std::nullopt,
                      Scene::Frames::DROPPED, first.extent());
    FilmCamera const film = filmOf(first, parallel(), 0);
    auto const halfWidthOf = [](Scene const& scene, CameraSpec const& spec) {
        ViewStyle style;
        style.camera = spec;
        return ViewLayout::of(scene, style, nullptr, {300, 200}).camera.halfWidth();
    };
    EXPECT_NEAR(halfWidthOf(first, film.at(0)), halfWidthOf(first, parallel()), 1e-9);
    EXPECT_NEAR(halfWidthOf(other, film.at(1)), halfWidthOf(first, parallel()), 1e-9);
}

TEST(FilmCamera, aTurnLeadsRoundTheVerticalThroughTheFocus) {
    Scene const scene({triangle(2)});
    for (CameraSpec spec : {CameraSpec{}, parallel()}) {
        spec.azimuth = 20;
        FilmCamera const film = filmOf(scene, spec, 4);
        CameraSpec const start = film.at(0);
        Point const from = *start.position - *start.focus;
        // Front is -y in a file whose z is up, right is x.
        EXPECT_NEAR(std::atan2(from.x, -from.y) * 180 / M_PI, 20, 1e-6);
        Point const quarter = *film.at(1).position - *start.focus;
        EXPECT_NEAR(std::atan2(quarter.x, -quarter.y) * 180 / M_PI, 110, 1e-6);
        EXPECT_NEAR(quarter.z, from.z, 1e-9);
        EXPECT_NEAR(length(quarter), length(from), 1e-9);
        Point const half = *film.at(2).position - *start.focus;
        EXPECT_NEAR(half.x, -from.x, 1e-9);
        EXPECT_NEAR(film.at(2).up->x, -start.up->x, 1e-9);
        EXPECT_NEAR(film.at(2).up->z, start.up->z, 1e-9);
        EXPECT_EQ(length(*film.at(4).position - *start.position), 0) << "the turn begins anew";
    }
}

TEST(FilmCamera, theWholeSceneIsInEveryPictureOfATurn) {
    // Long, and seen from its end first.
    MeshData plank = triangle(1);
    plank.positions = {{0, 0, 0}, {0, 100, 1}, {2, 100, 0}};
    Scene const scene({plank});
    CameraSpec spec;
    spec.azimuth = 0;
    FilmCamera const film = filmOf(scene, spec, 8);
    for (std::size_t i = 0; i < 8; ++i) {
        CameraSpec const at = film.at(i);
        Point const forward = normalized(*at.focus - *at.position);
        Point const right = normalized(cross(forward, *at.up));
        for (Point const& p : plank.positions) {
            Point const offset = p - *at.position;
            double const depth = dot(offset, forward);
            ASSERT_GT(depth, 0) << i;
            double const half = depth * std::tan(*at.fieldOfView * M_PI / 360);
            EXPECT_LT(std::abs(dot(offset, right)), half * 1.5) << i;
            EXPECT_LT(std::abs(dot(offset, cross(right, forward))), half) << i;
        }
    }
}

TEST(FilmCamera, aPositionThatIsGivenTurnsAsItIs) {
    Scene const scene({triangle(2)});
    CameraSpec spec;
    spec.position = {1001, -20, 3};
    spec.focus = {1001, 5, 1};
    FilmCamera const film = filmOf(scene, spec, 2);
    EXPECT_EQ(length(*film.at(0).position - *spec.position), 0);
    EXPECT_NEAR(film.at(1).position->y, 30, 1e-9);
    EXPECT_NEAR(film.at(1).position->z, 3, 1e-9);
}

TEST(FilmCamera, camerasThatCannotBeAreFaults) {
    Scene const scene({triangle(2)});
    ViewStyle style;
    style.camera.view = toolkit::ViewKind::TOP;
    EXPECT_FALSE(FilmCamera::of(scene, style, {300, 200}, 3).isOk());
    style.camera = {};
    style.camera.position = {0, 0, 0};
    style.camera.focus = {0, 1, 0};
    style.camera.up = {0, 2, 0};
    EXPECT_FALSE(FilmCamera::of(scene, style, {300, 200}, 0).isOk());
}
