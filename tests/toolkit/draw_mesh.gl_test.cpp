#include "toolkit/draw_mesh.h"

#include "Core_RL_GL.h"
#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/attribute_state.h"
#include "tests/support/counted_memory.h"
#include "toolkit/Lit.h"
#include "toolkit/View.h"
#include "toolkit/internal/gl.h"
#include "toolkit/mesh_arrays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;
using testing::IsEmpty;

namespace {

using Pixels = std::vector<unsigned char>;

/// Where a camera stands that looks at the origin.
struct Place {
    double x;
    double y;
    double z;
};

constexpr Place PLACES[] = {
    {2.2, -2.6, 2.4}, {0.6, -3.9, 0.7}, {-3.6, 0.4, 1.7}, {0.05, -0.1, 4.2}, {2.4, 2.4, -2.4}};
constexpr Place ASLANT = PLACES[0];

constexpr Color4<float> GREEN{0, 1, 0, 1};

class DrawMesh_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        gl_spy::GlTest::SetUp();
        glClearColor(0, 0, 0, 1);
        glEnable(GL_DEPTH_TEST);
        look(ASLANT);
        style.color = {1, 0, 0, 1};
        style.edgeColor = GREEN;
        layer.pushDepthTest({DEPTH_LESS, true});
    }

    static void look(Place const& from) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(45, 1, 0.5, 20);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        bool const isFromAbove = std::hypot(from.x, from.y) < 1;
        gluLookAt(from.x, from.y, from.z, 0, 0, 0, 0, isFromAbove ? 1 : 0, isFromAbove ? 0 : 1);
    }

    void make(mesh_shapes::Shape const& shape, double hardEdges) {
        ASSERT_TRUE(setPositions(mesh, shape.positions));
        ASSERT_TRUE(setTriangles(mesh, shape.triangles));
        ASSERT_TRUE(prepareMesh(mesh, hardEdges));
    }

    Pixels picture(std::function<void()> const& draw) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        return readPixels();
    }
    Pixels drawn() {
        return picture([this] { drawMesh(renderer, style); });
    }
    Pixels drawnLit() {
        return picture([this] {
            Lit const lit(View::current());
            drawMesh(renderer, style);
        });
    }

    static std::size_t count(Pixels const& pixels, std::function<bool(unsigned char const*)> const& is) {
        std::size_t found = 0;
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            found += is(&pixels[i]) ? 1 : 0;
        }
        return found;
    }
    static std::size_t greens(Pixels const& pixels) {
        return count(pixels, [](unsigned char const* p) { return p[1] > 200 && p[0] < 60; });
    }
    static std::size_t covered(Pixels const& pixels) {
        return count(pixels, [](unsigned char const* p) { return p[0] + p[1] + p[2] > 0; });
    }

    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
    MeshStyle style;
};

// == Edges ==

/// What the edges should look like: surfaces far behind their true place cannot cover the edges that they
/// have.
void edgesOverSurfacePushedFar(Mesh_RL_GL& renderer, MeshStyle const& style, Core_RL& layer) {
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(8, 64);
    layer.pushColor({1, 0, 0, 1});
    renderer.render();
    layer.popColor(1);
    glDisable(GL_POLYGON_OFFSET_FILL);
    layer.pushColor(style.edgeColor);
    layer.pushLineWidth(style.lineWidth);
    if (style.edges == Edges::TRIANGLES) {
        layer.pushFillingFront(FILLING_LINES);
        layer.pushFillingBack(FILLING_LINES);
        renderer.render();
        layer.popFillingBack();
        layer.popFillingFront();
    } else {
        renderer.renderEdges();
    }
    layer.popLineWidth();
    layer.popColor(1);
}

// Surfaces far behind their true place show some edges more: those that lie behind their rims.
constexpr double WHOLE = 0.93;

TEST_F(DrawMesh_gl_test, edgesAreWholeOverTheSurfaceFromEverySide) {
    for (bool const isWavy : {false, true}) {
        make(isWavy ? mesh_shapes::grid(6, 0.3) : mesh_shapes::cube(), 40);
        for (Edges const edges : {Edges::HARD, Edges::TRIANGLES}) {
            for (float const width : {1.0F, 1.5F, 5.0F}) {
                style.edges = edges;
                style.lineWidth = width;
                int number = 0;
                for (Place const& place : PLACES) {
                    look(place);
                    std::size_t const seen = greens(drawn());
                    std::string const name = std::string("drawMesh_edges_") + (isWavy ? "grid_" : "cube_") +
                                             std::to_string(static_cast<int>(edges)) + "_" +
                                             std::to_string(static_cast<int>(width * 10)) + "_" +
                                             std::to_string(number++);
                    std::string const path = savePicture(name);
                    std::size_t const all =
                        greens(picture([this] { edgesOverSurfacePushedFar(renderer, style, layer); }));
                    EXPECT_GT(all, 200U);
                    EXPECT_GE(static_cast<double>(seen), WHOLE * static_cast<double>(all)) << path;
                }
            }
        }
    }
}

TEST_F(DrawMesh_gl_test, hiddenEdgesAreHidden) {
    make(mesh_shapes::cube(), 40);
    // From the front, one face covers all others.
    look({0, 0, 4.5});
    style.edges = Edges::HARD;
    style.lineWidth = 1;
    Pixels const hard = drawn();
    EXPECT_EQ(readPixel(128, 128)[0], 255);
    std::size_t const frame = greens(hard);
    std::size_t const all = greens(picture([this] {
        layer.pushColor(GREEN);
        renderer.renderEdges();
        layer.popColor(1);
    }));
    EXPECT_LT(static_cast<double>(frame), 0.7 * static_cast<double>(all))
        << savePicture("drawMesh_all_edges");
    EXPECT_GT(frame, 300U) << "the four edges of the face";
}

TEST_F(DrawMesh_gl_test, shiningEdgesShowHiddenOnesFaintly) {
    make(mesh_shapes::cube(), 40);
    look({0.4, -0.5, 4.5});
    style.edges = Edges::HARD;
    Pixels const hard = drawn();
    style.edges = Edges::SHINING;
    Pixels const shining = drawn();
    std::string const path = savePicture("drawMesh_shining");
    EXPECT_NEAR(static_cast<double>(greens(shining)), static_cast<double>(greens(hard)), 20) << path;
    std::size_t const faint = count(shining, [](unsigned char const* p) { return p[1] > 40 && p[1] < 140; });
    EXPECT_GT(faint, 200U) << path;
    EXPECT_EQ(count(hard, [](unsigned char const* p) { return p[1] > 40 && p[1] < 140; }), 0U);
}

TEST_F(DrawMesh_gl_test, linesAreInTheirOwnColorUnderLights) {
    make(mesh_shapes::cube(), 40);
    style.edges = Edges::HARD;
    std::size_t const unlit = greens(drawn());
    std::size_t const lit = greens(drawnLit());
    std::string const path = savePicture("drawMesh_lit_edges");
    EXPECT_EQ(lit, unlit) << path;
    style.color = GREEN;
    for (Shading const shading : {Shading::WIREFRAME, Shading::BOX}) {
        style.shading = shading;
        EXPECT_EQ(greens(drawnLit()), greens(drawn()));
        EXPECT_GT(greens(drawn()), 300U);
    }
}

TEST_F(DrawMesh_gl_test, edgesHaveTheirColorBesideATexture) {
    make(mesh_shapes::cube(), 40);
    setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>(8, {0.5F, 0.5F}));
    unsigned char const blue[4] = {0, 0, 255, 255};
    layer.loadTextureColor(1, 1, blue, style.texture, TEXTURE_REPEAT);
    style.textureChannel = "uv";
    style.color = {1, 1, 1, 1};
    std::size_t const none = greens(drawn());
    style.edges = Edges::HARD;
    EXPECT_GT(greens(drawn()), none + 500) << savePicture("drawMesh_textured_edges");
    layer.unLoadTextureColor(style.texture);
}

// == Surfaces ==

TEST_F(DrawMesh_gl_test, shadingsShowWhatTheyName) {
    make(mesh_shapes::sphere(8), 180);
    Pixels const smooth = drawnLit();
    savePicture("drawMesh_smooth");
    style.shading = Shading::FACETED;
    Pixels const faceted = drawnLit();
    savePicture("drawMesh_faceted");
    style.shading = Shading::WIREFRAME;
    Pixels const wireframe = drawnLit();
    savePicture("drawMesh_wireframe");
    style.shading = Shading::BOX;
    Pixels const box = drawnLit();
    savePicture("drawMesh_box");
    EXPECT_EQ(covered(faceted), covered(smooth));
    EXPECT_NE(faceted, smooth);
    EXPECT_LT(covered(wireframe), covered(smooth));
    EXPECT_GT(covered(wireframe), covered(box));
    EXPECT_GT(covered(box), 300U);
}

TEST_F(DrawMesh_gl_test, backsAreOutlinesWhereAskedFor) {
    make(mesh_shapes::grid(6), 40);
    look({0.3, 0.2, -4});
    std::size_t const filled = covered(drawn());
    style.outlinesBack = true;
    std::size_t const back = covered(drawn());
    savePicture("drawMesh_outlines_back");
    EXPECT_LT(back, filled / 2);
    EXPECT_GT(back, filled / 20);
    look({0.3, 0.2, 4});
    EXPECT_GT(covered(drawn()), 2 * back) << "the front is filled";
}

TEST_F(DrawMesh_gl_test, translucentSurfaceShowsWhatIsBehind) {
    make(mesh_shapes::grid(1), 40);
    look({0, 0, 4});
    style.color = {1, 0, 0, 0.25F};
    glClearColor(0, 0, 1, 1);
    drawn();
    EXPECT_NEAR(readPixel(128, 128)[0], 64, 2);
    EXPECT_NEAR(readPixel(128, 128)[2], 191, 2);
}

TEST_F(DrawMesh_gl_test, textureIsShownThroughItsChannel) {
    make(mesh_shapes::grid(1), 40);
    look({0, 0, 4});
    // Positions 0 to 3 are lower left, lower right, upper left, upper right.
    setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>{{0, 0}, {1, 0}, {0, 1}, {1, 1}});
    unsigned char const halves[2 * 4] = {255, 0, 0, 255, 0, 0, 255, 255};
    layer.loadTextureColor(2, 1, halves, style.texture, TEXTURE_CLAMP);
    style.textureChannel = "uv";
    style.color = {1, 1, 1, 1};
    for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
        for (bool const buffers : {false, true}) {
            style.shading = shading;
            renderer.useBufferObjects = buffers;
            drawn();
            std::string const path = savePicture("drawMesh_texture");
            EXPECT_GT(readPixel(80, 128)[0], 200) << path;
            EXPECT_LT(readPixel(80, 128)[2], 60) << path;
            EXPECT_GT(readPixel(176, 128)[2], 200) << path;
        }
    }
    style.textureChannel = "other";
    drawn();
    EXPECT_EQ(readPixel(80, 128), (Pixel{255, 255, 255, 255})) << "an unknown channel";
    layer.unLoadTextureColor(style.texture);
}

// == Colors ==

TEST_F(DrawMesh_gl_test, colorsAreInterpolatedOverTriangles) {
    make(mesh_shapes::grid(1), 40);
    look({0, 0, 4});
    setColors(mesh, "heat",
              std::vector<Color4<float>>{{1, 0, 0, 1}, {0, 0, 1, 1}, {1, 0, 0, 1}, {0, 0, 1, 1}});
    style.colors = "heat";
    for (Shading const shading : {Shading::SMOOTH, Shading::FACETED}) {
        style.shading = shading;
        drawn();
        std::string const path = savePicture("drawMesh_colors");
        EXPECT_NEAR(readPixel(128, 100)[0], 127, 6) << path;
        EXPECT_NEAR(readPixel(128, 100)[2], 127, 6) << path;
        EXPECT_GT(readPixel(70, 128)[0], 220) << path;
        EXPECT_GT(readPixel(186, 128)[2], 220) << path;
    }
}

TEST_F(DrawMesh_gl_test, colorsAreLitAndHaveEdges) {
    make(mesh_shapes::cube(), 40);
    setColors(mesh, "heat", std::vector<Color4<float>>(8, {0, 0, 1, 1}));
    style.colors = "heat";
    style.edges = Edges::HARD;
    Pixels const lit = drawnLit();
    std::string const path = savePicture("drawMesh_colors_lit");
    EXPECT_GT(greens(lit), 500U) << path;
    std::size_t const blues = count(lit, [](unsigned char const* p) { return p[2] > 100 && p[1] == 0; });
    EXPECT_GT(blues, 5000U) << path;
}

TEST_F(DrawMesh_gl_test, coloredSurfaceCoversThePixelsOfThePlainOne) {
    make(mesh_shapes::sphere(8), 180);
    Pixels const plain = drawnLit();
    setColors(mesh, "same", std::vector<Color4<float>>(mesh_shapes::sphere(8).positions.size(), style.color));
    style.colors = "same";
    EXPECT_EQ(drawnLit(), plain) << savePicture("drawMesh_colors_same");
}

// == Everything else stays ==

TEST_F(DrawMesh_gl_test, stateIsRestoredInEveryStyle) {
    make(mesh_shapes::cube(), 40);
    setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>(8, {0.5F, 0.5F}));
    setColors(mesh, "heat", std::vector<Color4<float>>(8, {0, 0, 1, 0.5F}));
    unsigned char const blue[4] = {0, 0, 255, 255};
    unsigned int texture = 0;
    layer.loadTextureColor(1, 1, blue, texture, TEXTURE_REPEAT);
    // As an application has set it with GL itself, which the state stacks do not know.
    glColor4f(0.25F, 0.5F, 0.75F, 1);
    glNormal3f(1, 0, 0);
    glTexCoord2f(0.5F, 0.25F);
    glLineWidth(3);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glPolygonOffset(1, 3);
    glEnable(GL_LIGHTING);
    glEnable(GL_TEXTURE_2D);
    AttributeState const before;
    for (bool const buffers : {false, true}) {
        renderer.useBufferObjects = buffers;
        for (Shading const shading : {Shading::BOX, Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
            for (Edges const edges : {Edges::NONE, Edges::HARD, Edges::SHINING, Edges::TRIANGLES}) {
                for (unsigned int variant = 0; variant < 16; ++variant) {
                    style.shading = shading;
                    style.edges = edges;
                    style.textureChannel = (variant & 1U) != 0 ? "uv" : "";
                    style.texture = (variant & 2U) != 0 ? texture : 0;
                    style.colors = (variant & 4U) != 0 ? "heat" : "";
                    style.color.a = (variant & 8U) != 0 ? 0.5F : 1;
                    style.outlinesBack = (variant & 8U) != 0;
                    drawMesh(renderer, style);
                    if (variant % 4 != 3) {
                        continue;  // Reading the whole state takes long.
                    }
                    AttributeState const after;
                    std::vector<std::string> changed = before.namesThatDiffer(after);
                    // Pointers of vertex arrays, which are off.
                    changed.erase(std::remove_if(changed.begin(), changed.end(),
                                                 [](std::string const& name) {
                                                     return name.find("_ARRAY_") != std::string::npos;
                                                 }),
                                  changed.end());
                    ASSERT_THAT(changed, IsEmpty()) << before.differences(after);
                }
            }
        }
    }
    layer.unLoadTextureColor(texture);
}

TEST_F(DrawMesh_gl_test, unchangedFramesTakeNoMemory) {
    make(mesh_shapes::cube(), 40);
    setTextureCoordinates(mesh, "a channel with a long name", std::vector<Vector2<float>>(8, {0.5F, 0.5F}));
    setColors(mesh, "colors with a name as long", std::vector<Color4<float>>(8, {0, 0, 1, 0.5F}));
    std::vector<MeshStyle> styles;
    for (Shading const shading : {Shading::BOX, Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
        for (Edges const edges : {Edges::NONE, Edges::HARD, Edges::SHINING, Edges::TRIANGLES}) {
            for (bool const isColored : {false, true}) {
                MeshStyle& one = styles.emplace_back();
                one.shading = shading;
                one.edges = edges;
                one.textureChannel = "a channel with a long name";
                one.colors = isColored ? "colors with a name as long" : "";
            }
        }
    }
    auto const drawAll = [&] {
        for (MeshStyle const& one : styles) {
            drawMesh(renderer, one);
        }
    };
    for (bool const buffers : {false, true}) {
        renderer.useBufferObjects = buffers;
        drawAll();
        std::size_t const before = counted_memory::allocations();
        drawAll();
        drawAll();
        EXPECT_EQ(counted_memory::allocations(), before) << "buffers: " << buffers;
    }
}

TEST_F(DrawMesh_gl_test, faultyMeshesAreLeftOutWithoutErrors) {
    make(mesh_shapes::cube(), 40);
    setColors(mesh, "heat", std::vector<Color4<float>>(8, {0, 0, 1, 1}));
    setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 4000000000U});
    for (bool const buffers : {false, true}) {
        renderer.useBufferObjects = buffers;
        for (Shading const shading : {Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
            for (Edges const edges : {Edges::NONE, Edges::HARD, Edges::SHINING, Edges::TRIANGLES}) {
                style.shading = shading;
                style.edges = edges;
                for (char const* const colors : {"", "heat", "unknown"}) {
                    style.colors = colors;
                    EXPECT_EQ(covered(drawn()), 0U);
                }
            }
        }
    }
}

}  // namespace
