#include "Mesh_RL_GL.h"
#include "Core_RL_GL.h"
#include "foundation/geometry/Vector2.h"

#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using namespace mesh_shapes;
using testing::IsEmpty;
using Texts = std::vector<std::string>;
using UVs = Array<Vector2<float>>;

constexpr unsigned int NONE = Mesh::ADJACENCY_NONE;
constexpr auto PER_VERTEX = MeshArrayInf_ns::PER_VERTEX;
constexpr auto PER_FACE = MeshArrayInf_ns::PER_FACE;
constexpr auto TRINDEXED = MeshArrayInf_ns::TRINDEXED;

Texts joined(std::initializer_list<Texts> lists) {
    Texts all;
    for (Texts const& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

/// The fixture: no context. Its mesh has two triangles that share the edge between the vertices 0 and 2:
///
///     3 --- 2        triangle 0 is (0, 1, 2), triangle 1 is (0, 2, 3)
///     | 1 / |        at vertex 0 they have the same normal, at vertex 2 they do not: from triangle 0 the shared
///     | / 0 |        edge starts at 2 and is hard, from triangle 1 it starts at 0 and is not
///     0 --- 1
class Mesh_RL_GL_calls_test : public testing::Test {
protected:
    void SetUp() override {
        mesh.setPositions({{0, 0, 0}, {1, 0, 0.5}, {1, 1, 0}, {0, 1, 0}});
        mesh.setTriangles({{0, 1, 2}, {0, 2, 3}});
        mesh.setVertexNormals({{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, -1}, {0.5F, 0.5F, 0}});
        mesh.setNormalTriangles({{0, 1, 2}, {0, 4, 3}});
        mesh.setFaceNormals({{0, 0.25F, 1, 7}, {0.125F, 0, 1, 7}});
        ASSERT_TRUE(mesh.workAdjacency());
    }

    /// All calls of one drawing.
    template <class Drawing>
    static Texts calls(Drawing const& draw) {
        gl_spy::Recording recording;
        draw();
        return recording.texts();
    }

    Texts rendered() {
        return calls([&] { renderer->render(); });
    }

    /// The names of the buffers that were mapped by a drawing.
    template <class Drawing>
    static std::vector<unsigned int> mapped(Drawing const& draw) {
        gl_spy::Recording recording;
        draw();
        std::vector<unsigned int> names;
        unsigned int bound = 0;
        for (gl_spy::Call const& call : recording.calls()) {
            if (call.name == "glBindBuffer")
                bound = static_cast<unsigned int>(call.numbers.back());
            if (call.name == "glMapBuffer")
                names.push_back(bound);
        }
        return names;
    }

    std::vector<float> floats(unsigned int buffer) {
        return gl_spy::as<float>(driver.bufferContents(buffer));
    }

    /// Everything in buffers, once.
    void fillAll(VL_String const& channel = "uv") {
        renderer->useBufferObjects = true;
        renderer->createBufferObjects(&channel, true);
    }

    void remake(bool secondArgument) { renderer = std::make_unique<Mesh_RL_GL>(&mesh, secondArgument); }

    gl_spy::Script driver = gl_spy::drivers::gl15();
    Core_RL_GL core;
    Mesh mesh;
    std::unique_ptr<Mesh_RL_GL> renderer = std::make_unique<Mesh_RL_GL>(&mesh, false);
};

// The names that the first drawing gives to the buffers.
constexpr unsigned int POSITIONS = 1;
constexpr unsigned int SMOOTH = 2;
constexpr unsigned int FACETED = 3;
constexpr unsigned int COORDINATES = 4;

std::string bind(unsigned int name) {
    return "glBindBuffer(GL_ARRAY_BUFFER, " + std::to_string(name) + ")";
}

Texts const MAPPED{"glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY)", "glUnmapBuffer(GL_ARRAY_BUFFER)", bind(0)};

Texts newStore(unsigned int name, unsigned int bytes) {
    return {"glGenBuffers(1, pointer)", bind(name),
            "glBufferData(GL_ARRAY_BUFFER, " + std::to_string(bytes) + ", null, GL_DYNAMIC_DRAW)"};
}

Texts smoothDraw(unsigned int corners) {
    return {"glEnableClientState(GL_VERTEX_ARRAY)",
            "glEnableClientState(GL_NORMAL_ARRAY)",
            bind(SMOOTH),
            "glNormalPointer(GL_FLOAT, 0, null)",
            bind(POSITIONS),
            "glVertexPointer(3, GL_FLOAT, 0, null)",
            "glDrawArrays(GL_TRIANGLES, 0, " + std::to_string(corners) + ")",
            bind(0),
            "glDisableClientState(GL_NORMAL_ARRAY)",
            "glDisableClientState(GL_VERTEX_ARRAY)"};
}

// == Construction and destruction ==

TEST_F(Mesh_RL_GL_calls_test, constructionMakesNoCallAndDeliberatelyIgnoresItsSecondArgument) {
    EXPECT_THAT(calls([&] { remake(true); }), IsEmpty());
    EXPECT_FALSE(renderer->useBufferObjects);
    EXPECT_EQ(renderer->mesh, &mesh);
    EXPECT_EQ(renderer->shader, nullptr);
}

TEST_F(Mesh_RL_GL_calls_test, destructionWithoutBuffersMakesNoCall) {
    renderer->render();
    EXPECT_THAT(calls([&] { renderer.reset(); }), IsEmpty());
}

TEST_F(Mesh_RL_GL_calls_test, destructionDeletesTheBuffersInOrder) {
    fillAll();
    gl_spy::Recording recording;
    renderer.reset();
    EXPECT_EQ(recording.texts(),
              (Texts{"glDeleteBuffers(1, {1})", "glDeleteBuffers(1, {2})", "glDeleteBuffers(1, {3})",
                     "glDeleteBuffers(1, {4})", "glDeleteBuffers(1, {5})"}));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

// == Immediate mode ==

TEST_F(Mesh_RL_GL_calls_test, theSmoothSurfaceSendsNormalAndPositionOfEveryCorner) {
    EXPECT_EQ(rendered(), (Texts{"glBegin(GL_TRIANGLES)",                                 //
                                 "glNormal3fv({0, 0, 1})", "glVertex3dv({0, 0, 0})",      //
                                 "glNormal3fv({0, 1, 0})", "glVertex3dv({1, 0, 0.5})",    //
                                 "glNormal3fv({1, 0, 0})", "glVertex3dv({1, 1, 0})",      //
                                 "glNormal3fv({0, 0, 1})", "glVertex3dv({0, 0, 0})",      //
                                 "glNormal3fv({0.5, 0.5, 0})", "glVertex3dv({1, 1, 0})",  //
                                 "glNormal3fv({0, 0, -1})", "glVertex3dv({0, 1, 0})", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, theFacetedSurfaceSendsTheNormalOfATriangleOnce) {
    EXPECT_EQ(
        calls([&] { renderer->renderFaceted(); }),
        (Texts{"glBegin(GL_TRIANGLES)", "glNormal3fv({0, 0.25, 1})", "glVertex3dv({0, 0, 0})",
               "glVertex3dv({1, 0, 0.5})", "glVertex3dv({1, 1, 0})", "glNormal3fv({0.125, 0, 1})",
               "glVertex3dv({0, 0, 0})", "glVertex3dv({1, 1, 0})", "glVertex3dv({0, 1, 0})", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, texturedSurfacesSendNormalCoordinateAndPosition) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{0.1F, 0}, {0.2F, 0}, {0.3F, 0}, {0.4F, 0}});
    Texts const smooth = calls([&] { renderer->renderTextured("uv"); });
    ASSERT_EQ(smooth.size(), 20U);
    EXPECT_EQ(Texts(smooth.begin() + 13, smooth.begin() + 16),
              (Texts{"glNormal3fv({0.5, 0.5, 0})", "glTexCoord2fv({0.3, 0})", "glVertex3dv({1, 1, 0})"}));
    Texts const faceted = calls([&] { renderer->renderFacetedTextured("uv"); });
    ASSERT_EQ(faceted.size(), 20U);
    EXPECT_EQ(Texts(faceted.begin() + 16, faceted.begin() + 19),
              (Texts{"glNormal3fv({0.125, 0, 1})", "glTexCoord2fv({0.4, 0})", "glVertex3dv({0, 1, 0})"}));
}

TEST_F(Mesh_RL_GL_calls_test, pointsAreDrawnOncePerPositionAndTheSizeIsRestored) {
    core.setPointSize(2);
    EXPECT_EQ(
        calls([&] { renderer->renderPoints(5); }),
        (Texts{"glPointSize(5)", "glBegin(GL_POINTS)", "glVertex3dv({0, 0, 0})", "glVertex3dv({1, 0, 0.5})",
               "glVertex3dv({1, 1, 0})", "glVertex3dv({0, 1, 0})", "glEnd()", "glPointSize(2)"}));
    EXPECT_EQ(core.currentPointSize(), 2.0F);
}

// == Texture coordinates, both paths ==

/// The coordinates of all six corners, x only, without and with buffers.
class Mesh_RL_GL_coordinates_test : public Mesh_RL_GL_calls_test {
protected:
    void expectCoordinates(std::vector<float> const& expected) {
        gl_spy::Recording recording;
        renderer->renderTextured("uv");
        std::vector<float> immediate;
        for (gl_spy::Call const& call : recording.named("glTexCoord2fv"))
            immediate.push_back(static_cast<float>(call.numbers.front()));
        EXPECT_EQ(immediate, expected);

        fillAll();
        std::vector<float> const contents = floats(COORDINATES);
        ASSERT_EQ(contents.size(), 12U);
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(contents[2 * i], expected[i]) << "corner " << i;
    }
};

TEST_F(Mesh_RL_GL_coordinates_test, perVertexTheyFollowThePositionIndices) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{10, 0}, {11, 0}, {12, 0}, {13, 0}});
    expectCoordinates({10, 11, 12, 10, 12, 13});
}

TEST_F(Mesh_RL_GL_coordinates_test, aChannelWithItsOwnTrianglesFollowsThem) {
    mesh.addNamedArray(TRINDEXED, "uv", Array<Triangle>{{5, 4, 3}, {2, 1, 0}});
    mesh.addNamedArray(PER_FACE, "uv", UVs{{20, 0}, {21, 0}, {22, 0}, {23, 0}, {24, 0}, {25, 0}});
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{10, 0}, {11, 0}, {12, 0}, {13, 0}});
    expectCoordinates({25, 24, 23, 22, 21, 20});
}

TEST_F(Mesh_RL_GL_coordinates_test, ownTrianglesWithoutValuesGiveWayToThoseOfTheVertices) {
    mesh.addNamedArray(TRINDEXED, "uv", Array<Triangle>{{5, 4, 3}, {2, 1, 0}});
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{10, 0}, {11, 0}, {12, 0}, {13, 0}});
    expectCoordinates({10, 11, 12, 10, 12, 13});
}

TEST_F(Mesh_RL_GL_coordinates_test, aChannelUnderFurtherBitsIsAnotherOne) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{10, 0}, {11, 0}, {12, 0}, {13, 0}});
    mesh.addNamedArray(PER_VERTEX | MeshArrayInf_ns::UV, "uv", UVs{{0, 0}, {0, 0}, {0, 0}, {0, 0}});
    mesh.addNamedArray(PER_VERTEX, "uv2", UVs{{0, 0}, {0, 0}, {0, 0}, {0, 0}});
    expectCoordinates({10, 11, 12, 10, 12, 13});
}

TEST_F(Mesh_RL_GL_coordinates_test, whatAChannelDoesNotReachIsZero) {
    mesh.addNamedArray(TRINDEXED, "uv", Array<Triangle>{{1, 2, 0xFFFFFFFFU}});
    mesh.addNamedArray(PER_FACE, "uv", UVs{{20, 0}, {21, 0}});
    expectCoordinates({21, 0, 0, 0, 0, 0});
}

TEST_F(Mesh_RL_GL_coordinates_test, aChannelOfOtherElementsIsZeroEverywhere) {
    mesh.addNamedArray(PER_VERTEX, "uv", Array<Color4<float>>{{1, 2, 3, 4}, {1, 2, 3, 4}});
    expectCoordinates({0, 0, 0, 0, 0, 0});
}

TEST_F(Mesh_RL_GL_coordinates_test, aChannelThatTheMeshLacksIsZeroInImmediateMode) {
    gl_spy::Recording recording;
    renderer->renderFacetedTextured("uv");
    EXPECT_EQ(recording.named("glTexCoord2fv").size(), 6U);
    for (gl_spy::Call const& call : recording.named("glTexCoord2fv"))
        EXPECT_EQ(call.text(), "glTexCoord2fv({0, 0})");
}

TEST_F(Mesh_RL_GL_coordinates_test, deliberatelyTheBufferOfAChannelThatTheMeshLacksIsNotWritten) {
    renderer->useBufferObjects = true;
    Texts const texts = calls([&] { renderer->renderTextured("uv"); });
    EXPECT_EQ(Texts(texts.begin() + 18, texts.begin() + 24), joined({newStore(COORDINATES, 48), MAPPED}));
    for (unsigned char const byte : driver.bufferContents(COORDINATES))
        EXPECT_EQ(byte, 0xA5);
    EXPECT_THAT(mapped([&] { renderer->renderTextured("uv"); }), IsEmpty()) << "the same name again";
}

// == Buffers ==

TEST_F(Mesh_RL_GL_calls_test, theFirstDrawingFillsTheBuffersAndDraws) {
    renderer->useBufferObjects = true;
    EXPECT_EQ(rendered(), joined({newStore(POSITIONS, 72), MAPPED, newStore(SMOOTH, 72), MAPPED,
                                  newStore(FACETED, 72), MAPPED, smoothDraw(6)}));
}

TEST_F(Mesh_RL_GL_calls_test, drawingTwiceUploadsNothing) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    fillAll();
    EXPECT_EQ(rendered(), smoothDraw(6));
    auto const drawAll = [&] {
        renderer->renderTextured("uv");
        renderer->renderEdges();
        renderer->renderFaceted();
        renderer->renderPoints(1);
        renderer->renderFacetedTextured("uv");
    };
    gl_spy::Recording recording;
    drawAll();
    for (char const* name : {"glMapBuffer", "glBufferData", "glBufferSubData", "glGenBuffers"})
        EXPECT_EQ(recording.count(name), 0U) << name;
}

TEST_F(Mesh_RL_GL_calls_test, theSoupHoldsEveryCornerInSinglePrecision) {
    mesh.setPositions({{0.1, 0, 0}, {1, 0, 0.5}, {1, 1e-60, 0}, {0, 1, 1e300}});
    fillAll();
    constexpr float INF = std::numeric_limits<float>::infinity();
    EXPECT_EQ(floats(POSITIONS), (std::vector<float>{0.1F, 0, 0, 1, 0, 0.5F, 1, 0, 0,  //
                                                     0.1F, 0, 0, 1, 0, 0, 0, 1, INF}));
    EXPECT_EQ(floats(SMOOTH),
              (std::vector<float>{0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0.5F, 0.5F, 0, 0, 0, -1}));
    EXPECT_EQ(floats(FACETED), (std::vector<float>{0, 0.25F, 1, 0, 0.25F, 1, 0, 0.25F, 1,  //
                                                   0.125F, 0, 1, 0.125F, 0, 1, 0.125F, 0, 1}));
}

TEST_F(Mesh_RL_GL_calls_test, facetedAndTexturedDrawsBindTheirOwnBuffers) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    fillAll();
    EXPECT_EQ(
        calls([&] { renderer->renderFacetedTextured("uv"); }),
        (Texts{"glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
               "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", bind(COORDINATES),
               "glTexCoordPointer(2, GL_FLOAT, 0, null)", bind(FACETED), "glNormalPointer(GL_FLOAT, 0, null)",
               bind(POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_TRIANGLES, 0, 6)",
               bind(0), "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
               "glDisableClientState(GL_NORMAL_ARRAY)", "glDisableClientState(GL_VERTEX_ARRAY)"}));
    Texts const faceted = calls([&] { renderer->renderFaceted(); });
    EXPECT_EQ(faceted[2], bind(FACETED));
    Texts const textured = calls([&] { renderer->renderTextured("uv"); });
    EXPECT_EQ(textured[5], bind(SMOOTH));
}

TEST_F(Mesh_RL_GL_calls_test, pointsFromBuffersDeliberatelyDrawEveryCorner) {
    fillAll();
    core.setPointSize(2);
    EXPECT_EQ(calls([&] { renderer->renderPoints(5); }),
              (Texts{"glPointSize(5)", "glEnableClientState(GL_VERTEX_ARRAY)", bind(POSITIONS),
                     "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_POINTS, 0, 6)", bind(0),
                     "glDisableClientState(GL_VERTEX_ARRAY)", "glPointSize(2)"}));
}

TEST_F(Mesh_RL_GL_calls_test, changingOneArrayRewritesOnlyItsBuffersInPlace) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    fillAll();
    constexpr unsigned int EDGES = 5;
    using Names = std::vector<unsigned int>;
    struct {
        char const* name;
        ArrayId id;
        Names expected;
    } const rows[] = {
        {"positions", mesh.positions(), {POSITIONS}},
        {"triangles", mesh.triangles(), {POSITIONS, EDGES}},
        {"vertex normals", mesh.vertexNormals(), {SMOOTH, EDGES}},
        {"normal triangles", mesh.normalTriangles(), {SMOOTH, EDGES}},
        {"face normals", mesh.faceNormals(), {FACETED}},
        {"texture coordinates", mesh.namedArray(PER_VERTEX, "uv"), {COORDINATES}},
        {"adjacency", mesh.adjacency(), {EDGES}},
    };
    VL_String const channel("uv");
    for (auto const& row : rows) {
        mesh.markModified(row.id);
        gl_spy::Recording recording;
        EXPECT_EQ(mapped([&] { renderer->createBufferObjects(&channel, true); }), row.expected) << row.name;
        EXPECT_EQ(recording.count("glBufferData"), 0U) << row.name;
        EXPECT_FALSE(isModified(row.id)) << row.name;
        EXPECT_THAT(mapped([&] { renderer->createBufferObjects(&channel, true); }), IsEmpty()) << row.name;
    }
}

TEST_F(Mesh_RL_GL_calls_test, anArrayThatAWriterEditsInPlaceIsSeen) {
    fillAll();
    ArrayTypeable* const positions = VL_ArrayServer.resolve(mesh.positions());
    positions->as<Vector3<double>>()[3].z = 8;
    positions->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
    Texts const refill = joined({{bind(POSITIONS)}, MAPPED});
    EXPECT_EQ(rendered(), joined({refill, smoothDraw(6)}));
    EXPECT_EQ(floats(POSITIONS)[17], 8.0F);
}

TEST_F(Mesh_RL_GL_calls_test, otherTriangleCountsReallocateAllBuffersOfTheSoup) {
    renderer->useBufferObjects = true;
    renderer->render();
    mesh.setTriangles({{0, 1, 2}});
    mesh.setNormalTriangles({{0, 1, 2}});
    mesh.setFaceNormals({{0, 0, 1, 0}});
    clearModified(mesh.faceNormals());
    auto const replaced = [](unsigned int old, unsigned int name) {
        return joined({{"glDeleteBuffers(1, {" + std::to_string(old) + "})"}, newStore(name, 36), MAPPED});
    };
    Texts const texts = rendered();
    EXPECT_EQ(Texts(texts.begin(), texts.begin() + 21),
              joined({replaced(1, 4), replaced(2, 5), replaced(3, 6)}));
    EXPECT_EQ(texts[27], "glDrawArrays(GL_TRIANGLES, 0, 3)");
    EXPECT_EQ(floats(6), (std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1})) << "although not marked";
    EXPECT_EQ(driver.liveObjects(), 3U);
}

TEST_F(Mesh_RL_GL_calls_test, anotherChannelRefillsOnlyTheCoordinates) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{1, 0}, {1, 0}, {1, 1}, {0, 1}});
    mesh.addNamedArray(PER_VERTEX, "second", UVs{{2, 0}, {1, 0}, {1, 1}, {0, 1}});
    fillAll();
    VL_String const second("second");
    Texts const refill = joined({{bind(COORDINATES)}, MAPPED});
    EXPECT_EQ(calls([&] { renderer->createBufferObjects(&second, false); }), refill);
    EXPECT_EQ(floats(COORDINATES)[0], 2.0F);
    EXPECT_THAT(calls([&] { renderer->createBufferObjects(&second, false); }), IsEmpty());
    EXPECT_THAT(calls([&] { renderer->createBufferObjects(nullptr, false); }), IsEmpty());
    EXPECT_THAT(calls([&] { renderer->createBufferObjects(&second, false); }), IsEmpty())
        << "the name is remembered over drawings without texture";
}

TEST_F(Mesh_RL_GL_calls_test, deliberatelyEditedTrianglesLeaveTheCoordinates) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{1, 0}, {2, 0}, {3, 0}, {4, 0}});
    fillAll();
    mesh.setTriangles({{1, 2, 0}, {0, 2, 3}});
    EXPECT_EQ(mapped([&] { renderer->renderTextured("uv"); }), std::vector<unsigned int>{POSITIONS});
    mesh.markModified(mesh.namedArray(PER_VERTEX, "uv"));
    EXPECT_EQ(mapped([&] { renderer->renderTextured("uv"); }), std::vector<unsigned int>{COORDINATES});
    EXPECT_EQ(floats(COORDINATES)[0], 2.0F);
}

TEST_F(Mesh_RL_GL_calls_test, coordinatesOfAnotherTriangleCountAreDroppedWhenTheyAreNotWanted) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{1, 0}, {2, 0}, {3, 0}, {4, 0}});
    fillAll();
    mesh.setTriangles({{0, 1, 2}});
    mesh.setNormalTriangles({{0, 1, 2}});
    mesh.setFaceNormals({{0, 0, 1, 0}});
    Texts const texts = calls([&] { renderer->createBufferObjects(nullptr, false); });
    EXPECT_EQ(texts.back(), "glDeleteBuffers(1, {4})");
    Texts const textured = calls([&] { renderer->renderTextured("uv"); });
    EXPECT_EQ(Texts(textured.begin(), textured.begin() + 3), newStore(9, 24));
    EXPECT_EQ(floats(9), (std::vector<float>{1, 0, 2, 0, 3, 0}));
}

TEST_F(Mesh_RL_GL_calls_test, aNullMapSkipsTheWriting) {
    gl_spy::Script noMap;
    noMap.nullMap();
    renderer->useBufferObjects = true;
    VL_String const channel("uv");
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{1, 0}, {2, 0}, {3, 0}, {4, 0}});
    Texts const texts = calls([&] { renderer->createBufferObjects(&channel, true); });
    EXPECT_EQ(Texts(texts.begin(), texts.begin() + 6), joined({newStore(POSITIONS, 72), MAPPED}));
    EXPECT_EQ(texts.size(), 5U * 6);
}

TEST_F(Mesh_RL_GL_calls_test, anEmptyMeshHasBuffersOfZeroBytesAndWritesNothing) {
    Mesh empty;
    Mesh_RL_GL another(&empty, false);
    another.useBufferObjects = true;
    VL_String const channel("uv");
    auto const emptyStore = [](unsigned int name) { return joined({newStore(name, 0), {bind(0)}}); };
    EXPECT_EQ(calls([&] { another.createBufferObjects(&channel, true); }),
              joined({emptyStore(1),
                      emptyStore(2),
                      emptyStore(3),
                      emptyStore(4),
                      {"glGenBuffers(1, pointer)", "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5)",
                       "glBufferData(GL_ELEMENT_ARRAY_BUFFER, 0, null, GL_DYNAMIC_DRAW)",
                       "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)"}}));
    EXPECT_EQ(calls([&] { another.render(); }), smoothDraw(0));
    another.useBufferObjects = false;
    EXPECT_EQ(calls([&] { another.render(); }), (Texts{"glBegin(GL_TRIANGLES)", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, aRendererWithoutAMeshDrawsNothing) {
    Mesh_RL_GL another(nullptr, false);
    gl_spy::Recording recording;
    for (bool const useBuffers : {false, true}) {
        another.useBufferObjects = useBuffers;
        for (unsigned int mode = 0; mode < 5; ++mode)
            another.render(MeshShading{mode, MeshShadingFlags_ns::TEXTURE, "uv"});
        another.renderPoints(1);
        another.renderEdges();
        another.renderEdgesConnection();
        another.renderVertexNormals(1);
        another.renderVertexNormals("a", "b", 1);
        another.renderFaceNormals("a", "b", 1);
    }
    EXPECT_EQ(recording.count("glVertex3dv"), 0U);
}

TEST_F(Mesh_RL_GL_calls_test, normalsThatTheMeshLacksAreZeroInBothPaths) {
    Mesh plain;
    grid(1).fill(plain);
    Mesh_RL_GL another(&plain, false);
    gl_spy::Recording recording;
    another.render();
    another.renderFaceted();
    EXPECT_EQ(recording.count("glNormal3fv"), 6U + 2U);
    for (gl_spy::Call const& call : recording.named("glNormal3fv"))
        EXPECT_EQ(call.text(), "glNormal3fv({0, 0, 0})");
    another.useBufferObjects = true;
    another.render();
    EXPECT_EQ(floats(SMOOTH), std::vector<float>(18, 0.0F));
    EXPECT_EQ(floats(FACETED), std::vector<float>(18, 0.0F));
    recording.clear();
    another.renderEdges();
    another.renderFaceNormals(1);
    another.renderVertexNormals(1);
    another.renderNormals(0, 1);
    EXPECT_EQ(recording.count("glVertex3dv"), 0U);
}

TEST_F(Mesh_RL_GL_calls_test, framesLeaveNothingBehind) {
    mesh.addNamedArray(PER_VERTEX, "uv", UVs{{1, 0}, {2, 0}, {3, 0}, {4, 0}});
    mesh.addNamedArray(PER_VERTEX, "second", UVs{{1, 0}, {2, 0}, {3, 0}, {4, 0}});
    renderer->useBufferObjects = true;
    for (unsigned int frame = 0; frame < 50; ++frame) {
        if (frame % 3 == 0)
            grid(1 + frame % 4).fill(mesh);
        mesh.workNormals(0.5F);
        mesh.workAdjacency();
        renderer->renderTextured(frame % 2 == 0 ? "uv" : "second");
        renderer->renderEdges();
        EXPECT_EQ(driver.liveObjects(), 5U);
    }
}

// == Meshes with a fault ==

TEST_F(Mesh_RL_GL_calls_test, nothingIsDrawnOfAMeshWithAFaultUntilItIsRepaired) {
    renderer->useBufferObjects = true;
    renderer->render();
    mesh.setTriangles({{0, 1, 4}, {0, 2, 3}});
    Texts const texts = rendered();
    EXPECT_EQ(texts[texts.size() - 4], "glDrawArrays(GL_TRIANGLES, 0, 0)");
    EXPECT_TRUE(isModified(mesh.triangles())) << "it is looked through again";
    renderer->useBufferObjects = false;
    EXPECT_EQ(rendered(), (Texts{"glBegin(GL_TRIANGLES)", "glEnd()"}));
    EXPECT_EQ(calls([&] { renderer->renderVertexNormals(1); }), (Texts{"glBegin(GL_LINES)", "glEnd()"}));

    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {7, 7, 7}});
    renderer->useBufferObjects = true;
    Texts const repaired = rendered();
    EXPECT_EQ(repaired[repaired.size() - 4], "glDrawArrays(GL_TRIANGLES, 0, 6)");
}

TEST_F(Mesh_RL_GL_calls_test, anAdjacencyWithAFaultMarksNothingAndHidesNoSurface) {
    for (unsigned int const entry : {2U * 4, 3U, 0xFFFFFFFEU}) {
        mesh.setAdjacency({{entry, NONE, NONE}, {NONE, NONE, NONE}});
        for (bool const useBuffers : {false, true}) {
            renderer->useBufferObjects = useBuffers;
            gl_spy::Recording recording;
            renderer->renderEdges();
            renderer->renderEdgesConnection();
            renderer->renderEdgesUnconnected();
            EXPECT_EQ(recording.count("glVertex3dv"), 0U);
            for (gl_spy::Call const& call : recording.named("glDrawElements"))
                EXPECT_EQ(call.text(), "glDrawElements(GL_LINES, 0, GL_UNSIGNED_INT, null)");
        }
        Texts const texts = rendered();
        EXPECT_EQ(texts[texts.size() - 4], "glDrawArrays(GL_TRIANGLES, 0, 6)");
    }
}

TEST_F(Mesh_RL_GL_calls_test, garbageThatAWriterLeavesInPlaceIsFoundBeforeItIsRead) {
    fillAll();
    for (ArrayId const id : {mesh.triangles(), mesh.normalTriangles(), mesh.adjacency()}) {
        ArrayTypeable* const array = VL_ArrayServer.resolve(id);
        Triangle const former = array->as<Triangle>()[1];
        array->as<Triangle>()[1] = {0x7FFFFFFFU, 0x10000000U, 0xFFFFFFFEU};
        array->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
        for (bool const useBuffers : {true, false}) {
            renderer->useBufferObjects = useBuffers;
            renderer->render();
            renderer->renderEdges();
            renderer->renderEdgesConnection();
            renderer->renderNormals(1, 1);
        }
        array->as<Triangle>()[1] = former;
        array->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
        renderer->useBufferObjects = true;
        Texts const texts = rendered();
        EXPECT_EQ(texts[texts.size() - 4], "glDrawArrays(GL_TRIANGLES, 0, 6)");
    }
}

// == Edges ==

/// The vertices of the one block of a recording.
std::vector<gl_spy::Vertex> verticesOf(gl_spy::Recording const& recording) {
    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    EXPECT_EQ(primitives.size(), 1U);
    return primitives.empty() ? std::vector<gl_spy::Vertex>() : primitives.front().vertices;
}

/// The edges as they are drawn without buffers: for each end its normal and position.
std::vector<std::array<float, 6>> immediateEdges(Mesh_RL_GL& renderer) {
    renderer.useBufferObjects = false;
    gl_spy::Recording recording;
    renderer.renderEdges();
    std::vector<std::array<float, 6>> ends;
    for (gl_spy::Vertex const& v : verticesOf(recording))
        ends.push_back({float(v.normal[0]), float(v.normal[1]), float(v.normal[2]), float(v.position[0]),
                        float(v.position[1]), float(v.position[2])});
    return ends;
}

/// The same through the index buffer.
std::vector<std::array<float, 6>> bufferedEdges(Mesh_RL_GL& renderer, gl_spy::Script const& driver) {
    renderer.useBufferObjects = true;
    gl_spy::Recording recording;
    renderer.renderEdges();
    std::vector<unsigned int> bound;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glDrawElements") {
            EXPECT_EQ(call.enums, (std::vector<unsigned int>{GL_LINES, GL_UNSIGNED_INT}));
            break;
        }
        if (call.name == "glBindBuffer")
            bound.push_back(static_cast<unsigned int>(call.numbers.back()));
    }
    EXPECT_GE(bound.size(), 3U);
    std::size_t const count = bound.size();
    auto const indices = gl_spy::as<unsigned int>(driver.bufferContents(bound[count - 1]));
    auto const positions = gl_spy::as<float>(driver.bufferContents(bound[count - 2]));
    auto const normals = gl_spy::as<float>(driver.bufferContents(bound[count - 3]));
    EXPECT_EQ(recording.named("glDrawElements").at(0).numbers.front(), double(indices.size()));
    std::vector<std::array<float, 6>> ends;
    for (unsigned int const i : indices)
        ends.push_back({normals[3 * i], normals[3 * i + 1], normals[3 * i + 2], positions[3 * i],
                        positions[3 * i + 1], positions[3 * i + 2]});
    return ends;
}

TEST_F(Mesh_RL_GL_calls_test, anEdgeEmitsNormalAndPositionOfBothEnds) {
    Mesh_RL_GL another(&mesh, false);
    Texts const texts = calls([&] { another.renderEdges(); });
    // Borders: 0-1 and 1-2 of the first triangle, 2-3 and 3-0 of the second. The shared edge 2-0 of the first
    // triangle starts at vertex 2, where the normals differ; from the second it starts at 0, where they do not.
    ASSERT_EQ(texts.size(), 2U + 5 * 4);
    EXPECT_EQ(Texts(texts.begin() + 9, texts.begin() + 13),
              (Texts{"glNormal3fv({1, 0, 0})", "glVertex3dv({1, 1, 0})", "glNormal3fv({0, 0, 1})",
                     "glVertex3dv({0, 0, 0})"}));
    EXPECT_EQ(texts[13], "glNormal3fv({0.5, 0.5, 0})");
}

TEST_F(Mesh_RL_GL_calls_test, edgesFromBuffersAreDrawnByIndices) {
    fillAll();
    EXPECT_EQ(calls([&] { renderer->renderEdges(); }),
              (Texts{"glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                     bind(SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)", bind(POSITIONS),
                     "glVertexPointer(3, GL_FLOAT, 0, null)", "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5)",
                     "glDrawElements(GL_LINES, 10, GL_UNSIGNED_INT, null)",
                     "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)", bind(0),
                     "glDisableClientState(GL_NORMAL_ARRAY)", "glDisableClientState(GL_VERTEX_ARRAY)"}));
    EXPECT_EQ(gl_spy::as<unsigned int>(driver.bufferContents(5)),
              (std::vector<unsigned int>{0, 1, 1, 2, 2, 0, 4, 5, 5, 3}));
}

TEST_F(Mesh_RL_GL_calls_test, theIndexBufferHasExactlyTheEdgesOfTheImmediatePath) {
    struct {
        char const* name;
        Shape shape;
        float crease;
        std::size_t edges;
    } const rows[] = {
        {"grid", grid(7), 0.7F, 28},
        {"cube with hard edges", cube(), 0.7F, 24},
        {"cube without", cube(), Mesh::NO_CREASE, 0},
        {"sphere", sphere(9), 0.7F, 0},
        {"Moebius band", moebiusBand(24), 1.5F, 48 + 2},
        {"more than 65536 triangles", grid(190, 0.3), 0.7F, 760},
    };
    for (auto const& row : rows) {
        Mesh shape;
        row.shape.fill(shape);
        ASSERT_TRUE(shape.workNormals(row.crease));
        ASSERT_TRUE(shape.workAdjacency());
        Mesh_RL_GL another(&shape, false);
        auto const immediate = immediateEdges(another);
        EXPECT_EQ(immediate.size(), 2 * row.edges) << row.name;
        EXPECT_EQ(bufferedEdges(another, driver), immediate) << row.name;
    }
}

TEST_F(Mesh_RL_GL_calls_test, normalsAreComparedAsFloats) {
    constexpr float NAN_ = std::numeric_limits<float>::quiet_NaN();
    struct {
        Vector3<float> own, other;
        bool isDrawn;
    } const rows[] = {{{0, 0, 1}, {-0.0F, 0, 1}, false},
                      {{0, 0, 1}, {0, 0, 0.99999994F}, true},
                      {{0, 0, 1}, {0, 1e-40F, 1}, true},
                      {{NAN_, 0, 1}, {NAN_, 0, 1}, true}};
    for (auto const& row : rows) {
        // The shared edge starts at vertex 2 in the first triangle and at vertex 0 in the second.
        mesh.setVertexNormals({{0, 0, 1}, {0, 0, 1}, row.own, {0, 0, 1}, row.other});
        auto const immediate = immediateEdges(*renderer);
        EXPECT_EQ(immediate.size(), row.isDrawn ? 10U : 8U);
        EXPECT_EQ(bufferedEdges(*renderer, driver).size(), immediate.size());
    }
}

TEST_F(Mesh_RL_GL_calls_test, theEdgesAreRebuiltAlsoWhenAnotherDrawingConsumedTheBits) {
    fillAll();
    mesh.setVertexNormals({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    renderer->render();
    EXPECT_FALSE(isModified(mesh.vertexNormals()));
    Texts const texts = calls([&] { renderer->renderEdges(); });
    EXPECT_EQ(Texts(texts.begin(), texts.begin() + 3),
              (Texts{"glDeleteBuffers(1, {5})", "glGenBuffers(1, pointer)",
                     "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 6)"}));
    EXPECT_EQ(bufferedEdges(*renderer, driver), immediateEdges(*renderer));
    EXPECT_EQ(bufferedEdges(*renderer, driver).size(), 8U);
}

TEST_F(Mesh_RL_GL_calls_test, asManyEdgesAsBeforeAreRewrittenInPlace) {
    fillAll();
    mesh.markModified(mesh.adjacency());
    EXPECT_EQ(calls([&] { renderer->createBufferObjects(nullptr, true); }),
              (Texts{"glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5)",
                     "glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY)",
                     "glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER)", "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)"}));
    mesh.markModified(mesh.adjacency());
    EXPECT_EQ(rendered(), smoothDraw(6)) << "only the edges are made of the adjacency";
    EXPECT_TRUE(isModified(mesh.adjacency()));
}

TEST_F(Mesh_RL_GL_calls_test, aConnectionIsMarkedWithAPointInsideTheNeighbor) {
    mesh.setPositions({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}});
    Texts const texts = calls([&] { renderer->renderEdgesConnection(); });
    ASSERT_EQ(texts.size(), 2U + 2 * 4 + 1);
    EXPECT_EQ(texts[0], "glColor3f(1, 1, 1)");
    EXPECT_EQ(texts[1], "glBegin(GL_LINES)");
    gl_spy::Recording recording;
    renderer->renderEdgesConnection();
    auto const vertices = verticesOf(recording);
    // From triangle 0, its edge from 2 to 0; the neighbor (0, 2, 3) has vertex 2 at its corner 1.
    double const w = 0.44999998807907104;
    double const o = 0.10000000149011612;
    double const n = 0.699999988079071;
    double const f = 0.30000001192092896;
    std::array<double, 3> const inside{w * 10 + w * 0 + o * 0, w * 10 + w * 10 + o * 0, 0};
    EXPECT_EQ(vertices[0].position, (std::array<double, 3>{n * 10 + f * 0, n * 10 + f * 0, 0}));
    EXPECT_EQ(vertices[1].position, inside);
    EXPECT_EQ(vertices[2].position, inside);
    EXPECT_EQ(vertices[3].position, (std::array<double, 3>{f * 10 + n * 0, f * 10 + n * 0, 0}));
}

TEST_F(Mesh_RL_GL_calls_test, connectionsDeliberatelyTakeTheNeighborAs16Bits) {
    Mesh large;
    Shape const shape = grid(190);
    shape.fill(large);
    large.workAdjacency();
    Mesh_RL_GL another(&large, false);
    gl_spy::Recording recording;
    another.renderEdgesConnection();
    Array<Triangle> const adjacency = copyOf<Triangle>(large.adjacency());
    // The marks come four vertices for each connected edge.
    std::size_t mark = 0;
    std::size_t wrapped = 0;
    auto const vertices = verticesOf(recording);
    for (unsigned int t = 0; t < adjacency.size(); ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned int const entry = at(adjacency[t], k);
            if (entry == NONE)
                continue;
            unsigned int const u = (entry >> 2) % 65536;
            wrapped += (entry >> 2) >= 65536 ? 1 : 0;
            unsigned int const c = entry & 3U;
            auto const p = [&](unsigned int corner) {
                return shape.positions[at(shape.triangles[u], corner % 3)];
            };
            Vector3<double> const inside =
                p(c) * double(0.45F) + p(c + 1) * double(0.45F) + p(c + 2) * double(0.1F);
            ASSERT_EQ(vertices[mark * 4 + 1].position, (std::array<double, 3>{inside.x, inside.y, inside.z}));
            ++mark;
        }
    }
    EXPECT_EQ(vertices.size(), mark * 4);
    EXPECT_GT(wrapped, 1000U);
}

TEST_F(Mesh_RL_GL_calls_test, aBorderIsMarkedWithAPointInsideItsTriangle) {
    mesh.setPositions({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}});
    gl_spy::Recording recording;
    renderer->renderEdgesUnconnected();
    EXPECT_EQ(recording.texts()[0], "glColor3f(1, 1, 1)");
    auto const vertices = verticesOf(recording);
    ASSERT_EQ(vertices.size(), 4U * 4);
    // Edge from 0 to 1 of triangle (0, 1, 2).
    EXPECT_EQ(vertices[0].position, (std::array<double, 3>{0.30000001192092896 * 10, 0, 0}));
    EXPECT_EQ(vertices[1].position, (std::array<double, 3>{0.25 * 10 + 0.75 * 5, 0.25 * 10, 0}));
    EXPECT_EQ(vertices[2].position, vertices[1].position);
    EXPECT_EQ(vertices[3].position, (std::array<double, 3>{0.699999988079071 * 10, 0, 0}));
}

TEST_F(Mesh_RL_GL_calls_test, aClosedMeshHasOnlyConnections) {
    Mesh closed;
    cube().fill(closed);
    closed.workAdjacency();
    Mesh_RL_GL another(&closed, false);
    gl_spy::Recording recording;
    another.renderEdgesUnconnected();
    EXPECT_EQ(recording.count("glVertex3dv"), 0U);
    another.renderEdgesConnection();
    EXPECT_EQ(recording.count("glVertex3dv"), 36U * 4);
}

// == Normals ==

TEST_F(Mesh_RL_GL_calls_test, vertexNormalsAreIndexedByTheVertex) {
    EXPECT_EQ(
        calls([&] { renderer->renderVertexNormals(2); }),
        (Texts{"glBegin(GL_LINES)", "glVertex3dv({0, 0, 0})", "glVertex3dv({0, 0, 2})",
               "glVertex3dv({1, 0, 0.5})", "glVertex3dv({1, 2, 0.5})", "glVertex3dv({1, 1, 0})",
               "glVertex3dv({3, 1, 0})", "glVertex3dv({0, 1, 0})", "glVertex3dv({0, 1, -2})", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, fewerVertexNormalsThanPositionsAreAllThatIsDrawn) {
    Mesh other;
    other.setPositions({{0, 0, 0}, {1, 0, 0}});
    other.setVertexNormals({{0, 0, 1}});
    Mesh_RL_GL another(&other, false);
    EXPECT_EQ(calls([&] { another.renderVertexNormals(1); }).size(), 4U);
}

TEST_F(Mesh_RL_GL_calls_test, faceNormalsDeliberatelyStartAtTheSinglePrecisionThird) {
    Mesh triangle;
    oneTriangle().fill(triangle);
    triangle.setFaceNormals({{0, 0, 1, 7}});
    Mesh_RL_GL another(&triangle, false);
    EXPECT_EQ(calls([&] { another.renderFaceNormals(0.5F); }),
              (Texts{"glBegin(GL_LINES)", "glVertex3dv({1.0000000298023224, 1.0000000298023224, 0})",
                     "glVertex3dv({1.0000000298023224, 1.0000000298023224, 0.5})", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, theNormalsOfOneTriangleGoThroughTheNormalTriangles) {
    EXPECT_EQ(calls([&] { renderer->renderNormals(1, 2); }),
              (Texts{"glBegin(GL_LINES)", "glVertex3dv({0, 0, 0})", "glVertex3dv({0, 0, 2})",
                     "glVertex3dv({1, 1, 0})", "glVertex3dv({2, 2, 0})", "glVertex3dv({0, 1, 0})",
                     "glVertex3dv({0, 1, -2})", "glEnd()"}));
    for (unsigned int const beyond : {2U, 0xFFFFFFFFU})
        EXPECT_EQ(calls([&] { renderer->renderNormals(beyond, 2); }),
                  (Texts{"glBegin(GL_LINES)", "glEnd()"}));
}

TEST_F(Mesh_RL_GL_calls_test, namedVectorsAreDrawnFromNamedPoints) {
    mesh.addNamedArray(PER_VERTEX, "points", Array<Vector3<double>>{{1, 2, 3}, {4, 5, 6}});
    mesh.addNamedArray(PER_VERTEX, "forces", Array<Color4<float>>{{1, 0, 0, 9}, {0, 1, 0, 9}});
    EXPECT_EQ(calls([&] { renderer->renderVertexNormals("points", "forces", 2); }),
              (Texts{"glBegin(GL_LINES)", "glVertex3dv({1, 2, 3})", "glVertex3dv({3, 2, 3})",
                     "glVertex3dv({4, 5, 6})", "glVertex3dv({4, 7, 6})", "glEnd()"}));
    mesh.addNamedArray(PER_VERTEX, "forces", Array<Color4<float>>{{1, 0, 0, 9}});
    EXPECT_EQ(calls([&] { renderer->renderVertexNormals("points", "forces", 2); }).size(), 4U);
}

TEST_F(Mesh_RL_GL_calls_test, namedFaceVectorsStartInTheMiddleOfNamedPoints) {
    mesh.addNamedArray(PER_VERTEX, "points",
                       Array<Vector3<double>>{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {0, 0, 9}});
    mesh.addNamedArray(PER_FACE, "forces", Array<Color4<float>>{{0, 0, 1, 9}, {0, 0, 2, 9}});
    Texts const texts = calls([&] { renderer->renderFaceNormals("points", "forces", 1); });
    ASSERT_EQ(texts.size(), 6U);
    EXPECT_EQ(texts[1], "glVertex3dv({1.0000000298023224, 1.0000000298023224, 0})");
    EXPECT_EQ(texts[2], "glVertex3dv({1.0000000298023224, 1.0000000298023224, 1})");
    mesh.addNamedArray(PER_VERTEX, "points", Array<Vector3<double>>{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}});
    EXPECT_EQ(calls([&] { renderer->renderFaceNormals("points", "forces", 1); }).size(), 4U)
        << "the second triangle names a point that is not there";
}

TEST_F(Mesh_RL_GL_calls_test, namesThatAreNotFoundDrawNothing) {
    mesh.addNamedArray(PER_VERTEX, "points", Array<Vector3<double>>{{1, 2, 3}});
    mesh.addNamedArray(PER_FACE, "forces", Array<Color4<float>>{{1, 0, 0, 9}});
    gl_spy::Recording recording;
    renderer->renderVertexNormals("points", "forces", 1);  // the vectors are not per vertex
    renderer->renderVertexNormals("points", "nothing", 1);
    renderer->renderVertexNormals("nothing", "points", 1);
    renderer->renderVertexNormals("points", "points", 1);  // of other elements
    renderer->renderFaceNormals("forces", "forces", 1);
    EXPECT_EQ(recording.count("glVertex3dv"), 0U);
}

// == Modes ==

/// A renderer whose drawings are replaced: it notes them among the GL calls of a recording.
class Witness : public Mesh_RL_GL {
public:
    explicit Witness(Mesh* mesh) : Mesh_RL_GL(mesh, false) {}

    using Mesh_RL_GL::render;
    void render() override { note("render"); }
    void renderFaceted() const override { note("renderFaceted"); }
    void renderTextured(VL_String const& channel) override {
        note(std::string("renderTextured ") + channel.c_str());
    }
    void renderFacetedTextured(VL_String const& channel) override {
        note(std::string("renderFacetedTextured ") + channel.c_str());
    }
    void renderEdges() override { note("renderEdges"); }

    /// The GL calls since `since`, then what is noted.
    void note(std::string const& what) const {
        Texts const all = recording->texts();
        trace.insert(trace.end(), all.begin() + std::ptrdiff_t(seen), all.end());
        seen = all.size();
        trace.push_back("-> " + what);
    }
    Texts finish() {
        note("");
        trace.pop_back();
        return trace;
    }

    gl_spy::Recording* recording = nullptr;
    mutable Texts trace;
    mutable std::size_t seen = 0;
};

class Effect : public Mesh_RL_Shader {
public:
    explicit Effect(Witness& witness) : witness(witness) {}
    void create() override {
        witness.note("create");
        created = true;
    }
    void init() override { witness.note("init"); }
    void preprocess() override { witness.note("preprocess"); }
    void postprocess() override { witness.note("postprocess"); }
    void cleanup() override { witness.note("cleanup"); }

private:
    Witness& witness;
};

class Mesh_RL_GL_modes_test : public Mesh_RL_GL_calls_test {
protected:
    template <class Drawing>
    Texts trace(Drawing const& draw) {
        gl_spy::Recording recording;
        witness.recording = &recording;
        witness.trace.clear();
        witness.seen = 0;
        draw();
        return witness.finish();
    }
    Texts trace(unsigned int mode, unsigned int flags) {
        return trace([&] { witness.render(MeshShading{mode, flags, "uv"}); });
    }

    Witness witness{&mesh};
    Effect effect{witness};
};

Texts fillings(char const* back, char const* front, char const* drawing) {
    return {std::string("glPolygonMode(GL_BACK, ") + back + ")",
            std::string("glPolygonMode(GL_FRONT, ") + front + ")", std::string("-> ") + drawing,
            "glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"};
}

TEST_F(Mesh_RL_GL_modes_test, everyModePushesItsFillingsAndCallsItsDrawing) {
    constexpr unsigned int TEXTURE = MeshShadingFlags_ns::TEXTURE;
    constexpr unsigned int BACK = MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    EXPECT_EQ(trace(1, 0), fillings("GL_LINE", "GL_LINE", "render"));
    EXPECT_EQ(trace(1, TEXTURE | BACK), fillings("GL_LINE", "GL_LINE", "render"));
    EXPECT_EQ(trace(2, 0), fillings("GL_FILL", "GL_FILL", "renderFaceted"));
    EXPECT_EQ(trace(2, BACK), fillings("GL_LINE", "GL_FILL", "renderFaceted"));
    EXPECT_EQ(trace(2, TEXTURE), fillings("GL_FILL", "GL_FILL", "renderFacetedTextured uv"));
    EXPECT_EQ(trace(3, 0), fillings("GL_FILL", "GL_FILL", "render"));
    EXPECT_EQ(trace(3, BACK | TEXTURE), fillings("GL_LINE", "GL_FILL", "renderTextured uv"));
}

TEST_F(Mesh_RL_GL_modes_test, theBoxIsWorkedOutOnceAndDrawnAsLines) {
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    gl_spy::Recording recording;
    renderer->render(MeshShading{0, 0, ""});
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 1U);
    Texts const texts = recording.texts();
    EXPECT_EQ(texts[0], "glPolygonMode(GL_BACK, GL_LINE)");
    EXPECT_EQ(texts[1], "glPolygonMode(GL_FRONT, GL_LINE)");
    EXPECT_EQ(Texts(texts.end() - 2, texts.end()),
              (Texts{"glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"}));
    std::vector<gl_spy::Primitive> const faces = recording.primitives();
    std::size_t corners = 0;
    for (gl_spy::Primitive const& face : faces) {
        EXPECT_EQ(face.mode, unsigned{GL_QUADS});
        for (gl_spy::Vertex const& v : face.vertices) {
            EXPECT_TRUE(v.position[2] == 0.0 || v.position[2] == 0.5);
            ++corners;
        }
    }
    EXPECT_EQ(corners, 24U);

    // A box that is there is taken as it is, here one that no longer fits.
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[0].z = -50;
    EXPECT_EQ(calls([&] { renderer->render(MeshShading{0, 0, ""}); }), texts);
}

TEST_F(Mesh_RL_GL_modes_test, aModeAboveThreeDrawsNothingAndDeliberatelyPopsBothFillings) {
    core.pushFillingFront(FILLING_LINES);
    core.pushFillingBack(FILLING_LINES);
    for (unsigned int const mode : {4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(trace(mode, 0),
                  (Texts{"glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"}));
        EXPECT_EQ(core.currentFillingFront(), FILLING_SOLID);
        EXPECT_EQ(core.currentFillingBack(), FILLING_SOLID);
    }
}

TEST_F(Mesh_RL_GL_modes_test, anEffectIsCreatedOnceAndBracketsTheDrawing) {
    witness.shader = &effect;
    Texts const brackets{"-> init",
                         "-> preprocess",
                         "glPolygonMode(GL_BACK, GL_FILL)",
                         "glPolygonMode(GL_FRONT, GL_FILL)",
                         "-> render",
                         "-> postprocess",
                         "-> cleanup",
                         "glPolygonMode(GL_FRONT, GL_FILL)",
                         "glPolygonMode(GL_BACK, GL_FILL)"};
    EXPECT_EQ(trace(3, MeshShadingFlags_ns::GPU_SHADER), joined({{"-> create"}, brackets}));
    EXPECT_EQ(trace(3, MeshShadingFlags_ns::GPU_SHADER), brackets);
    EXPECT_EQ(trace(3, 0), fillings("GL_FILL", "GL_FILL", "render")) << "the flag asks for it";
}

TEST_F(Mesh_RL_GL_modes_test, theEffectsFlagWithoutAnEffectDrawsPlainly) {
    EXPECT_EQ(trace(3, MeshShadingFlags_ns::GPU_SHADER), fillings("GL_FILL", "GL_FILL", "render"));
}

Texts const CULLS_BACK{"glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)"};
Texts const CULLS_FRONT{"glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)"};
Texts const CULLS_NOTHING{"glDisable(GL_CULL_FACE)", "glCullFace(GL_BACK)"};

TEST_F(Mesh_RL_GL_modes_test, theSurfaceWithEdgesIsHalfAsBright) {
    EXPECT_EQ(trace([&] {
                  witness.renderWithEdges({1, 0.5F, 0.25F, 0.5F});
              }),
              joined({CULLS_BACK,
                      {"glColor4f(1, 0.5, 0.25, 0.5)", "-> renderEdges", "glColor4f(0.5, 0.25, 0.125, 1)",
                       "-> render"},
                      CULLS_NOTHING}));
}

TEST_F(Mesh_RL_GL_modes_test, blendedEdgesAreDrawnFromBothSidesAndTheStateIsRestored) {
    core.pushDepthTest({DEPTH_LESS, true});
    for (bool const withSurface : {true, false}) {
        Texts const texts = trace([&] { witness.renderWithEdgesBlending({1, 0, 0.5F, 0.5F}, withSurface); });
        EXPECT_EQ(texts, joined({CULLS_NOTHING,
                                 CULLS_BACK,
                                 {"glColor4f(0.3, 0, 0.15, 1)", "-> renderEdges"},
                                 CULLS_FRONT,
                                 {"glColor4f(0.1, 0, 0.05, 1)", "-> renderEdges"},
                                 CULLS_BACK,
                                 {"glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                                  "glDepthMask(GL_FALSE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LESS)",
                                  "glColor4f(1, 0, 0.5, 0.5)"},
                                 withSurface ? Texts{"-> render"} : Texts{},
                                 {"glDisable(GL_BLEND)", "glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)",
                                  "glDepthFunc(GL_LESS)"},
                                 CULLS_NOTHING}));
    }
}

TEST_F(Mesh_RL_GL_modes_test, compositesRestoreTheStacksThatTheyFind) {
    core.pushCulling({true, false});
    core.pushDepthTest({DEPTH_GREATER, true});
    core.pushBlending(BLENDING_ALPHA);
    trace([&] {
        witness.renderWithEdges({1, 1, 1, 1});
        witness.renderWithEdgesBlending({1, 1, 1, 1}, true);
    });
    EXPECT_TRUE(core.currentCulling().enabled);
    EXPECT_FALSE(core.currentCulling().back);
    EXPECT_EQ(core.currentDepthTest().mode, DEPTH_GREATER);
    EXPECT_TRUE(core.currentDepthTest().write);
    EXPECT_EQ(core.currentBlending(), BLENDING_ALPHA);
}

}  // namespace
}  // namespace vellum
