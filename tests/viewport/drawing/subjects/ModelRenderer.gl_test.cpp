#include "viewport/drawing/subjects/ModelRenderer.h"

#include "foundation/basic/ArrayServer.h"
#include "tests/viewport/drawing/ViewerTest.h"
#include "viewport/drawing/subjects/derived_arrays.h"

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

class ModelRenderer_gl_test : public ViewerTest {};

}  // namespace

// == Lines and points ==

namespace {

/// A line across the middle of the front view and a point below it.
MeshData lineAndPoint(double z, Color4<float> const& color) {
    MeshData mesh;
    // The last two are of the box alone.
    mesh.positions = {{-1, 0, z}, {1, 0, z}, {0, -0.5, z}, {-1, -1, z}, {1, 1, z}};
    mesh.colors.assign(5, color);
    mesh.lines = {{0, 1}};
    mesh.points = {2};
    return mesh;
}

/// The rows of a column of the picture that are mostly red, in a part of it.
int redRows(Picture const& picture, int column, int from, int end) {
    int count = 0;
    for (int y = from; y < end; ++y) {
        unsigned char const* const p = at(picture, column, y);
        count += p[0] > 150 && p[1] < 100 && p[2] < 100 ? 1 : 0;
    }
    return count;
}

}  // namespace

TEST_F(ModelRenderer_gl_test, linesAndPointsAreAsWideAndOfTheColorThatIsAskedFor) {
    scene = Scene({lineAndPoint(0, {0, 1, 1, 1})});
    style.camera.view = toolkit::ViewKind::FRONT;
    style.mesh.color = Color4<float>{1, 0, 0, 1};
    Picture const thin = draw();
    EXPECT_GE(redRows(thin, 30, 20, 66), 1) << "the line";
    EXPECT_LE(redRows(thin, 30, 20, 66), 3);
    EXPECT_NEAR(redRows(thin, 56, 66, 100), 4, 1) << "the point";
    style.mesh.lineWidth = 9;
    Picture const thick = draw();
    EXPECT_NEAR(redRows(thick, 30, 20, 66), 9, 1);
    EXPECT_NEAR(redRows(thick, 56, 66, 100), 9, 1);
}

TEST_F(ModelRenderer_gl_test, linesAndPointsAreBlendedFromTheBackToTheFront) {
    style.camera.view = toolkit::ViewKind::FRONT;
    style.mesh.lineWidth = 9;
    style.mesh.opacity = 0.75F;
    MeshData const red = lineAndPoint(-0.5, {1, 0, 0, 1});
    MeshData const blue = lineAndPoint(0.5, {0, 0, 1, 1});
    MeshData const pane = square(0, {0, 1, 0, 1});
    for (bool const isRedFirst : {true, false}) {
        scene = isRedFirst ? Scene({red, pane, blue}) : Scene({blue, pane, red});
        Picture const front = draw();
        for (int const row : {56, 78}) {
            unsigned char const* const ahead = at(front, 56, row);
            EXPECT_NEAR(ahead[2], 0.75 * 255, 20) << savePicture("viewer_blended_lines");
            EXPECT_LT(ahead[0], 60) << "red is behind pane and line";
            EXPECT_GT(ahead[1], 15) << "the pane shines through";
        }
    }
    // Without a pane, and with the opacity of the file.
    style.mesh.opacity = 1;
    scene = Scene({lineAndPoint(-0.5, {1, 0, 0, 0.5F}), lineAndPoint(0.5, {0, 0, 1, 0.5F})});
    unsigned char const* const both = at(draw(), 56, 56);
    EXPECT_GT(both[2], both[0] + 40);
    EXPECT_GT(both[0], 60);
}

// == Light ==

namespace {

/// An image of one color.
std::shared_ptr<VL_Image const> plainImage(std::vector<unsigned char> const& color) {
    auto image = std::make_shared<VL_Image>();
    image->create(1, 1, static_cast<unsigned int>(color.size()), 8);
    std::copy(color.begin(), color.end(), image->getBuffer());
    return image;
}

}  // namespace

TEST_F(ModelRenderer_gl_test, surfacesGiveOffLight) {
    MeshData lamp = square(0, {0, 0, 0, 1});
    style.camera.view = toolkit::ViewKind::FRONT;
    scene = Scene({lamp});
    EXPECT_LT(at(draw(), 56, 50)[1], 20);
    lamp.materials[0].emission = {0, 1, 0, 1};
    scene = Scene({lamp, square(-1, {0, 0, 0, 1})});
    EXPECT_GT(at(draw(), 56, 50)[1], 230);
    scene = Scene({square(-1, {0, 0, 0, 1}), square(0, {0, 0, 0, 1})});
    EXPECT_LT(at(draw(), 56, 50)[1], 20) << "only those";
}

TEST_F(ModelRenderer_gl_test, highlightsAreThoseOfTheMaterial) {
    MeshData ball = cube("ball.obj", {0, 0, 0}, {0, 0, 0, 1});
    ball.materials.resize(1);
    ball.triangleMaterials.assign(ball.triangles.size(), 0);
    auto const brightest = [&] {
        scene = Scene({ball});
        Picture const picture = draw();
        int most = 0;
        for (int y = 30; y < 80; ++y) {
            for (int x = 30; x < 80; ++x) {
                most = std::max(most, static_cast<int>(at(picture, x, y)[0]));
            }
        }
        return most;
    };
    int const plain = brightest();
    ball.materials[0].specular = {1, 1, 1, 1};
    ball.materials[0].shininess = 4;
    EXPECT_GT(brightest(), plain + 60);
}

TEST_F(ModelRenderer_gl_test, anEmissionTextureIsAddedToTheSurface) {
    style.camera.view = toolkit::ViewKind::FRONT;
    MeshData const square = texturedSquare();
    scene = Scene({square});
    Picture const without = draw();
    MeshData lamp = square;
    lamp.materials[0].emissionImage = plainImage({0, 0, 200});
    for (bool const immediate : {false, true}) {
        for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
            style.mesh.immediate = immediate;
            style.mesh.shading = shading;
            scene = Scene({lamp});
            Picture const with = draw();
            for (int const x : {36, 76}) {
                for (int const y : {36, 76}) {
                    unsigned char const* const dark = at(without, x, y);
                    unsigned char const* const light = at(with, x, y);
                    EXPECT_NEAR(light[0], dark[0], 2);
                    EXPECT_NEAR(light[1], dark[1], 2);
                    EXPECT_NEAR(light[2], std::min(255, dark[2] + 200), 2) << savePicture("light");
                }
            }
            EXPECT_NEAR(at(with, 2, 2)[2], at(without, 2, 2)[2], 2) << "nothing beside the surface";
        }
    }
    style.mesh.color = Color4<float>{1, 0, 0, 1};
    EXPECT_LT(at(draw(), 36, 76)[2], 60) << "the color is in place of it";
}

TEST_F(ModelRenderer_gl_test, anEmissionTextureIsSeenWhateverTheSurfaceHas) {
    style.camera.view = toolkit::ViewKind::FRONT;
    auto const blueness = [&](MeshData mesh) {
        mesh.materials[0].emissionImage = plainImage({0, 0, 200});
        scene = Scene({mesh});
        return static_cast<int>(at(draw(), 50, 56)[2]);
    };
    EXPECT_GT(blueness(square(0, {0, 0, 0, 1})), 180) << "without another texture";
    MeshData colored = square(0, {0, 0, 0, 1});
    colored.colors[0] = {1, 0, 0, 1};
    EXPECT_GT(blueness(colored), 180) << "with colors of vertices";
    MeshData masked = square(0, {0, 0, 0, 1});
    masked.materials[0].image = plainImage({0, 0, 0, 0});
    masked.materials[0].alphaMode = AlphaMode::MASK;
    EXPECT_LT(blueness(masked), 120) << "a surface that is not there gives off no light";
    MeshData pane = square(0, {0, 0, 0, 1});
    scene = Scene({pane});
    int const opaque = at(draw(), 50, 56)[2];
    pane.materials[0].opacity = 0;
    scene = Scene({pane});
    int const behind = at(draw(), 50, 56)[2];
    pane.materials[0].opacity = 0.5F;
    EXPECT_NEAR(blueness(pane), 0.5 * (opaque + 200) + 0.5 * behind, 8) << "as opaque as the pane";
}

TEST_F(ModelRenderer_gl_test, anEmissionTextureMayLieOtherwiseThanTheColor) {
    style.camera.view = toolkit::ViewKind::FRONT;
    MeshData lamp = square(0, {0, 0, 0, 1});
    lamp.materials[0].image = plainImage({0, 0, 0});
    lamp.materials[0].emissionImage = texturedSquare().materials[0].image;
    for (float const opacity : {1.0F, 0.9F}) {
        style.mesh.opacity = opacity;
        lamp.materials[0].emissionTexture.transform = {};
        scene = Scene({lamp});
        Picture const straight = draw();
        EXPECT_GT(at(straight, 36, 76)[0], 180) << "red, at the lower left";
        lamp.materials[0].emissionTexture.transform.u0 = 0.5F;
        scene = Scene({lamp});
        Picture const moved = draw();
        EXPECT_GT(at(moved, 36, 76)[1], 180) << "green, by half of the texture";
        EXPECT_LT(at(moved, 36, 76)[0], 60);
    }
}

// == Large meshes ==

namespace {

/// A wavy sheet of at least LARGE_MESH triangles with a ridge, which is a hard edge.
MeshData largeSheet() {
    constexpr unsigned int SIDE = 184;
    MeshData mesh;
    for (unsigned int y = 0; y <= SIDE; ++y) {
        for (unsigned int x = 0; x <= SIDE; ++x) {
            double const u = x / double(SIDE);
            double const v = y / double(SIDE);
            mesh.positions.push_back({u, v, 0.05 * std::sin(9 * u) + (x > SIDE / 2 ? u : 1 - u)});
        }
    }
    for (unsigned int y = 0; y < SIDE; ++y) {
        for (unsigned int x = 0; x < SIDE; ++x) {
            unsigned int const i = y * (SIDE + 1) + x;
            mesh.triangles.push_back({i, i + 1, i + SIDE + 2});
            mesh.triangles.push_back({i, i + SIDE + 2, i + SIDE + 1});
        }
    }
    mesh.colors.assign(mesh.positions.size(), {0.7F, 0.7F, 0.7F, 1});
    return mesh;
}

unsigned int sizeOf(ArrayId const& id) {
    return VL_ArrayServer.resolve(id)->size;
}

}  // namespace

TEST_F(ModelRenderer_gl_test, largeMeshesLookTheSameInEveryStyleThatFollowsAnother) {
    struct Change {
        char const* name;
        void (*change)(MeshStyle& style);
    };
    for (Change const& change : {Change{"faceted", [](MeshStyle& s) { s.shading = Shading::FACETED; }},
                                 Change{"normals", [](MeshStyle& s) { s.normals = Normals::FACE; }},
                                 Change{"blended edges", [](MeshStyle& s) { s.edgesBlend = true; }},
                                 Change{"connectivity", [](MeshStyle& s) { s.connectivity = true; }}}) {
        SCOPED_TRACE(change.name);
        scene = Scene({largeSheet()});
        style.mesh = {};
        Picture const smooth = draw();
        change.change(style.mesh);
        Picture const second = draw();
        EXPECT_TRUE(second.pixels != smooth.pixels);
        style.mesh = {};
        EXPECT_TRUE(draw().pixels == smooth.pixels);
        // Nothing was drawn of this scene before.
        scene = Scene({largeSheet()});
        change.change(style.mesh);
        EXPECT_TRUE(draw().pixels == second.pixels);
    }
}

TEST_F(ModelRenderer_gl_test, smoothLargeMeshesKeepNothingThatOtherStylesDraw) {
    scene = Scene({largeSheet()});
    Mesh const& mesh = *scene.models().front().parts.front().mesh;
    ASSERT_GE(mesh.triangleCount(), LARGE_MESH);
    EXPECT_EQ(sizeOf(mesh.adjacency()), mesh.triangleCount());
    EXPECT_EQ(sizeOf(mesh.faceNormals()), mesh.triangleCount());
    draw();
    EXPECT_EQ(sizeOf(mesh.adjacency()), 0U);
    EXPECT_EQ(mesh.faceNormalFault(), MeshFault_ns::FACE_NORMAL_COUNT);
    EXPECT_EQ(mesh.surfaceFault(), MeshFault_ns::FACE_NORMAL_COUNT) << "no other one";
    style.mesh.shading = Shading::FACETED;
    style.mesh.edges = true;
    draw();
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
    EXPECT_EQ(sizeOf(mesh.adjacency()), mesh.triangleCount());
}
