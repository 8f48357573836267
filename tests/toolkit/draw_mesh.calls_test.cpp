#include "toolkit/draw_mesh.h"

#include "Core_RL_GL.h"
#include "foundation/basic/ArrayServer.h"
#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"
#include "toolkit/internal/gl.h"
#include "toolkit/mesh_arrays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;
using testing::IsEmpty;

namespace {

Texts const TEXTURE_AND_LIGHT_OFF{"glDisable(GL_LIGHTING)", "glDisable(GL_TEXTURE_2D)"};
// The driver is asked whether it has shaders; it has none.
Texts const PAST_EFFECTS = joined({TEXTURE_AND_LIGHT_OFF, {"glGetString(GL_VERSION)"}});
Texts const OUTLINES{"glPolygonMode(GL_BACK, GL_LINE)", "glPolygonMode(GL_FRONT, GL_LINE)"};
Texts const FILLED{"glPolygonMode(GL_BACK, GL_FILL)", "glPolygonMode(GL_FRONT, GL_FILL)"};
Texts const RESTORED{"glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"};
Texts const BLENDED{"glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"};
Texts const UNBLENDED{"glDisable(GL_BLEND)"};

// Of glPushAttrib: GL_CURRENT_BIT, GL_LINE_BIT, GL_POLYGON_BIT and GL_ENABLE_BIT; and what comes to it.
constexpr char PLAIN[] = "0x200D";
constexpr char WITH_BLENDING[] = "0x600D";
constexpr char WITH_TEXTURE[] = "0x4200D";

std::string color(std::string const& components) {
    return "glColor4f(" + components + ")";
}

/// What every drawing begins and ends with.
Texts framed(char const* attributes, std::string const& itsColor, std::string const& width,
             Texts const& calls) {
    return joined(
        {{"glPushAttrib(" + std::string(attributes) + ")", color(itsColor), "glLineWidth(" + width + ")"},
         calls,
         {"glLineWidth(1)", color("1, 1, 1, 1"), "glGetFloatv(GL_CURRENT_COLOR, pointer)", "glPopAttrib()"}});
}

class DrawMesh_calls_test : public testing::Test {
protected:
    DrawMesh_calls_test() {
        // Two triangles with a hard edge between them.
        setPositions(mesh, std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
        setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 2, 0, 3, 1});
        prepareMesh(mesh, 40);
        setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>{{0, 0}, {1, 0}, {0, 1}, {1, 1}});
        setColors(mesh, "heat",
                  std::vector<Color4<float>>{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 0.5F}});
        style.color = {0.5F, 0.25F, 0, 1};
        style.edgeColor = {0, 0, 0.75F, 1};
    }

    Texts callsOf(std::function<void()> const& draw) {
        gl_spy::Recording const recording;
        draw();
        return recording.texts();
    }

    Texts drawn() {
        return callsOf([this] { drawMesh(renderer, style); });
    }

    Texts surface(std::function<void()> const& draw) { return joined({FILLED, callsOf(draw), RESTORED}); }

    gl_spy::Script driver = gl_spy::drivers::gl15();
    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
    MeshStyle style;
};

char const* const COLOR = "0.5, 0.25, 0, 1";

// == Shadings ==

TEST_F(DrawMesh_calls_test, smoothSurfaceIsThatOfTheRenderer) {
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5", surface([this] { renderer.render(); })));
}

TEST_F(DrawMesh_calls_test, facetedSurfaceIsThatOfTheRenderer) {
    style.shading = Shading::FACETED;
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5", surface([this] { renderer.renderFaceted(); })));
}

TEST_F(DrawMesh_calls_test, buffersAreUsedAsTheRendererSays) {
    renderer.useBufferObjects = true;
    drawn();
    Texts const calls = drawn();
    EXPECT_EQ(calls, framed(PLAIN, COLOR, "1.5", surface([this] { renderer.render(); })));
    EXPECT_THAT(calls, testing::Contains("glDrawArrays(GL_TRIANGLES, 0, 6)"));
    EXPECT_THAT(calls, testing::Not(testing::Contains("glBegin(GL_TRIANGLES)")));
}

TEST_F(DrawMesh_calls_test, wireframeIsOutlinesWithoutLight) {
    style.shading = Shading::WIREFRAME;
    style.lineWidth = 3;
    style.edges = Edges::HARD;
    Texts const render = callsOf([this] { renderer.render(); });
    EXPECT_EQ(drawn(),
              framed(PLAIN, COLOR, "3", joined({TEXTURE_AND_LIGHT_OFF, OUTLINES, render, RESTORED})));
}

TEST_F(DrawMesh_calls_test, boxIsOutlinesWithoutLight) {
    style.shading = Shading::BOX;
    Texts const box = callsOf([this] { layer.render(mesh.box(), false); });
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5", joined({PAST_EFFECTS, OUTLINES, box, RESTORED})));
}

TEST_F(DrawMesh_calls_test, missingBoxIsDerived) {
    style.shading = Shading::BOX;
    Texts const before = drawn();
    setPositions(mesh, std::vector<float>{0, 0, 0, 4, 0, 0, 0, 1, 0, 0, 0, 1});
    ASSERT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    EXPECT_NE(drawn(), before);
    EXPECT_NE(mesh.flags() & MESH_GOT_BOX, 0U);
    EXPECT_EQ(mesh.box().max.x, 4);
}

TEST_F(DrawMesh_calls_test, backOfOutlinesLeavesTheFrontFilled) {
    style.outlinesBack = true;
    Texts const render = callsOf([this] { renderer.render(); });
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5",
                              joined({{"glPolygonMode(GL_BACK, GL_LINE)", "glPolygonMode(GL_FRONT, GL_FILL)"},
                                      render,
                                      RESTORED})));
}

TEST_F(DrawMesh_calls_test, translucentSurfaceIsBlended) {
    style.color.a = 0.5F;
    EXPECT_EQ(drawn(), framed(WITH_BLENDING, "0.5, 0.25, 0, 0.5", "1.5",
                              joined({BLENDED, surface([this] { renderer.render(); }), UNBLENDED})));
}

// == Edges ==

Texts const BEHIND{"glEnable(GL_POLYGON_OFFSET_FILL)", "glPolygonOffset(2, 2)"};

TEST_F(DrawMesh_calls_test, hardEdgesFollowTheSurfaceThatIsMovedBack) {
    style.edges = Edges::HARD;
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5",
                              joined({BEHIND,
                                      surface([this] { renderer.render(); }),
                                      PAST_EFFECTS,
                                      {color("0, 0, 0.75, 1")},
                                      callsOf([this] { renderer.renderEdges(); }),
                                      {color(COLOR)}})));
}

TEST_F(DrawMesh_calls_test, surfaceGivesWayToWideLines) {
    style.edges = Edges::HARD;
    style.lineWidth = 6;
    EXPECT_THAT(drawn(), testing::Contains("glPolygonOffset(4, 2)"));
}

TEST_F(DrawMesh_calls_test, shiningEdgesAreDrawnFaintlyWhereSomethingHidesThem) {
    style.edges = Edges::SHINING;
    driver.integer(GL_DEPTH_FUNC, {GL_LEQUAL}).integer(GL_DEPTH_WRITEMASK, {1});
    Texts const edges = callsOf([this] { renderer.renderEdges(); });
    EXPECT_EQ(
        drawn(),
        framed(
            WITH_BLENDING, COLOR, "1.5",
            joined({BEHIND,
                    surface([this] { renderer.render(); }),
                    PAST_EFFECTS,
                    BLENDED,
                    {"glGetIntegerv(GL_DEPTH_FUNC, pointer)", "glGetIntegerv(GL_DEPTH_WRITEMASK, pointer)",
                     "glDepthFunc(GL_GREATER)", "glDepthMask(GL_FALSE)", color("0, 0, 0.75, 0.25")},
                    edges,
                    {color(COLOR), "glDepthFunc(GL_LEQUAL)", "glDepthMask(GL_TRUE)", color("0, 0, 0.75, 1")},
                    edges,
                    {color(COLOR)},
                    UNBLENDED})));
}

TEST_F(DrawMesh_calls_test, triangleEdgesAreOutlinesOverTheSurface) {
    style.edges = Edges::TRIANGLES;
    style.shading = Shading::FACETED;
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5",
                              joined({BEHIND,
                                      surface([this] { renderer.renderFaceted(); }),
                                      PAST_EFFECTS,
                                      {color("0, 0, 0.75, 1")},
                                      OUTLINES,
                                      callsOf([this] { renderer.render(); }),
                                      RESTORED,
                                      {color(COLOR)}})));
}

TEST_F(DrawMesh_calls_test, translucentEdgesAreBlendedOverAnOpaqueSurface) {
    style.edges = Edges::HARD;
    style.edgeColor.a = 0.5F;
    Texts const calls = drawn();
    EXPECT_EQ(calls.front(), "glPushAttrib(" + std::string(WITH_BLENDING) + ")");
    auto const blend = std::find(calls.begin(), calls.end(), "glEnable(GL_BLEND)");
    auto const surfaceEnd = std::find(calls.begin(), calls.end(), "glDisable(GL_LIGHTING)");
    EXPECT_LT(surfaceEnd - calls.begin(), blend - calls.begin());
}

TEST_F(DrawMesh_calls_test, edgesAreDrawnPastTheProgramInUse) {
    gl_spy::Script const shaders = gl_spy::drivers::gl21();
    unsigned int const program = layer.createProgram();
    layer.useProgram(program);
    std::string const use = "glUseProgram(" + std::to_string(program) + ")";
    for (auto const& [shading, edges, expected] : {std::tuple{Shading::SMOOTH, Edges::HARD, true},
                                                   {Shading::BOX, Edges::NONE, true},
                                                   {Shading::SMOOTH, Edges::NONE, false},
                                                   {Shading::WIREFRAME, Edges::NONE, false}}) {
        style.shading = shading;
        style.edges = edges;
        Texts const calls = drawn();
        auto const off = std::find(calls.begin(), calls.end(), "glUseProgram(0)");
        auto const on = std::find(calls.begin(), calls.end(), use);
        EXPECT_EQ(off != calls.end(), expected);
        EXPECT_EQ(on != calls.end(), expected);
        EXPECT_TRUE(!expected || off < on);
    }
    layer.useProgram(0);
    layer.deleteProgram(program);
}

TEST_F(DrawMesh_calls_test, driverWithoutShadersIsNotAskedForAProgram) {
    style.edges = Edges::HARD;
    EXPECT_THAT(drawn(), testing::Not(testing::Contains(testing::HasSubstr("GL_CURRENT_PROGRAM"))));
}

// == Textures ==

TEST_F(DrawMesh_calls_test, textureIsOnWhileTheSurfaceIsDrawn) {
    style.textureChannel = "uv";
    style.texture = 7;
    EXPECT_EQ(drawn(), framed(WITH_TEXTURE, COLOR, "1.5",
                              joined({{"glEnable(GL_TEXTURE_2D)", "glBindTexture(GL_TEXTURE_2D, 7)"},
                                      surface([this] { renderer.renderTextured("uv"); }),
                                      {"glDisable(GL_TEXTURE_2D)"}})));
}

TEST_F(DrawMesh_calls_test, channelWithoutTextureSendsCoordinatesAlone) {
    style.textureChannel = "uv";
    style.shading = Shading::FACETED;
    EXPECT_EQ(drawn(),
              framed(PLAIN, COLOR, "1.5", surface([this] { renderer.renderFacetedTextured("uv"); })));
}

TEST_F(DrawMesh_calls_test, unknownChannelIsDrawnWithoutTexture) {
    style.textureChannel = "other";
    style.texture = 7;
    EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5", surface([this] { renderer.render(); })));
}

// == Colors ==

Texts cornersOf(std::vector<std::vector<std::string>> const& corners) {
    Texts calls{"glBegin(GL_TRIANGLES)"};
    for (std::vector<std::string> const& corner : corners) {
        calls.insert(calls.end(), corner.begin(), corner.end());
    }
    calls.emplace_back("glEnd()");
    return calls;
}

TEST_F(DrawMesh_calls_test, colorsAreSentCornerByCornerFromTheArrays) {
    style.colors = "heat";
    renderer.useBufferObjects = true;
    gl_spy::Recording const recording;
    drawMesh(renderer, style);
    ASSERT_EQ(recording.named("glColor4fv").size(), 6U);
    auto const* const colors =
        VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "heat"))->as<Color4<float>>();
    auto const* const triangles = VL_ArrayServer.resolve(mesh.triangles())->as<Tuple3<unsigned int>>();
    ASSERT_NE(colors, nullptr);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    ASSERT_EQ(primitive.vertices.size(), 6U);
    auto const* const positions = VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>();
    for (unsigned int corner = 0; corner < 6; ++corner) {
        unsigned int const i = mesh_shapes::at(triangles[corner / 3], corner % 3);
        gl_spy::Vertex const& vertex = primitive.vertices[corner];
        EXPECT_EQ(vertex.position[0], positions[i].x);
        EXPECT_EQ(vertex.position[2], positions[i].z);
        EXPECT_EQ(vertex.color[0], static_cast<double>(colors[i].r));
        EXPECT_EQ(vertex.color[3], static_cast<double>(colors[i].a));
    }
    EXPECT_EQ(recording.count("glBindBuffer"), 0U);
    EXPECT_EQ(recording.count("glTexCoord2fv"), 0U);
}

TEST_F(DrawMesh_calls_test, coloredFacetsHaveOneNormalForEachTriangle) {
    style.colors = "heat";
    style.shading = Shading::FACETED;
    EXPECT_EQ(
        drawn(),
        framed(WITH_BLENDING, COLOR, "1.5",
               joined({BLENDED, FILLED,
                       cornersOf(
                           {{"glNormal3fv({0, 0, 1})", "glColor4fv({1, 0, 0, 1})", "glVertex3dv({0, 0, 0})"},
                            {"glColor4fv({0, 1, 0, 1})", "glVertex3dv({1, 0, 0})"},
                            {"glColor4fv({0, 0, 1, 1})", "glVertex3dv({0, 1, 0})"},
                            {"glNormal3fv({0, 1, 0})", "glColor4fv({1, 0, 0, 1})", "glVertex3dv({0, 0, 0})"},
                            {"glColor4fv({1, 1, 1, 0.5})", "glVertex3dv({0, 0, 1})"},
                            {"glColor4fv({0, 1, 0, 1})", "glVertex3dv({1, 0, 0})"}}),
                       RESTORED, UNBLENDED})));
}

TEST_F(DrawMesh_calls_test, coloredSmoothCornersHaveTheNormalsOfTheRenderer) {
    style.colors = "heat";
    style.textureChannel = "uv";
    gl_spy::Recording const colored;
    drawMesh(renderer, style);
    gl_spy::Recording const plain;
    renderer.renderTextured("uv");
    std::vector<gl_spy::Vertex> const expected = onlyPrimitive(plain).vertices;
    gl_spy::Primitive const primitive = colored.primitives().front();
    ASSERT_EQ(primitive.vertices.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(primitive.vertices[i].normal, expected[i].normal);
        EXPECT_EQ(primitive.vertices[i].textureCoordinate, expected[i].textureCoordinate);
    }
}

TEST_F(DrawMesh_calls_test, coordinatesWithCornersAreSentWithColorsToo) {
    setTextureCoordinates(mesh, "seam", std::vector<Vector2<float>>{{0.25F, 0.5F}, {0.75F, 1}},
                          std::vector<std::uint32_t>{0, 1, 9});
    style.colors = "heat";
    style.textureChannel = "seam";
    gl_spy::Recording const recording;
    drawMesh(renderer, style);
    Texts coordinates;
    for (gl_spy::Call const& call : recording.named("glTexCoord2fv")) {
        coordinates.push_back(call.text());
    }
    Texts const none = repeated({"glTexCoord2fv({0, 0})"}, 4);
    EXPECT_EQ(coordinates, joined({{"glTexCoord2fv({0.25, 0.5})", "glTexCoord2fv({0.75, 1})"}, none}));
}

TEST_F(DrawMesh_calls_test, positionsWithoutAColorHaveThatOfTheStyle) {
    setColors(mesh, "heat", std::vector<Color4<float>>{{1, 0, 0, 1}});
    style.colors = "heat";
    gl_spy::Recording const recording;
    drawMesh(renderer, style);
    EXPECT_EQ(recording.named("glColor4fv")[0].text(), "glColor4fv({1, 0, 0, 1})");
    EXPECT_EQ(recording.named("glColor4fv")[1].text(), "glColor4fv({0.5, 0.25, 0, 1})");
}

TEST_F(DrawMesh_calls_test, unknownColorsAndArraysThatAreNoneAreIgnored) {
    for (char const* const name : {"other", "uv"}) {
        style.colors = name;
        EXPECT_EQ(drawn(), framed(PLAIN, COLOR, "1.5", surface([this] { renderer.render(); }))) << name;
    }
}

// == What cannot be drawn ==

TEST_F(DrawMesh_calls_test, faultyTrianglesDrawNothingInAnyStyle) {
    setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 200, 0, 1, 2});
    for (char const* const colors : {"", "heat"}) {
        for (Shading const shading : {Shading::WIREFRAME, Shading::FACETED, Shading::SMOOTH}) {
            for (Edges const edges : {Edges::NONE, Edges::HARD, Edges::SHINING, Edges::TRIANGLES}) {
                style.colors = colors;
                style.shading = shading;
                style.edges = edges;
                gl_spy::Recording const recording;
                drawMesh(renderer, style);
                EXPECT_EQ(recording.count("glVertex3dv"), 0U);
            }
        }
    }
}

TEST_F(DrawMesh_calls_test, faultyNormalsHideOnlyTheColoredSurfaceThatReadsThem) {
    style.colors = "heat";
    setVertexNormals(mesh, std::vector<Vector3<float>>{{0, 0, 1}});
    EXPECT_EQ(gl_spy::Recording().calls().size(), 0U);
    style.shading = Shading::SMOOTH;
    EXPECT_THAT(drawn(), testing::Not(testing::Contains("glBegin(GL_TRIANGLES)")));
    style.shading = Shading::FACETED;
    EXPECT_THAT(drawn(), testing::Contains("glBegin(GL_TRIANGLES)"));
}

TEST_F(DrawMesh_calls_test, coloredMeshWithoutNormalsIsDrawnWithNone) {
    Mesh bare;
    setPositions(bare, std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0});
    setTriangles(bare, std::vector<std::uint32_t>{0, 1, 2});
    setColors(bare, "heat", std::vector<Color4<float>>(3, {1, 0, 0, 1}));
    Mesh_RL_GL bareRenderer(&bare, false);
    style.colors = "heat";
    for (Shading const shading : {Shading::FACETED, Shading::SMOOTH}) {
        style.shading = shading;
        gl_spy::Recording const recording;
        drawMesh(bareRenderer, style);
        EXPECT_EQ(recording.named("glNormal3fv").front().text(), "glNormal3fv({0, 0, 0})");
        EXPECT_EQ(recording.count("glVertex3dv"), 3U);
    }
}

TEST_F(DrawMesh_calls_test, emptyMeshAndNoMeshAreNoFault) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    style.edges = Edges::HARD;
    style.colors = "heat";
    style.textureChannel = "uv";
    drawMesh(emptyRenderer, style);
    style.shading = Shading::BOX;
    drawMesh(emptyRenderer, style);
    Mesh_RL_GL none(nullptr, false);
    EXPECT_THAT(callsOf([&] { drawMesh(none, style); }), IsEmpty());
}

TEST_F(DrawMesh_calls_test, stacksOfTheLayerAreBalanced) {
    layer.pushColor({0.125F, 0, 0, 1});
    layer.pushLineWidth(5);
    layer.pushFillingFront(FILLING_LINES);
    layer.pushBlending(BLENDING_ALPHA);
    style.edges = Edges::SHINING;
    style.color.a = 0.5F;
    style.textureChannel = "uv";
    style.texture = 7;
    drawMesh(renderer, style);
    EXPECT_EQ(layer.currentColor().r, 0.125F);
    EXPECT_EQ(layer.currentLineWidth(), 5);
    EXPECT_EQ(layer.currentFillingFront(), FILLING_LINES);
    EXPECT_EQ(layer.currentBlending(), BLENDING_ALPHA);
    layer.popColor(1);
    EXPECT_EQ(layer.currentColor().r, 1);
}

}  // namespace
