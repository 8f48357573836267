#include "viewport/drawing/view/CameraPlacement.h"

#include "viewport/drawing/view/ViewCamera.h"

#include <gmock/gmock.h>

using namespace vellum;
using namespace vellum::viewport;

namespace {

/// A triangle far away from the origin, in units of its own.
MeshData triangle() {
    MeshData mesh;
    mesh.name = "t.off";
    mesh.positions = {{1000, 5, 0}, {1002, 5, 0}, {1000, 9, 1}};
    mesh.triangles = {{0, 1, 2}};
    mesh.colors.assign(3, {1, 1, 1, 1});
    return mesh;
}

class CameraPlacement_test : public testing::Test {
protected:
    CameraPlacement place(CameraSpec const& spec) {
        Result<CameraPlacement> const placement = CameraPlacement::of(spec, scene, points, 1.5);
        EXPECT_TRUE(placement.isOk()) << placement.fault().message;
        return placement.isOk() ? placement.value() : CameraPlacement{};
    }

    Scene scene{{triangle()}};
    std::vector<Vector3<double>> points{scene.models()[0].vertices.begin(), scene.models()[0].vertices.end()};
};

double angleBetween(Vector3<double> const& a, Vector3<double> const& b) {
    return std::acos(std::min(1.0, dot(normalized(a), normalized(b)))) * 180 / 3.14159265358979;
}

}  // namespace

TEST_F(CameraPlacement_test, aPlacementThatIsGivenWholeComesBackAsItIs) {
    CameraSpec spec;
    spec.position = {1010, 1, 0.3};
    spec.focus = {1000.1, 7, 0};
    spec.up = {0.1, 0, 3};
    spec.fieldOfView = 11.1;
    spec.zoom = 1.7;
    for (Projection const projection : {Projection::PERSPECTIVE, Projection::PARALLEL}) {
        spec.projection = projection;
        CameraPlacement const placement = place(spec);
        EXPECT_EQ(length(placement.position - *spec.position), 0);
        EXPECT_EQ(length(placement.focus - *spec.focus), 0);
        EXPECT_EQ(length(placement.up - *spec.up), 0);
        EXPECT_EQ(placement.fieldOfView, 11.1);
        EXPECT_EQ(placement.zoom, 1.7);
    }
}

TEST_F(CameraPlacement_test, whatIsChosenIsInUnitsOfTheFile) {
    CameraPlacement const placement = place({});
    EXPECT_GT(placement.position.x, 990);
    EXPECT_LT(length(placement.position - Vector3<double>{1001, 7, 0.5}), 20);
    EXPECT_LT(length(placement.focus - Vector3<double>{1001, 7, 0.5}), 3);
    EXPECT_EQ(placement.fieldOfView, CameraSpec::FIELD_OF_VIEW);
}

TEST_F(CameraPlacement_test, anglesSayFromWhereTheSceneIsSeen) {
    struct Row {
        double azimuth;
        double elevation;
        Vector3<double> toward;
        Vector3<double> up;
    };
    for (Row const& row : {Row{0, 0, {0, 0, 1}, {0, 1, 0}}, Row{90, 0, {1, 0, 0}, {0, 1, 0}},
                           Row{180, 0, {0, 0, -1}, {0, 1, 0}}, Row{0, 90, {0, 1, 0}, {0, 0, -1}},
                           Row{90, 90, {0, 1, 0}, {-1, 0, 0}}, Row{0, -90, {0, -1, 0}, {0, 0, 1}}}) {
        for (Projection const projection : {Projection::PERSPECTIVE, Projection::PARALLEL}) {
            CameraSpec spec;
            spec.azimuth = row.azimuth;
            spec.elevation = row.elevation;
            spec.projection = projection;
            CameraPlacement const placement = place(spec);
            EXPECT_LT(angleBetween(placement.position - placement.focus, row.toward), 1e-4) << row.azimuth;
            EXPECT_LT(angleBetween(placement.up, row.up), 1e-4) << row.azimuth << " " << row.elevation;
        }
    }
}

TEST_F(CameraPlacement_test, aCameraAboutAFocusSeesEverything) {
    CameraSpec spec;
    spec.focus = {1000, 5, 0};
    spec.azimuth = 30;
    PictureSize const size{300, 200};
    ViewCamera camera(spec);
    ASSERT_FALSE(camera.frame(scene, points, size).has_value());
    CameraPlacement const placement = place(spec);
    double const tangent = std::tan(placement.fieldOfView * 3.14159265358979 / 360);
    for (Vector3<double> const& p : triangle().positions) {
        Vector3<double> const offset = p - placement.position;
        double const depth = dot(offset, normalized(placement.focus - placement.position));
        EXPECT_LT(std::abs(dot(offset, normalized(placement.up))), depth * tangent);
        EXPECT_LT(std::abs(dot(offset, camera.screen().right)), depth * tangent * 1.5);
    }
}

TEST_F(CameraPlacement_test, aVerticalAlongTheViewIsAFault) {
    CameraSpec spec;
    spec.azimuth = 0;
    spec.elevation = 0;
    spec.up = {0, 0, 5};
    Result<CameraPlacement> const placement = CameraPlacement::of(spec, scene, points, 1);
    ASSERT_FALSE(placement.isOk());
    EXPECT_THAT(placement.fault().message, testing::HasSubstr("--camera-up"));
}

TEST_F(CameraPlacement_test, theOptionsOfACameraKeepAllDigits) {
    CameraPlacement const placement{
        Projection::PARALLEL, {0.1, -0.0, 1e100}, {1, 2, 3}, {0, 1.0 / 3, 0}, 32, 2};
    EXPECT_EQ(placement.toOptions(),
              "--projection parallel --camera-position 0.1,0,1e+100 --camera-focus 1,2,3 "
              "--camera-up 0,0.3333333333333333,0 --zoom 2");
    CameraSpec top;
    top.view = toolkit::ViewKind::TOP;
    top.zoom = 0.5;
    EXPECT_EQ(axisViewToOptions(top), "--view top --zoom 0.5");
}

TEST_F(CameraPlacement_test, depthsAreDistancesFromTheEye) {
    CameraSpec spec;
    PictureSize const size{300, 200};
    for (Projection const projection : {Projection::PERSPECTIVE, Projection::PARALLEL}) {
        spec.projection = projection;
        ViewCamera camera(spec);
        ASSERT_FALSE(camera.frame(scene, points, size).has_value());
        double const nearest = static_cast<double>(camera.camera().nearDistance);
        double const farthest = static_cast<double>(camera.camera().farDistance);
        EXPECT_NEAR(camera.distanceOf(0), nearest, 1e-6 * farthest);
        EXPECT_NEAR(camera.distanceOf(1), farthest, 1e-6 * farthest);
    }
}
