#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "mesh_calls.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

// The drawings of each mode: the surface in immediate mode, requests with their state and effects, the box,
// and the composites of surface and edges.

namespace vellum {

namespace {

using namespace mesh_calls;
using testing::ElementsAre;
using testing::IsEmpty;

class Mesh_RL_GL_modes_calls_test : public Mesh_fixture {};

// == Lifecycle ==

TEST_F(Mesh_RL_GL_modes_calls_test, newRendererHasNoEffectAndMakesNoCall) {
    gl_spy::Recording const recording;
    Mesh_RL_GL const plain(&mesh, false);

    EXPECT_EQ(plain.mesh, &mesh);
    EXPECT_EQ(plain.shader, nullptr);
    EXPECT_FALSE(plain.useBufferObjects);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Mesh_RL_GL_modes_calls_test, deliberatelySecondArgumentOfConstructorIsIgnored) {
    Mesh_RL_GL const asked(&mesh, true);
    EXPECT_FALSE(asked.useBufferObjects);
}

TEST_F(Mesh_RL_GL_modes_calls_test, destroyingRendererWithoutBuffersDeletesNone) {
    gl_spy::Recording const recording;
    renderer->render();
    renderer->renderEdges();
    renderer.reset();
    EXPECT_EQ(recording.count("glDeleteBuffers"), 0U);
}

TEST_F(Mesh_RL_GL_modes_calls_test, destroyingRendererDeletesItsBuffersInOrder) {
    addPerVertex("map");
    update("map", true);
    gl_spy::Recording const recording;
    renderer.reset();
    EXPECT_THAT(recording.texts(), ElementsAre(deleted(1), deleted(2), deleted(3), deleted(4), deleted(5)));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Mesh_RL_GL_modes_calls_test, destroyingRendererDeletesOnlyBuffersThatExist) {
    update(nullptr, false);
    gl_spy::Recording const recording;
    renderer.reset();
    EXPECT_THAT(recording.texts(), ElementsAre(deleted(1), deleted(2), deleted(3)));
}

// == Drawing in immediate mode ==

TEST_F(Mesh_RL_GL_modes_calls_test, renderSendsNormalAndPositionOfEachCorner) {
    gl_spy::Recording const recording;
    renderer->render();
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), data.cornerNormals());
    EXPECT_EQ(vertexCallsOf(recording), repeated({"glNormal3fv", "glVertex3dv"}, 6));
    EXPECT_EQ(recording.calls().size(), 2U + 12U) << "nothing but the block";
}

TEST_F(Mesh_RL_GL_modes_calls_test, renderFacetedSendsNormalOncePerTriangle) {
    gl_spy::Recording const recording;
    renderer->renderFaceted();
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    Point const f0 = pointOf(data.faceNormals[0]);
    Point const f1 = pointOf(data.faceNormals[1]);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), (std::vector<Point>{f0, f0, f0, f1, f1, f1}));
    EXPECT_EQ(vertexCallsOf(recording),
              repeated({"glNormal3fv", "glVertex3dv", "glVertex3dv", "glVertex3dv"}, 2));
    EXPECT_EQ(recording.calls().size(), 2U + 8U);
}

std::vector<float> coordinatesOf(gl_spy::Primitive const& primitive) {
    std::vector<float> coordinates;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        coordinates.push_back(static_cast<float>(vertex.textureCoordinate[0]));
        coordinates.push_back(static_cast<float>(vertex.textureCoordinate[1]));
    }
    return coordinates;
}

TEST_F(Mesh_RL_GL_modes_calls_test, renderTexturedSendsNormalCoordinateAndPosition) {
    addPerVertex("map");
    gl_spy::Recording const recording;
    renderer->renderTextured("map");
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), data.cornerNormals());
    EXPECT_EQ(coordinatesOf(primitive), PER_POSITION_SOUP);
    EXPECT_EQ(vertexCallsOf(recording), repeated({"glNormal3fv", "glTexCoord2fv", "glVertex3dv"}, 6));
    EXPECT_EQ(recording.calls().size(), 2U + 18U);
}

TEST_F(Mesh_RL_GL_modes_calls_test, renderFacetedTexturedSendsFaceNormalAtEachCorner) {
    addIndexed("map");
    gl_spy::Recording const recording;
    renderer->renderFacetedTextured("map");
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    Point const f0 = pointOf(data.faceNormals[0]);
    Point const f1 = pointOf(data.faceNormals[1]);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), (std::vector<Point>{f0, f0, f0, f1, f1, f1}));
    EXPECT_EQ(coordinatesOf(primitive), INDEXED_SOUP);
    EXPECT_EQ(vertexCallsOf(recording), repeated({"glNormal3fv", "glTexCoord2fv", "glVertex3dv"}, 6));
}

TEST_F(Mesh_RL_GL_modes_calls_test, missingChannelHasCoordinateZeroEverywhere) {
    mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "map", INDEXED);  // values that nothing names
    for (bool const isFaceted : {false, true}) {
        gl_spy::Recording const recording;
        if (isFaceted) {
            renderer->renderFacetedTextured("map");
        } else {
            renderer->renderTextured("map");
        }
        EXPECT_EQ(coordinatesOf(onlyPrimitive(recording)), std::vector<float>(12, 0.0F));
        EXPECT_EQ(vertexCallsOf(recording), repeated({"glNormal3fv", "glTexCoord2fv", "glVertex3dv"}, 6));
    }
}

TEST_F(Mesh_RL_GL_modes_calls_test, texturedDrawingReleasesArrays) {
    addIndexed("map");
    ArrayTypeable const* const values =
        VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "map"));
    unsigned int const references = values->references;
    unsigned int const handles = VL_ArrayServer.handleCount();
    renderer->renderTextured("map");
    renderer->renderFacetedTextured("map");
    EXPECT_EQ(values->references, references);
    EXPECT_EQ(VL_ArrayServer.handleCount(), handles);
}

TEST_F(Mesh_RL_GL_modes_calls_test, pointsInImmediateModeAreAllPositionsOnce) {
    layer.setPointSize(2);
    gl_spy::Recording const recording;
    renderer->renderPoints(7);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, POINTS);
    std::vector<Point> all;
    for (Vector3<double> const& p : data.positions) {
        all.push_back(pointOf(p));
    }
    EXPECT_EQ(positionsOf(primitive), all);
    Texts const texts = recording.texts();
    EXPECT_EQ(texts.front(), "glPointSize(7)");
    EXPECT_EQ(texts.back(), "glPointSize(2)");
    EXPECT_EQ(texts.size(), 2U + 2U + 5U);
    EXPECT_EQ(layer.currentPointSize(), 2);
}

TEST_F(Mesh_RL_GL_modes_calls_test, immediateModeTouchesNoBufferAndNoModifiedBit) {
    addPerVertex("map");
    gl_spy::Recording const recording;
    renderer->render();
    renderer->renderFaceted();
    renderer->renderTextured("map");
    renderer->renderFacetedTextured("map");
    renderer->renderPoints(1);
    renderer->renderEdges();
    for (gl_spy::Call const& c : recording.calls()) {
        EXPECT_EQ(c.name.find("Buffer"), std::string::npos) << c.text();
        EXPECT_EQ(c.name.find("ClientState"), std::string::npos) << c.text();
    }
    EXPECT_TRUE(isModified(mesh.positions()));
    EXPECT_TRUE(isModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map")));
}

// == Shading requests ==

/// Notes which drawings a request calls, in order with the GL calls.
class Tracing_renderer : public Mesh_RL_GL {
public:
    using Mesh_RL_GL::Mesh_RL_GL;
    using Mesh_RL_GL::render;

    void render() override { note("render"); }
    void renderFaceted() const override { note("renderFaceted"); }
    void renderTextured(VL_String const& channel) override {
        note(std::string("renderTextured ") + channel.c_str());
    }
    void renderFacetedTextured(VL_String const& channel) override {
        note(std::string("renderFacetedTextured ") + channel.c_str());
    }

    void note(std::string const& event) const {
        if (recording == nullptr) {
            return;
        }
        while (seen < recording->calls().size()) {
            trace.push_back(recording->calls()[seen++].text());
        }
        trace.push_back(event);
    }
    Texts const& ended() const {
        note("end");
        trace.pop_back();
        return trace;
    }

    gl_spy::Recording const* recording = nullptr;
    mutable std::size_t seen = 0;
    mutable Texts trace;
};

class Tracing_effect : public Mesh_RL_Shader {
public:
    explicit Tracing_effect(Tracing_renderer const& renderer) : target(renderer) {}
    void create() override {
        target.note("create");
        created = true;
    }
    void init() override { target.note("init"); }
    void preprocess() override { target.note("preprocess"); }
    void postprocess() override { target.note("postprocess"); }
    void cleanup() override { target.note("cleanup"); }

private:
    Tracing_renderer const& target;
};

constexpr unsigned int TEXTURE = MeshShadingFlags_ns::TEXTURE;
constexpr unsigned int BACK = MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
constexpr unsigned int EFFECT = MeshShadingFlags_ns::GPU_SHADER;

char const backLines[] = "glPolygonMode(GL_BACK, GL_LINE)";
char const backFill[] = "glPolygonMode(GL_BACK, GL_FILL)";
char const frontLines[] = "glPolygonMode(GL_FRONT, GL_LINE)";
char const frontFill[] = "glPolygonMode(GL_FRONT, GL_FILL)";

class Mesh_RL_GL_requests_calls_test : public Mesh_fixture {
protected:
    Texts request(unsigned int mode, unsigned int flags, Mesh_RL_Shader* effect = nullptr) {
        gl_spy::Recording const recording;
        tracing.recording = &recording;
        tracing.seen = 0;
        tracing.trace.clear();
        tracing.shader = effect;
        MeshShading shading;
        shading.mode = mode;
        shading.flags = flags;
        shading.textureChannel = "map";
        tracing.render(shading);
        Texts const trace = tracing.ended();
        tracing.recording = nullptr;
        return trace;
    }

    Tracing_renderer tracing{&mesh, false};
};

TEST_F(Mesh_RL_GL_requests_calls_test, wireframeIsSurfaceInLines) {
    for (unsigned int const flags : {0U, TEXTURE, BACK}) {
        EXPECT_THAT(request(1, flags), ElementsAre(backLines, frontLines, "render", frontFill, backFill))
            << flags;
    }
}

TEST_F(Mesh_RL_GL_requests_calls_test, facetedModeIsFilled) {
    EXPECT_THAT(request(2, 0), ElementsAre(backFill, frontFill, "renderFaceted", frontFill, backFill));
    EXPECT_THAT(request(2, TEXTURE),
                ElementsAre(backFill, frontFill, "renderFacetedTextured map", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_requests_calls_test, facetedModeWithBackFacesInLines) {
    EXPECT_THAT(request(2, BACK), ElementsAre(backLines, frontFill, "renderFaceted", frontFill, backFill));
    EXPECT_THAT(request(2, BACK | TEXTURE),
                ElementsAre(backLines, frontFill, "renderFacetedTextured map", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_requests_calls_test, smoothModeIsFilled) {
    EXPECT_THAT(request(3, 0), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
    EXPECT_THAT(request(3, TEXTURE),
                ElementsAre(backFill, frontFill, "renderTextured map", frontFill, backFill));
    EXPECT_THAT(request(3, BACK), ElementsAre(backLines, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_requests_calls_test, stateBeforeRequestComesBack) {
    layer.pushFillingFront(FILLING_LINES);
    layer.pushFillingBack(FILLING_LINES);
    EXPECT_THAT(request(3, 0), ElementsAre(backFill, frontFill, "render", frontLines, backLines));
    EXPECT_EQ(layer.currentFillingFront(), FILLING_LINES);
    EXPECT_EQ(layer.currentFillingBack(), FILLING_LINES);
}

TEST_F(Mesh_RL_GL_requests_calls_test, deliberatelyModeAboveThreeDrawsNothingAndPopsBothFillings) {
    for (unsigned int const mode : {4U, 5U, 0xFFFFFFFFU}) {
        layer.pushFillingBack(FILLING_LINES);
        layer.pushFillingFront(FILLING_LINES);
        EXPECT_THAT(request(mode, 0), ElementsAre(frontFill, backFill)) << mode;
        EXPECT_EQ(layer.currentFillingFront(), FILLING_SOLID) << "the entry that the caller pushed is gone";
        EXPECT_EQ(layer.currentFillingBack(), FILLING_SOLID);
    }
}

TEST_F(Mesh_RL_GL_requests_calls_test, effectIsMadeAndSurroundsDrawing) {
    Tracing_effect effect(tracing);
    EXPECT_THAT(request(3, EFFECT, &effect),
                ElementsAre("create", "init", "preprocess", backFill, frontFill, "render", "postprocess",
                            "cleanup", frontFill, backFill));
    EXPECT_THAT(request(2, EFFECT | TEXTURE, &effect),
                ElementsAre("init", "preprocess", backFill, frontFill, "renderFacetedTextured map",
                            "postprocess", "cleanup", frontFill, backFill))
        << "it is made once";
}

TEST_F(Mesh_RL_GL_requests_calls_test, effectSurroundsEveryMode) {
    Tracing_effect effect(tracing);
    effect.created = true;
    EXPECT_THAT(request(1, EFFECT, &effect),
                ElementsAre("init", "preprocess", backLines, frontLines, "render", "postprocess", "cleanup",
                            frontFill, backFill));
    EXPECT_THAT(request(4, EFFECT, &effect),
                ElementsAre("init", "preprocess", "postprocess", "cleanup", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_requests_calls_test, withoutItsFlagEffectIsNotAsked) {
    Tracing_effect effect(tracing);
    EXPECT_THAT(request(3, 0, &effect), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_requests_calls_test, flagWithoutEffectDrawsPlainly) {
    EXPECT_THAT(request(3, EFFECT), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_modes_calls_test, boxIsSixQuadsInLines) {
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    ASSERT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    gl_spy::Recording const recording;
    renderer->render(box);

    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, MESH_GOT_BOX);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, QUADS);
    ASSERT_EQ(primitive.vertices.size(), 24U);
    std::set<Point> corners;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        corners.insert(vertex.position);
    }
    EXPECT_EQ(corners.size(), 8U);
    // The smallest and largest coordinates of all positions, including the unused one.
    EXPECT_EQ(*corners.begin(), (Point{double(0.1F), double(0.2F), double(-0.4F)}));
    EXPECT_EQ(*corners.rbegin(), (Point{9, 8, 7}));
    Texts const texts = recording.texts();
    EXPECT_THAT(Texts(texts.begin(), texts.begin() + 3),
                ElementsAre(backLines, frontLines, "glBegin(GL_QUADS)"));
    EXPECT_THAT(Texts(texts.end() - 3, texts.end()), ElementsAre("glEnd()", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_modes_calls_test, boxIsComputedOnce) {
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    renderer->render(box);
    // The edit leaves the flag of the box set, so the box counts as valid.
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[4] = {100, 100, 100};
    gl_spy::Recording const recording;
    renderer->render(box);
    for (gl_spy::Vertex const& vertex : onlyPrimitive(recording).vertices) {
        EXPECT_LT(vertex.position[0], 10);
    }
}

TEST_F(Mesh_RL_GL_modes_calls_test, boxTouchesNoBuffer) {
    useBuffers();
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    gl_spy::Recording const recording;
    renderer->render(box);
    EXPECT_EQ(recording.count("glGenBuffers"), 0U);
}

TEST_F(Mesh_RL_GL_modes_calls_test, boxIsDrawnByVirtualBoxOfLayer) {
    struct Box_layer : Core_RL_GL {
        using Core_RL_GL::render;
        void render(Box3<float> const& box, bool const& wire) const override {
            boxes.push_back(box);
            wires.push_back(wire);
        }
        mutable std::vector<Box3<float>> boxes;
        mutable std::vector<bool> wires;
    };
    Box_layer const own;
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    renderer->render(box);
    VL_Raster = &layer;
    ASSERT_EQ(own.boxes.size(), 1U);
    EXPECT_FALSE(own.wires[0]);
    EXPECT_EQ(own.boxes[0].max.x, 9);
}

TEST_F(Mesh_RL_GL_modes_calls_test, noRequestBindsTexture) {
    addPerVertex("map");
    for (bool const hasBuffers : {false, true}) {
        renderer->useBufferObjects = hasBuffers;
        gl_spy::Recording const recording;
        MeshShading shading;
        shading.flags = TEXTURE;
        shading.textureChannel = "map";
        for (shading.mode = 0; shading.mode < 5; ++shading.mode) {
            renderer->render(shading);
        }
        EXPECT_EQ(recording.count("glBindTexture"), 0U);
        EXPECT_EQ(recording.count("glEnable"), 0U);
    }
}

// == Composites ==

/// Notes the edges and surfaces that the composites draw.
class Composite_renderer : public Tracing_renderer {
public:
    using Tracing_renderer::Tracing_renderer;
    void renderEdges() override { note("renderEdges"); }
};

class Mesh_RL_GL_composites_calls_test : public Mesh_fixture {
protected:
    template <class Drawing>
    Texts traceOf(Drawing const& draw) {
        gl_spy::Recording const recording;
        composite.recording = &recording;
        composite.seen = 0;
        composite.trace.clear();
        draw();
        Texts const trace = composite.ended();
        colors = recording.named("glColor4f");
        composite.recording = nullptr;
        return trace;
    }

    void expectColor(std::size_t index, double r, double g, double b, double a) {
        ASSERT_LT(index, colors.size());
        std::array<double, 4> const expected{r, g, b, a};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(colors[index].numbers.at(i), expected[i], 1e-7)
                << "color " << index << "[" << i << "]";
        }
    }

    static Texts names(Texts const& texts) {
        Texts result = texts;
        for (std::string& text : result) {
            if (text.compare(0, 10, "glColor4f(") == 0) {
                text = "color";
            }
        }
        return result;
    }

    Composite_renderer composite{&mesh, false};
    std::vector<gl_spy::Call> colors;
    Color4<float> const color{0.5F, 0.25F, 1, 0.625F};
};

TEST_F(Mesh_RL_GL_composites_calls_test, renderWithEdgesDrawsEdgesThenDarkerSurface) {
    Texts const trace = traceOf([&] { composite.renderWithEdges(color); });
    EXPECT_THAT(names(trace),
                ElementsAre("glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)", "color", "renderEdges", "color",
                            "render", "glDisable(GL_CULL_FACE)", "glCullFace(GL_BACK)"));
    expectColor(0, 0.5, 0.25, 1, 0.625);
    expectColor(1, 0.25, 0.125, 0.5, 1);
    EXPECT_FALSE(layer.currentCulling().enabled);
    EXPECT_EQ(layer.currentColor().r, 0.25F) << "the color is left as last set";
    EXPECT_EQ(layer.currentColor().a, 1);
}

TEST_F(Mesh_RL_GL_composites_calls_test, renderWithEdgesBlendingDrawsTwoSidesThenSurface) {
    layer.pushDepthTest({DEPTH_LESS_OR_EQUAL, true});
    layer.pushCulling({true, false});
    Texts const trace = traceOf([&] { composite.renderWithEdgesBlending(color, true); });
    EXPECT_THAT(names(trace),
                ElementsAre("glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)",  // a copy of the current mode
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)",   //
                            "color", "renderEdges",                            //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)",  //
                            "color", "renderEdges",                            //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)",   //
                            "glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glDepthMask(GL_FALSE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)",
                            "color", "render",                                                            //
                            "glDisable(GL_BLEND)",                                                        //
                            "glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)",  //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)"));
    expectColor(0, 0.15, 0.075, 0.3, 1);
    expectColor(1, 0.05, 0.025, 0.1, 1);
    expectColor(2, 0.5, 0.25, 1, 0.625);
    EXPECT_FALSE(layer.currentCulling().back);
    EXPECT_TRUE(layer.currentDepthTest().write);
    EXPECT_EQ(layer.currentBlending(), BLENDING_OFF);
    EXPECT_EQ(layer.currentColor().a, 0.625F);
}

TEST_F(Mesh_RL_GL_composites_calls_test, renderWithEdgesBlendingWithoutSurfaceStillSetsItsState) {
    Texts const with = traceOf([&] { composite.renderWithEdgesBlending(color, true); });
    Texts const without = traceOf([&] { composite.renderWithEdgesBlending(color, false); });
    Texts expected = with;
    expected.erase(std::find(expected.begin(), expected.end(), "render"));
    EXPECT_EQ(without, expected);
}

TEST_F(Mesh_RL_GL_composites_calls_test, compositesRestoreStacksTheyFind) {
    layer.pushCulling({true, false});
    layer.pushDepthTest({DEPTH_GREATER, true});
    layer.pushBlending(BLENDING_ALPHA);
    composite.renderWithEdges({1, 1, 1, 1});
    composite.renderWithEdgesBlending({1, 1, 1, 1}, true);
    EXPECT_TRUE(layer.currentCulling().enabled);
    EXPECT_FALSE(layer.currentCulling().back);
    EXPECT_EQ(layer.currentDepthTest().mode, DEPTH_GREATER);
    EXPECT_TRUE(layer.currentDepthTest().write);
    EXPECT_EQ(layer.currentBlending(), BLENDING_ALPHA);
}

// == No mesh ==

TEST_F(Mesh_RL_GL_modes_calls_test, rendererWithoutMeshDrawsNothing) {
    Mesh_RL_GL other(nullptr, false);
    gl_spy::Recording const recording;
    for (bool const hasBuffers : {false, true}) {
        other.useBufferObjects = hasBuffers;
        for (unsigned int mode = 0; mode < 5; ++mode) {
            other.render(MeshShading{mode, TEXTURE, "map"});
        }
        other.renderPoints(1);
        other.renderEdges();
        other.renderEdgesConnection();
        other.renderVertexNormals(1);
        other.renderVertexNormals("a", "b", 1);
        other.renderFaceNormals("a", "b", 1);
    }
    EXPECT_THAT(vertexCallsOf(recording), IsEmpty());
}

}  // namespace

}  // namespace vellum
