#include "viewport/drawing/TiledPicture.h"

#include "tests/viewport/drawing/ViewerTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace vellum;
using namespace vellum::viewport;

namespace {

class Viewer_gl_test : public ViewerTest {};

bool isOrange(unsigned char const* pixel) {
    return pixel[0] > 60 && pixel[0] > 2 * pixel[2] + 20;
}

int countOrange(Picture const& picture) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            count += isOrange(at(picture, x, y)) ? 1 : 0;
        }
    }
    return count;
}

struct Difference {
    int largest;
    double mean;
};

Difference compare(Picture const& a, Picture const& b) {
    Difference difference{0, 0};
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        int const one = std::abs(a.pixels[i] - b.pixels[i]);
        difference.largest = std::max(difference.largest, one);
        difference.mean += static_cast<double>(one) / static_cast<double>(a.pixels.size());
    }
    return difference;
}

}  // namespace

TEST_F(Viewer_gl_test, everyShadingGizmoAndViewDrawsWithoutAnErrorOfOpenGL) {
    for (Shading const& shading : {Shading::BOX, Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
        for (Gizmo const& gizmo : {Gizmo::NONE, Gizmo::MOVE, Gizmo::ROTATE, Gizmo::SCALE}) {
            for (unsigned int view = 0; view < 7; ++view) {
                style.mesh.shading = shading;
                style.gizmo = gizmo;
                style.camera.view = static_cast<toolkit::ViewKind>(view);
                Picture const picture = draw();
                ASSERT_EQ(picture.pixels.size(), 4U * 112 * 112);
                pick(56, 56);
            }
        }
    }
    EXPECT_EQ(layer->currentDepthTest().mode, static_cast<unsigned int>(DEPTH_TEST_OFF))
        << "a push without a pop";
    EXPECT_EQ(layer->currentLineWidth(), 1.0F) << "a push without a pop";
}

TEST_F(Viewer_gl_test, theModelFillsThePictureInEveryView) {
    for (unsigned int view = 0; view < 7; ++view) {
        style.camera.view = static_cast<toolkit::ViewKind>(view);
        Picture const picture = draw();
        // A cube seen along an axis is a square of 86 % of the side: 9277 of 12544 pixels. Its perspective
        // outline is a hexagon of more than a third of the picture.
        int const orangePixels = countOrange(picture);
        EXPECT_GT(orangePixels, view == 0 ? 4200 : 9000) << savePicture("viewer_view");
        EXPECT_LT(orangePixels, 9700);
        EXPECT_TRUE(isOrange(at(picture, 56, 56)));
        EXPECT_FALSE(isOrange(at(picture, 2, 2)));
    }
}

TEST_F(Viewer_gl_test, backgroundIsLighterAboveAndOpaque) {
    Picture const picture = draw();
    EXPECT_GT(at(picture, 1, 1)[2], at(picture, 110, 110)[2] + 20);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        ASSERT_EQ(picture.pixels[i], 255);
    }
}

TEST_F(Viewer_gl_test, tilesJoinWithoutSeams) {
    style.gizmo = Gizmo::MOVE;
    size.width = 150;
    size.height = 130;
    for (toolkit::ViewKind const& view : {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::TOP}) {
        for (Shading const& shading : {Shading::SMOOTH, Shading::WIREFRAME, Shading::BOX}) {
            style.camera.view = view;
            style.mesh.shading = shading;
            // Tiles whose edges are elsewhere: 96 instead of 112 pixels. Only the rounding of the crop and of
            // the rasterization may differ.
            Picture const wide = draw({2, 112, 112, 8});
            Picture const narrow = draw({2, 96, 96, 16});
            Difference const difference = compare(wide, narrow);
            EXPECT_LT(difference.mean, 0.1);
            EXPECT_LT(difference.largest, 70) << "one line that is cut at an edge would differ by more";
        }
    }
}

TEST_F(Viewer_gl_test, pickingFindsModelsAndNothingBesideThem) {
    EXPECT_EQ(pick(56, 56), "16 cube.obj");
    EXPECT_EQ(pick(0, 0), "nothing");
    EXPECT_EQ(pick(111, 111), "nothing");
    style.mesh.shading = Shading::WIREFRAME;
    EXPECT_EQ(pick(56, 56), "16 cube.obj");
    style.mesh.shading = Shading::BOX;
    EXPECT_EQ(pick(56, 56), "16 cube.obj");
}

TEST_F(Viewer_gl_test, pickingFindsTheNearerModel) {
    scene = Scene({cube("far.obj", {0, 0, -5}, orange), cube("near.obj", {0, 0, 5}, orange),
                   cube("middle.obj", {0, 0, 0}, orange)});
    style.camera.view = toolkit::ViewKind::FRONT;
    EXPECT_EQ(pick(56, 56), "17 near.obj");
    style.camera.view = toolkit::ViewKind::BACK;
    EXPECT_EQ(pick(56, 56), "16 far.obj");
}

TEST_F(Viewer_gl_test, pickingFindsHandlesBeforeModels) {
    // In the front view a handle of 118 / 720 of the side, 18 pixels, goes to the right along x and up along
    // y.
    style.camera.view = toolkit::ViewKind::FRONT;
    style.gizmo = Gizmo::MOVE;
    EXPECT_EQ(pick(56 + 18, 56), "1 gizmo move X");
    EXPECT_EQ(pick(56, 56 - 18), "2 gizmo move Y");
    EXPECT_EQ(pick(56, 56 + 18), "16 cube.obj");
    style.gizmo = Gizmo::SCALE;
    EXPECT_EQ(pick(56 + 17, 56), "1 gizmo scale X");
    EXPECT_EQ(pick(56, 56 - 17), "2 gizmo scale Y");
    style.camera.view = toolkit::ViewKind::RIGHT;
    EXPECT_EQ(pick(56 - 17, 56), "3 gizmo scale Z");
    style.camera.view = toolkit::ViewKind::FRONT;
    style.gizmo = Gizmo::ROTATE;
    // The circle about z faces the viewer; those about x and y are lines through the center.
    int const diagonal = static_cast<int>(std::lround(18.35 * std::sqrt(0.5)));
    EXPECT_EQ(pick(56 + diagonal, 56 - diagonal), "3 gizmo rotate Z");
    EXPECT_EQ(pick(56, 56 - 10), "1 gizmo rotate X");
    EXPECT_EQ(pick(56 - 10, 56), "2 gizmo rotate Y");
    EXPECT_EQ(pick(56 + 9, 56 - 9), "16 cube.obj");
}

TEST_F(Viewer_gl_test, theCenterOfTheScaleGizmoIsAHandle) {
    // From behind, z points away and its handle is hidden; the shafts along x and y start in the middle of
    // the box.
    style.camera.view = toolkit::ViewKind::BACK;
    style.gizmo = Gizmo::SCALE;
    size.width = 1000;
    size.height = 1000;
    // Half the box is 0.075 of a handle of 164 pixels: 12 pixels.
    EXPECT_EQ(pick(500 - 8, 500 + 8), "4 gizmo scale center");
}

TEST_F(Viewer_gl_test, gizmosAreDrawnOverTheModelInTheirColors) {
    style.camera.view = toolkit::ViewKind::FRONT;
    style.gizmo = Gizmo::MOVE;
    Picture const picture = draw();
    unsigned char const* const x = at(picture, 56 + 18, 56);
    unsigned char const* const y = at(picture, 56, 56 - 18);
    EXPECT_TRUE(x[0] > 150 && x[1] < 110 && x[2] > 40) << "red, not the orange below it";
    EXPECT_TRUE(y[1] > y[0] && y[1] > 120) << "green";
}

TEST_F(Viewer_gl_test, buffersAndImmediateModeGiveTheSamePicture) {
    scene = Scene({cube("cube.obj", {0, 0, 0}, orange), texturedSquare()});
    for (Shading const& shading : {Shading::BOX, Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
        for (int const& way : {0, 1, 2, 3, 4}) {
            style = ViewStyle{};
            style.mesh.shading = shading;
            style.mesh.edges = way == 1;
            style.mesh.edgesBlend = way == 2;
            style.mesh.connectivity = way == 3;
            style.mesh.wireframeBack = way == 4;
            style.mesh.normals = way == 3 ? Normals::VERTEX : way == 4 ? Normals::FACE : Normals::NONE;
            Picture const fromBuffers = draw();
            style.mesh.immediate = true;
            Picture const immediate = draw();
            EXPECT_LT(compare(fromBuffers, immediate).mean, 0.02) << static_cast<int>(shading) << ' ' << way;
        }
    }
    EXPECT_EQ(layer->currentLineWidth(), 1.0F) << "a push without a pop";
}

TEST_F(Viewer_gl_test, everyOverlayIsSeen) {
    Picture const plain = draw();
    auto const differs = [&](ViewStyle const& changed) {
        style = changed;
        return compare(plain, draw()).mean > 0.05;
    };
    ViewStyle const start = style;
    ViewStyle changed = start;
    EXPECT_FALSE(differs(changed));
    changed.mesh.edgesBlend = true;
    EXPECT_TRUE(differs(changed));
    changed = start;
    changed.mesh.connectivity = true;
    EXPECT_TRUE(differs(changed));
    changed = start;
    changed.mesh.normals = Normals::VERTEX;
    EXPECT_TRUE(differs(changed));
    changed.mesh.normals = Normals::FACE;
    EXPECT_TRUE(differs(changed));
    changed = start;
    changed.mesh.importPreview = true;
    EXPECT_TRUE(differs(changed));
}

TEST_F(Viewer_gl_test, thePreviewOfAnImportIsRed) {
    style.mesh.importPreview = true;
    scene = Scene({cube("cube.obj", {0, 0, 0}, orange)}, nullptr, {}, {}, Scene::Imports::KEPT);
    style.camera.view = toolkit::ViewKind::FRONT;
    Picture const picture = draw();
    unsigned char const* const middle = at(picture, 40, 50);
    EXPECT_GT(middle[0], 60);
    EXPECT_LT(middle[1], 20);
    EXPECT_EQ(pick(40, 50), "16 cube.obj");
}

TEST_F(Viewer_gl_test, edgesAreLightLinesOverTheSurface) {
    // Seen from the front the square spans the picture from border to border of the framing; its four sides
    // are borders, the diagonal between its triangles is not.
    scene = Scene({texturedSquare()});
    style.camera.view = toolkit::ViewKind::FRONT;
    style.mesh.edges = true;
    Picture const with = draw();
    style.mesh.edges = false;
    Picture const without = draw();
    int changed = 0;
    for (int i = 20; i < 92; ++i) {
        changed += std::abs(at(with, i, 56)[0] - at(without, i, 56)[0]) > 20 ? 1 : 0;
        changed += std::abs(at(with, i, 111 - i)[0] - at(without, i, 111 - i)[0]) > 20 ? 1 : 0;
    }
    EXPECT_EQ(changed, 0) << "inside nothing is an edge";
    int borders = 0;
    for (int i = 0; i < 20; ++i) {
        borders += std::abs(at(with, i, 40)[1] - at(without, i, 40)[1]) > 40 ? 1 : 0;
    }
    EXPECT_GT(borders, 0) << "the left side";
    EXPECT_LT(borders, 5);
}

TEST_F(Viewer_gl_test, texturesAreSampledWhereTheCoordinatesSay) {
    scene = Scene({texturedSquare()});
    style.camera.view = toolkit::ViewKind::FRONT;
    for (bool const& immediate : {false, true}) {
        for (Shading const& shading : {Shading::SMOOTH, Shading::FACETED}) {
            style.mesh.immediate = immediate;
            style.mesh.shading = shading;
            Picture const picture = draw();
            unsigned char const* const lowerLeft = at(picture, 36, 76);
            unsigned char const* const lowerRight = at(picture, 76, 76);
            unsigned char const* const upperLeft = at(picture, 36, 36);
            unsigned char const* const upperRight = at(picture, 76, 36);
            EXPECT_TRUE(lowerLeft[0] > 2 * lowerLeft[1] && lowerLeft[0] > 2 * lowerLeft[2]) << "red";
            EXPECT_TRUE(lowerRight[1] > 2 * lowerRight[0] && lowerRight[1] > 2 * lowerRight[2]) << "green";
            EXPECT_TRUE(upperLeft[2] > 2 * upperLeft[0] && upperLeft[2] > 2 * upperLeft[1]) << "blue";
            EXPECT_TRUE(upperRight[0] > 100 && upperRight[1] > 100 && upperRight[2] > 100) << "white";
        }
    }
}

TEST_F(Viewer_gl_test, trianglesSeenFromBehindBecomeOutlines) {
    scene = Scene({texturedSquare()});
    // The white quarter is at the upper left from behind.
    style.camera.view = toolkit::ViewKind::BACK;
    Picture const solid = draw();
    style.mesh.wireframeBack = true;
    Picture const outlined = draw();
    unsigned char const* const inside = at(outlined, 36, 50);
    EXPECT_GT(at(solid, 36, 50)[0] + at(solid, 36, 50)[1] + at(solid, 36, 50)[2],
              inside[0] + inside[1] + inside[2] + 60)
        << "the background is seen through it";
}

// == Materials ==

TEST_F(Viewer_gl_test, theNearerOfTwoPanesCoversTheOther) {
    style.camera.view = toolkit::ViewKind::FRONT;
    MeshData red = square(-0.5, {1, 0, 0, 1});
    MeshData blue = square(0.5, {0, 0, 1, 1});
    red.materials[0].opacity = 0.75F;
    blue.materials[0].opacity = 0.75F;
    for (bool const isRedFirst : {true, false}) {
        scene = isRedFirst ? Scene({red, blue}) : Scene({blue, red});
        Picture const front = draw();
        unsigned char const* const ahead = at(front, 56, 50);
        EXPECT_GT(ahead[2], 2 * ahead[0]) << savePicture("viewer_panes");
        EXPECT_GT(ahead[0], 20) << "red shines through";
        style.camera.view = toolkit::ViewKind::BACK;
        Picture const back = draw();
        EXPECT_GT(at(back, 56, 50)[0], 2 * at(back, 56, 50)[2]);
        style.camera.view = toolkit::ViewKind::FRONT;
    }
}

TEST_F(Viewer_gl_test, trianglesOfOnePaneAreSortedToo) {
    // Two panes in one part, the nearer one first.
    MeshData panes = square(0.5, {0, 0, 1, 0.75F});
    MeshData const behind = square(-0.5, {1, 0, 0, 0.75F});
    panes.positions.insert(panes.positions.end(), behind.positions.begin(), behind.positions.end());
    panes.normals.insert(panes.normals.end(), behind.normals.begin(), behind.normals.end());
    panes.colors.insert(panes.colors.end(), behind.colors.begin(), behind.colors.end());
    panes.textureCoordinates.clear();
    panes.triangles.push_back({4, 5, 6});
    panes.triangles.push_back({4, 6, 7});
    panes.triangleMaterials.assign(4, 0);
    scene = Scene({panes});
    style.camera.view = toolkit::ViewKind::FRONT;
    for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
        style.mesh.shading = shading;
        Picture const picture = draw();
        unsigned char const* const ahead = at(picture, 56, 50);
        EXPECT_GT(ahead[2], 2 * ahead[0]);
        EXPECT_GT(ahead[0], 20);
    }
    style.camera.view = toolkit::ViewKind::PERSPECTIVE;
    Picture const picture = draw();
    unsigned char const* const middle = at(picture, 56, 56);
    EXPECT_GT(middle[2], middle[0]) << savePicture("viewer_panes_perspective");
}

TEST_F(Viewer_gl_test, theOpacityOfTheStyleSortsWhatIsOpaqueInItsFile) {
    MeshData const red = square(-0.5, {1, 0, 0, 1});
    MeshData const blue = square(0.5, {0, 0, 1, 1});
    style.mesh.opacity = 0.75F;
    for (bool const isRedFirst : {true, false}) {
        scene = isRedFirst ? Scene({red, blue}) : Scene({blue, red});
        for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
            style.mesh.shading = shading;
            style.camera.view = toolkit::ViewKind::FRONT;
            Picture const front = draw();
            EXPECT_GT(at(front, 56, 50)[2], 2 * at(front, 56, 50)[0]);
            EXPECT_GT(at(front, 56, 50)[0], 20) << "red shines through";
            style.camera.view = toolkit::ViewKind::BACK;
            Picture const back = draw();
            EXPECT_GT(at(back, 56, 50)[0], 2 * at(back, 56, 50)[2]);
        }
    }
}

TEST_F(Viewer_gl_test, theColorOfTheStyleIsInPlaceOfThoseOfTheFile) {
    MeshData pane = square(0.5, {0, 0, 1, 0.5F});
    scene = Scene({pane});
    style.camera.view = toolkit::ViewKind::FRONT;
    style.mesh.color = Color4<float>{1, 0, 0, 1};
    for (float const opacity : {1.0F, 0.75F}) {
        style.mesh.opacity = opacity;
        Picture const picture = draw();
        EXPECT_GT(at(picture, 56, 50)[0], 2 * at(picture, 56, 50)[2]) << opacity;
    }
    style.mesh.opacity = 1;
    style.mesh.shading = Shading::WIREFRAME;
    style.mesh.lineWidth = 5;
    Picture const lines = draw();
    int redCount = 0;
    for (int x = 0; x < lines.width; ++x) {
        unsigned char const* const pixel = at(lines, x, 56);
        redCount += pixel[0] > 150 && pixel[0] > 3 * pixel[2] ? 1 : 0;
    }
    EXPECT_GE(redCount, 8) << "of two or three lines";
}

TEST_F(Viewer_gl_test, whatIsBehindAPaneIsSeenAndCanBePicked) {
    MeshData pane = square(1.5, {0, 0, 1, 1});
    pane.materials[0].opacity = 0.25F;
    scene = Scene({pane, cube("cube.obj", {0, 0, 0}, orange)});
    style.camera.view = toolkit::ViewKind::FRONT;
    unsigned char const* const middle = at(draw(), 56, 50);
    EXPECT_GT(middle[0], middle[2]);
    EXPECT_EQ(pick(56, 50), "16 square.obj") << "the pane is there";
}

TEST_F(Viewer_gl_test, holesOfATextureAreThereAsItsMaterialSays) {
    auto const image = std::make_shared<VL_Image>();
    ASSERT_TRUE(image->create(1, 1, 4, 8));
    std::fill_n(image->getBuffer(), 4, static_cast<unsigned char>(255));
    image->getBuffer()[3] = 102;  // 0.4
    style.camera.view = toolkit::ViewKind::FRONT;
    auto const brightness = [&](AlphaMode mode, float cutoff, float opacity) {
        MeshData pane = square(0, {1, 1, 1, 1});
        pane.materials[0].image = image;
        pane.materials[0].alphaMode = mode;
        pane.materials[0].alphaCutoff = cutoff;
        pane.materials[0].opacity = opacity;
        scene = Scene({pane});
        return static_cast<int>(at(draw(), 56, 50)[1]);
    };
    int const whole = brightness(AlphaMode::SOLID, 0.5F, 1);
    int const hole = brightness(AlphaMode::MASK, 0.5F, 1);
    EXPECT_GT(whole, hole + 60);
    EXPECT_EQ(brightness(AlphaMode::MASK, 0.3F, 1), whole);
    EXPECT_NEAR(brightness(AlphaMode::BLEND, 0.5F, 1), 0.4 * whole + 0.6 * hole, 6);
    EXPECT_NEAR(brightness(AlphaMode::SOLID, 0.5F, 0.5F), 0.5 * whole + 0.5 * hole, 6)
        << "the opacity of the texture is ignored";
    EXPECT_NEAR(brightness(AlphaMode::BLEND, 0.5F, 0.5F), 0.2 * whole + 0.8 * hole, 6);
}

TEST_F(Viewer_gl_test, textureAndColorsOfVerticesAreMultiplied) {
    MeshData mesh = texturedSquare();
    mesh.hasVertexColors = true;
    mesh.colors = {{1, 1, 1, 1}, {1, 1, 1, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}};
    scene = Scene({mesh});
    style.camera.view = toolkit::ViewKind::FRONT;
    Picture const picture = draw();
    unsigned char const* const upperRight = at(picture, 76, 30);
    EXPECT_GT(upperRight[0], 2 * upperRight[1]) << "white of the texture, red of the vertices";
    unsigned char const* const lowerRight = at(picture, 76, 82);
    EXPECT_GT(lowerRight[1], 2 * lowerRight[0]) << "green of the texture";
}

// == Lines and points ==

TEST_F(Viewer_gl_test, linesAndPointsAreDrawnAndPicked) {
    MeshData mesh;
    mesh.name = "lines.obj";
    mesh.positions = {{-1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {1, -1, 0}};
    mesh.colors = {{1, 1, 0, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}, {0, 1, 1, 1}};
    mesh.lines = {{0, 1}};
    mesh.points = {2, 3};
    ASSERT_FALSE(mesh.firstFault("lines.obj").has_value());
    scene = Scene({mesh});
    style.camera.view = toolkit::ViewKind::FRONT;
    for (Shading const shading : {Shading::SMOOTH, Shading::WIREFRAME}) {
        style.mesh.shading = shading;
        Picture const picture = draw();
        EXPECT_GT(at(picture, 56, 55)[0], 150) << savePicture("viewer_lines");
        EXPECT_LT(at(picture, 56, 55)[2], 100);
        int cyan = 0;
        for (int y = 0; y < 112; ++y) {
            for (int x = 0; x < 112; ++x) {
                unsigned char const* const p = at(picture, x, y);
                cyan += p[1] > 150 && p[2] > 150 && p[0] < 100 ? 1 : 0;
            }
        }
        EXPECT_GT(cyan, 10);
    }
    EXPECT_EQ(pick(56, 55), "16 lines.obj");
    EXPECT_EQ(pick(56, 90), "nothing");
}

TEST_F(Viewer_gl_test, depthsAreThoseOfTheModelInUnitsOfTheFile) {
    for (Projection const projection : {Projection::PERSPECTIVE, Projection::PARALLEL}) {
        style.camera.projection = projection;
        style.camera.position = {0, 0, 11};
        style.camera.focus = {0, 0, 0};
        Viewer viewer(*layer, scene, style);
        std::vector<float> const depths = TiledPicture(size, oneTile).drawDepths(viewer);
        ASSERT_EQ(depths.size(), 112U * 112U);
        // The cube's face toward the eye is 10 away; its neighbors are sides, or behind.
        EXPECT_NEAR(depths[56 * 112 + 56], 10, 0.01);
        EXPECT_NEAR(depths[50 * 112 + 62], 10, 0.01) << "along the direction of view, not from the eye";
        EXPECT_TRUE(std::isinf(depths[0])) << "neither grid nor axes have a depth";
        EXPECT_TRUE(std::isinf(depths[105 * 112 + 6]));
    }
}

TEST_F(Viewer_gl_test, aLargerContextDrawsTheSamePicture) {
    constexpr Tiling smallTile{2, 40, 30, 8};
    Picture const whole = draw();
    EXPECT_LE(compare(draw(smallTile), whole).largest, 40);
    EXPECT_LT(compare(draw(smallTile), whole).mean, 0.5);
}

TEST_F(Viewer_gl_test, aMovedCameraDrawsWhatAViewerWithThatCameraDraws) {
    Viewer viewer(*layer, scene, style);
    ASSERT_FALSE(viewer.cameraFault(size));
    CameraSpec moved;
    moved.azimuth = 70;
    moved.elevation = 20;
    ASSERT_FALSE(viewer.setCamera(moved));
    Result<Picture> const picture = TiledPicture(size, oneTile).draw(viewer, *layer, context());
    style.camera = moved;
    EXPECT_EQ(picture.value().pixels, draw().pixels);

    CameraSpec none;
    none.position = {1, 2, 3};
    none.focus = none.position;
    EXPECT_TRUE(viewer.setCamera(none).has_value());
    Result<Picture> const again = TiledPicture(size, oneTile).draw(viewer, *layer, context());
    EXPECT_EQ(again.value().pixels, picture.value().pixels) << "the former camera stays";
}

// == Pixels ==

TEST_F(Viewer_gl_test, aPartOfTheBufferIsReadAsItIsInTheWhole) {
    draw();
    std::vector<unsigned char> const whole = context().readPixels();
    constexpr int LEFT = 61;
    constexpr int TOP = 90;
    constexpr int WIDTH = 77;
    constexpr int HEIGHT = 50;
    std::vector<unsigned char> const part = context().readPixels(LEFT, TOP, WIDTH, HEIGHT);
    ASSERT_EQ(part.size(), 4U * WIDTH * HEIGHT);
    for (int y = 0; y < HEIGHT; ++y) {
        auto const row = whole.begin() + 4 * ((TOP + y) * context().width() + LEFT);
        EXPECT_TRUE(std::equal(row, row + 4 * WIDTH, part.begin() + 4 * y * WIDTH)) << y;
    }
    EXPECT_FALSE(std::equal(part.begin(), part.begin() + 4 * WIDTH, part.end() - 4 * WIDTH))
        << "something is drawn there";
}
