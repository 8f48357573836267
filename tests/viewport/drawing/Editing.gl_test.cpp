#include "viewport/drawing/TiledPicture.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/viewport/drawing/ViewerTest.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/editing/GizmoDrag.h"

#include <algorithm>
#include <cmath>
#include <memory>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

constexpr Color4<float> ORANGE{1.0F, 0.45F, 0.0F, 1};

class Editing_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        ASSERT_FALSE(startGlew().has_value());
        layer.reset(new Core_RL_GL);
        style.explanations = {false, false, false, false};
        style.mesh.shading = Shading::FACETED;
        style.camera.view = toolkit::ViewKind::FRONT;
    }

    void TearDown() override {
        viewer.reset();
        layer.reset();
        GlTest::TearDown();
    }

    Viewer& view() {
        if (viewer == nullptr) {
            viewer = std::make_unique<Viewer>(*layer, scene, style);
        }
        return *viewer;
    }

    Picture draw() {
        Result<Picture> picture = TiledPicture(size, oneTile).draw(view(), *layer, context());
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    std::string pick(double x, double y) {
        std::optional<Picked> const picked =
            view().pick(size, {static_cast<int>(std::floor(x)), static_cast<int>(std::floor(y))});
        return picked ? picked->owner : "nothing";
    }

    /// Where a point of the files is in the picture.
    toolkit::ScreenPoint placeOf(Point const& p) { return view().view(size).project(scene.placeToScene(p)); }

    // Two small cubes far apart hold the frame, whatever is done to the one between them.
    Scene scene{{cube("left.obj", {-10, -10, 0}, ORANGE), cube("middle.obj", {0, 0, 0}, ORANGE),
                 cube("right.obj", {10, 10, 0}, ORANGE)}};
    PictureSize size{112, 112};
    ViewStyle style;
    std::unique_ptr<Core_RL> layer;
    std::unique_ptr<Viewer> viewer;
};

bool isOrange(Picture const& picture, double x, double y) {
    int const column = std::clamp(static_cast<int>(std::floor(x)), 0, picture.width - 1);
    int const row = std::clamp(static_cast<int>(std::floor(y)), 0, picture.height - 1);
    unsigned char const* const pixel = picture.pixels.data() + 4 * (row * picture.width + column);
    return pixel[0] > 60 && pixel[0] > 2 * pixel[2] + 20;
}

int countYellow(Picture const& picture) {
    int count = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        unsigned char const* const pixel = picture.pixels.data() + i;
        count += pixel[0] > 150 && pixel[1] > 120 && pixel[2] < 90 ? 1 : 0;
    }
    return count;
}

ObjectTransform movedBy(Point const& way) {
    ObjectTransform transform;
    transform.translation = way;
    return transform;
}

}  // namespace

TEST_F(Editing_gl_test, objectsAreDrawnAndPickedWhereTheyWereMovedTurnedAndScaled) {
    ObjectTransform transform = movedBy({5, -3, 0});
    transform.scale = {3, 1, 1};
    transform.rotation = Rotation::ofDegrees({0, 0, 90});
    view().setTransform(1, transform);
    struct Row {
        Point place;
        bool isShown;
    };
    for (Shading const shading : {Shading::FACETED, Shading::SMOOTH, Shading::WIREFRAME}) {
        style.mesh.shading = shading;
        viewer.reset();
        view().setTransform(1, transform);
        Picture const picture = draw();
        for (Row const& row : {Row{{5, -3, 0}, true}, Row{{5, -0.6, 0}, true}, Row{{5, -5.4, 0}, true},
                               Row{{7.2, -3, 0}, false}, Row{{2.8, -3, 0}, false}, Row{{0, 0, 0}, false}}) {
            toolkit::ScreenPoint const at = placeOf(row.place);
            if (shading != Shading::WIREFRAME) {
                EXPECT_EQ(isOrange(picture, at.x, at.y), row.isShown) << at.x << ' ' << at.y;
            }
            EXPECT_EQ(pick(at.x, at.y), row.isShown ? "middle.obj" : "nothing");
        }
    }
}

TEST_F(Editing_gl_test, blendedPartsAreDrawnWhereTheyWereMoved) {
    style.mesh.opacity = 0.8F;
    view().setTransform(1, movedBy({5, -3, 0}));
    Picture const picture = draw();
    toolkit::ScreenPoint const now = placeOf({5, -3, 0});
    toolkit::ScreenPoint const before = placeOf({0, 0, 0});
    EXPECT_TRUE(isOrange(picture, now.x, now.y));
    EXPECT_FALSE(isOrange(picture, before.x, before.y));
}

TEST_F(Editing_gl_test, clipBoxesStayWhereTheyAre) {
    style.clip = Box3<double>{{4, -20, -20}, {20, 20, 20}};
    view().setTransform(1, movedBy({4, 0, 0}));
    Picture const picture = draw();
    toolkit::ScreenPoint const shown = placeOf({4.5, 0, 0});
    toolkit::ScreenPoint const cut = placeOf({3.5, 0, 0});
    EXPECT_TRUE(isOrange(picture, shown.x, shown.y));
    EXPECT_FALSE(isOrange(picture, cut.x, cut.y));
}

TEST_F(Editing_gl_test, clipBoxesCutBlendedParts) {
    style.mesh.opacity = 0.8F;
    toolkit::ScreenPoint const place = placeOf({0, 0, 0});
    Picture picture = draw();
    EXPECT_TRUE(isOrange(picture, place.x, place.y));
    viewer.reset();
    style.clip = Box3<double>{{4, -20, -20}, {20, 20, 20}};
    picture = draw();
    EXPECT_FALSE(isOrange(picture, place.x, place.y));
}

TEST_F(Editing_gl_test, identityDrawsTheSameBytes) {
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    Picture const before = draw();
    view().setTransform(1, movedBy({1, 2, 3}));
    EXPECT_NE(draw().pixels, before.pixels);
    view().setTransform(1, {});
    EXPECT_EQ(draw().pixels, before.pixels);
}

TEST_F(Editing_gl_test, theCameraFramesWhatIsMovedAway) {
    for (toolkit::ViewKind const kind : {toolkit::ViewKind::FRONT, toolkit::ViewKind::PERSPECTIVE}) {
        style.camera.view = kind;
        viewer.reset();
        view().setTransform(1, movedBy({40, 0, 0}));
        toolkit::ScreenPoint const at = placeOf({40, 0, 0});
        EXPECT_TRUE(at.x > 0 && at.x < size.width && at.y > 0 && at.y < size.height);
        Picture const picture = draw();
        EXPECT_TRUE(isOrange(picture, at.x, at.y));
    }
}

TEST_F(Editing_gl_test, aMirroredObjectIsLitAsTheOtherIs) {
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    Picture const before = draw();
    ObjectTransform mirrored;
    mirrored.scale = {-1, 1, 1};
    view().setTransform(1, mirrored);
    Picture const after = draw();
    // A cube is its own mirror image.
    toolkit::ScreenPoint const at = placeOf({0, 0, 0});
    int const pixel = 4 * (static_cast<int>(at.y) * size.width + static_cast<int>(at.x));
    EXPECT_NEAR(after.pixels[pixel], before.pixels[pixel], 4);
}

TEST_F(Editing_gl_test, whatIsScaledAndTurnedIsShadedAsIfItsFileWereSoWithAndWithoutAnEffect) {
    // The same with the transform and with a file that has it, in one frame.
    ObjectTransform transform;
    transform.scale = {2, 0.5, 1};
    transform.rotation = Rotation::ofDegrees({20, -30, 40});
    std::vector<MeshData> const plain{cube("left.obj", {-10, -10, 0}, ORANGE),
                                      cube("middle.obj", {0, 0, 0}, ORANGE),
                                      cube("right.obj", {10, 10, 0}, ORANGE)};
    std::vector<MeshData> scaled = plain;
    for (Point& p : scaled[1].positions) {
        p = transform.rotation({2 * p.x, 0.5 * p.y, p.z});
    }
    for (Vector3<float>& n : scaled[1].normals) {
        n = convert<float>(normalized(transform.rotation({0.5 * n.x, 2.0 * n.y, 1.0 * n.z})));
    }
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    style.camera.zoom = 3;
    auto effectLayer = std::make_unique<toolkit::Layer>();
    for (bool const hasEffect : {false, true}) {
        for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
            style.mesh.shading = shading;
            auto const drawn = [&](std::vector<MeshData> const& meshes, ObjectTransform const& placed) {
                Scene const its(meshes);
                EffectSpec const spec{ScatteringEffect(), 1};
                std::unique_ptr<EffectRenderer> effect;
                if (hasEffect) {
                    Result<EffectSubject> subject = EffectSubject::prepare(spec, meshes, its, 1);
                    effect = std::make_unique<EffectRenderer>(*effectLayer, spec, style.mesh,
                                                              std::move(subject.value()));
                }
                Viewer drawing(*effectLayer, its, style, effect.get());
                drawing.setTransform(1, placed);
                return TiledPicture(size, oneTile).draw(drawing, *effectLayer, context()).value();
            };
            Picture const expected = drawn(scaled, {});
            Picture const untouched = drawn(plain, {});
            Picture const picture = drawn(plain, transform);
            int differing = 0;
            int moved = 0;
            for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
                differing += std::abs(picture.pixels[i] - expected.pixels[i]) > 6 ? 1 : 0;
                moved += std::abs(picture.pixels[i] - untouched.pixels[i]) > 6 ? 1 : 0;
            }
            EXPECT_LT(differing, 40) << hasEffect << static_cast<int>(shading);
            EXPECT_GT(moved, 1000) << "the transform is seen";
        }
    }
}

TEST_F(Editing_gl_test, transformsThatCannotBeDrawnChangeNothing) {
    ObjectTransform flat;
    flat.scale.x = 0;
    view().setTransform(1, flat);
    view().setTransform(7, movedBy({1, 0, 0}));
    EXPECT_TRUE(view().transforms()[1].isIdentity());
    EXPECT_EQ(view().transforms().size(), 3U);
}

// == Gizmos ==

TEST_F(Editing_gl_test, eachHandleIsFoundWhereItIsDrawnAndYellowThere) {
    size = {224, 224};
    scene = Scene({cube("cube.obj", {0, 0, 0}, ORANGE)});
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    ObjectTransform transform = movedBy({0.1, 0.05, 0});
    transform.rotation = Rotation::ofDegrees({10, 20, 30});
    struct Row {
        Gizmo gizmo;
        GizmoHandle handle;
        Point place;  // along the handles, in their lengths
        char const* owner;
    };
    double const aside = std::sqrt(0.5);
    for (Row const& row : {
             Row{Gizmo::MOVE, GizmoHandle::X, {0.8, 0, 0}, "gizmo move X"},
             Row{Gizmo::MOVE, GizmoHandle::Y, {0, 0.8, 0}, "gizmo move Y"},
             Row{Gizmo::MOVE, GizmoHandle::Z, {0, 0, 0.8}, "gizmo move Z"},
             Row{Gizmo::MOVE, GizmoHandle::CENTER, {0, 0, 0}, "gizmo move center"},
             Row{Gizmo::MOVE, GizmoHandle::YZ, {0, 0.3, 0.3}, "gizmo move YZ"},
             Row{Gizmo::MOVE, GizmoHandle::XZ, {0.3, 0, 0.3}, "gizmo move XZ"},
             Row{Gizmo::MOVE, GizmoHandle::XY, {0.3, 0.3, 0}, "gizmo move XY"},
             Row{Gizmo::SCALE, GizmoHandle::X, {0.9, 0, 0}, "gizmo scale X"},
             Row{Gizmo::SCALE, GizmoHandle::Y, {0, 0.9, 0}, "gizmo scale Y"},
             Row{Gizmo::SCALE, GizmoHandle::Z, {0, 0, 0.9}, "gizmo scale Z"},
             Row{Gizmo::SCALE, GizmoHandle::CENTER, {0, 0, 0}, "gizmo scale center"},
             Row{Gizmo::SCALE, GizmoHandle::YZ, {0, 0.3, 0.3}, "gizmo scale YZ"},
             Row{Gizmo::SCALE, GizmoHandle::XZ, {0.3, 0, 0.3}, "gizmo scale XZ"},
             Row{Gizmo::SCALE, GizmoHandle::XY, {0.3, 0.3, 0}, "gizmo scale XY"},
             Row{Gizmo::ROTATE, GizmoHandle::X, {0, aside, aside}, "gizmo rotate X"},
             Row{Gizmo::ROTATE, GizmoHandle::Y, {aside, 0, aside}, "gizmo rotate Y"},
             Row{Gizmo::ROTATE, GizmoHandle::Z, {aside, aside, 0}, "gizmo rotate Z"},
             Row{Gizmo::ROTATE, GizmoHandle::CENTER, {0, 0, 0}, "gizmo rotate view"},
         }) {
        SCOPED_TRACE(row.owner);
        style.gizmo = row.gizmo;
        viewer.reset();
        view().setTransform(0, transform);
        view().setSelected(0);
        toolkit::View const seen = view().view(size);
        Point const pivot = pivotOf(scene, 0) + transform.translation * scene.unitsPerFileUnit();
        double const reach = GIZMO_LENGTH * size.height / seen.pixelsPerUnit(pivot);
        Point const place = pivot + handlesOf(row.gizmo, transform)(row.place) * reach;
        toolkit::ScreenPoint at = seen.project(place);
        if (row.gizmo == Gizmo::ROTATE && row.handle == GizmoHandle::CENTER) {
            at.x += GIZMO_LENGTH * size.height * GIZMO_VIEW_CIRCLE;
        }
        EXPECT_EQ(pick(at.x, at.y), row.owner);
        int const before = countYellow(draw());
        view().setHighlighted(row.handle);
        EXPECT_GT(countYellow(draw()), before + 10);
    }
}

TEST_F(Editing_gl_test, aGizmoOverAnObjectIsAlwaysEquallyLarge) {
    // The arrow's end, at different distances from the viewer.
    scene = Scene({cube("cube.obj", {0, 0, 0}, ORANGE), cube("far.obj", {-8, 0, -40}, ORANGE)});
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    style.gizmo = Gizmo::ROTATE;
    for (std::size_t const object : {0, 1}) {
        view().setSelected(object);
        toolkit::ScreenPoint const at = view().view(size).project(pivotOf(scene, object));
        double const radius = GIZMO_LENGTH * size.height * GIZMO_VIEW_CIRCLE;
        EXPECT_EQ(pick(at.x, at.y - radius), "gizmo rotate view");
        EXPECT_EQ(pick(at.x, at.y + radius), "gizmo rotate view");
    }
}

TEST_F(Editing_gl_test, handlesThatCannotBeDraggedAreLeftOut) {
    scene = Scene({cube("cube.obj", {0, 0, 0}, ORANGE)});
    style.gizmo = Gizmo::MOVE;
    view().setSelected(0);
    // In the front view z is a point, and the planes along it are lines over the axes.
    EXPECT_EQ(pick(56, 56), "gizmo move center");
    EXPECT_EQ(pick(56 + 6, 56), "gizmo move X");
    EXPECT_EQ(pick(56 + 5, 56 - 5), "gizmo move XY");
}

TEST_F(Editing_gl_test, withoutASelectionTheGizmoIsAtTheOriginWithoutPlanes) {
    scene = Scene({cube("cube.obj", {0, 0, 0}, ORANGE)});
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    style.gizmo = Gizmo::MOVE;
    Picture const atOrigin = draw();
    view().setSelected(0);
    EXPECT_NE(draw().pixels, atOrigin.pixels);
    view().setSelected(std::nullopt);
    EXPECT_EQ(draw().pixels, atOrigin.pixels);
}
