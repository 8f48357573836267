#include "Mesh_RL_GL.h"

#include "foundation/geometry/Mesh.h"
#include "mesh_calls.h"
#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The buffers of a mesh call by call: creation, contents, updates after edits, and their use by each drawing.

namespace vellum {

namespace {

using namespace mesh_calls;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class Mesh_RL_GL_buffers_calls_test : public Mesh_fixture {};

// == Buffers: first filling ==

TEST_F(Mesh_RL_GL_buffers_calls_test, firstUpdateMakesPositionsSmoothAndFacetedNormals) {
    EXPECT_EQ(update(), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                made(FACETED, THREE_FLOATS)}));

    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
    EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_buffers_calls_test, firstUpdateWithChannelAndEdgesMakesAllFive) {
    addPerVertex("map");
    // Six lines: two borders of each triangle, and the shared edge from both sides.
    std::size_t const edgeBytes = std::size_t{6} * 2 * 4;
    EXPECT_EQ(update("map", true),
              joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS), made(FACETED, THREE_FLOATS),
                      made(4, TWO_FLOATS), made(5, edgeBytes, ELEMENTS)}));
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, firstFillingDoesNotAskForModifiedArrays) {
    // Another renderer of the same mesh clears the modified bits.
    update();
    Mesh_RL_GL second(&mesh, false);
    second.createBufferObjects(nullptr, false);
    EXPECT_EQ(contents(4), data.soupOfPositions());
    EXPECT_EQ(contents(5), data.soupOfVertexNormals());
    EXPECT_EQ(contents(6), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_buffers_calls_test, positionsAreNarrowedToNearestFloat) {
    data.positions[0] = {1.0 / 3.0, 16777217.0, 1e300};
    data.positions[1].x = 1e-60;
    mesh.setPositions(data.positions);
    update();
    std::vector<float> const soup = contents(POSITIONS);
    EXPECT_EQ(soup[0], static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(soup[1], 16777216.0F);
    EXPECT_EQ(soup[2], std::numeric_limits<float>::infinity());
    EXPECT_EQ(soup[3], 0.0F);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, updateClearsModifiedBitsOfWhatItHasConsumed) {
    addIndexed("map");
    for (ArrayId const& id : {mesh.positions(), mesh.triangles(), mesh.vertexNormals(),
                              mesh.normalTriangles(), mesh.faceNormals()}) {
        EXPECT_TRUE(isModified(id));
    }
    update("map");
    for (ArrayId const& id :
         {mesh.positions(), mesh.triangles(), mesh.vertexNormals(), mesh.normalTriangles(),
          mesh.faceNormals(), mesh.namedArray(MeshArrayInf_ns::PER_FACE, "map"),
          mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "map")}) {
        EXPECT_FALSE(isModified(id));
    }
}

TEST_F(Mesh_RL_GL_buffers_calls_test, updateLeavesOtherReadersBitsAlone) {
    ArrayTypeable* const positions = VL_ArrayServer.resolve(mesh.positions());
    positions->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2;
    update();
    EXPECT_EQ(positions->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK,
              ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, emptyMeshHasEmptyBuffersThatAreNotWritten) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    VL_String const channel("map");
    gl_spy::Recording const recording;
    emptyRenderer.createBufferObjects(&channel, true);

    Texts expected;
    for (unsigned int name = 1; name <= 5; ++name) {
        std::string const target = name == 5 ? ELEMENTS : ARRAY;
        expected =
            joined({expected,
                    {"glGenBuffers(1, pointer)", binding(target, name),
                     call("glBufferData", target + ", 0, null, GL_DYNAMIC_DRAW"), binding(target, 0)}});
    }
    EXPECT_EQ(recording.texts(), expected);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, emptyMeshDrawsZeroCorners) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    emptyRenderer.useBufferObjects = true;
    gl_spy::Recording recording;
    emptyRenderer.render();
    emptyRenderer.renderFaceted();
    emptyRenderer.renderEdges();
    EXPECT_EQ(recording.count("glDrawArrays"), 2U);
    for (gl_spy::Call const& c : recording.named("glDrawArrays")) {
        EXPECT_EQ(c.text(), "glDrawArrays(GL_TRIANGLES, 0, 0)");
    }
    emptyRenderer.useBufferObjects = false;
    recording.clear();
    emptyRenderer.render();
    EXPECT_THAT(recording.texts(), ElementsAre("glBegin(GL_TRIANGLES)", "glEnd()"));
}

// == Buffers: refilling ==

TEST_F(Mesh_RL_GL_buffers_calls_test, updatingTwiceWithoutEditsFillsOnce) {
    addPerVertex("map");
    update("map", true);
    EXPECT_THAT(update("map", true), IsEmpty());
    EXPECT_THAT(update(nullptr, false), IsEmpty());
    EXPECT_THAT(update("map", true), IsEmpty()) << "the channel is remembered over updates without one";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, editOfOneArrayRewritesOnlyItsBuffersInPlace) {
    addPerVertex("map");
    update("map", true);
    constexpr unsigned int COORDINATES = 4;
    constexpr unsigned int EDGES = 5;
    struct Row {
        char const* name;
        ArrayId id;
        std::function<void()> edit;
        std::vector<unsigned int> rewritten;
    };
    std::vector<Row> const rows{
        {"positions",
         mesh.positions(),
         [&] {
             data.positions[3] = {-1, -2, -3};
             VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[3] = data.positions[3];
         },
         {POSITIONS}},
        {"triangles",
         mesh.triangles(),
         [&] {
             data.triangles[0] = {0, 1, 4};
             VL_ArrayServer.resolve(mesh.triangles())->as<Triangle>()[0] = data.triangles[0];
         },
         {POSITIONS, EDGES}},
        {"vertex normals",
         mesh.vertexNormals(),
         [&] {
             data.vertexNormals[4] = {7, 8, 9};
             VL_ArrayServer.resolve(mesh.vertexNormals())->as<Vector3<float>>()[4] = data.vertexNormals[4];
         },
         {SMOOTH, EDGES}},
        {"normal triangles",
         mesh.normalTriangles(),
         [&] {
             data.normalTriangles[0].e0 = 3;
             VL_ArrayServer.resolve(mesh.normalTriangles())->as<Triangle>()[0] = data.normalTriangles[0];
         },
         {SMOOTH, EDGES}},
        {"face normals",
         mesh.faceNormals(),
         [&] {
             data.faceNormals[1] = {7, 8, 9, 0};
             VL_ArrayServer.resolve(mesh.faceNormals())->as<Color4<float>>()[1] = data.faceNormals[1];
         },
         {FACETED}},
        {"coordinates", mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map"), [] {}, {COORDINATES}},
        {"adjacency", mesh.adjacency(), [] {}, {EDGES}},
    };
    for (Row const& row : rows) {
        row.edit();
        mesh.markModified(row.id);
        Texts expected;
        for (unsigned int const name : row.rewritten) {
            expected = joined({expected, rewritten(name, name == EDGES ? ELEMENTS : ARRAY)});
        }
        EXPECT_EQ(update("map", true), expected) << row.name;
        EXPECT_FALSE(isModified(row.id)) << row.name;
        EXPECT_EQ(contents(POSITIONS), data.soupOfPositions()) << row.name;
        EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals()) << row.name;
        EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals()) << row.name;
    }
}

TEST_F(Mesh_RL_GL_buffers_calls_test, deliberatelyEditedTrianglesLeaveCoordinates) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{1, 2, 0}, {2, 1, 3}});
    EXPECT_EQ(update("map"), rewritten(POSITIONS));
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
    mesh.markModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map"));
    EXPECT_EQ(update("map"), rewritten(4));
    EXPECT_EQ(contents(4).at(0), PER_POSITION_SOUP[2]) << "coordinates of position 1";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, editWithoutModifiedBitIsNotDetected) {
    update();
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[3] = {-1, -2, -3};
    EXPECT_THAT(update(), IsEmpty());
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
}

TEST_F(Mesh_RL_GL_buffers_calls_test, newTriangleCountReallocatesAllBuffers) {
    update();
    // Only the arrays whose length follows the count are set: positions and vertex normals stay unmodified.
    data.triangles = {{0, 1, 2}};
    data.normalTriangles = {{4, 3, 2}};
    data.faceNormals = {{1, 2, 3, 4}};
    mesh.setTriangles(data.triangles);
    mesh.setNormalTriangles(data.normalTriangles);
    mesh.setFaceNormals(data.faceNormals);
    mesh.setAdjacency({{BORDER, BORDER, BORDER}});

    EXPECT_EQ(update(), joined({replaced(1, 4, 36), replaced(2, 5, 36), replaced(3, 6, 36)}));
    EXPECT_EQ(contents(4), data.soupOfPositions());
    EXPECT_EQ(contents(5), data.soupOfVertexNormals());
    EXPECT_EQ(contents(6), data.soupOfFaceNormals());
    EXPECT_THAT(update(), IsEmpty()) << "the new count is the one to compare with";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, newTriangleCountReallocatesCoordinates) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{0, 1, 2}});
    mesh.setNormalTriangles({{4, 3, 2}});
    mesh.setFaceNormals({{1, 2, 3, 4}});
    mesh.setAdjacency({{BORDER, BORDER, BORDER}});
    EXPECT_EQ(update("map"),
              joined({replaced(1, 5, 36), replaced(2, 6, 36), replaced(3, 7, 36), replaced(4, 8, 24)}));
    EXPECT_EQ(contents(8), (std::vector<float>{0.5F, 0.25F, 0.75F, 0.125F, 0.375F, 1}));
}

TEST_F(Mesh_RL_GL_buffers_calls_test, newTriangleCountDropsOldCoordinates) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}, {1, 4, 3}});
    mesh.setNormalTriangles({{4, 3, 2}, {1, 0, 2}, {0, 0, 0}});
    mesh.setFaceNormals({{1, 2, 3, 4}, {1, 2, 3, 4}, {1, 2, 3, 4}});
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    EXPECT_EQ(update().back(), deleted(4)) << "the new count is taken, the coordinates are dropped";
    EXPECT_EQ(update("map"), made(8, TWO_FLOATS / 2 * 3));
    EXPECT_EQ(contents(8).at(0), PER_POSITION_SOUP[0]);
    EXPECT_EQ(driver.liveObjects(), 4U);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, failedMapSkipsWritingAndLeavesNothingBound) {
    gl_spy::Script broken;
    broken.nullMap();
    addPerVertex("map");
    // The calls are those of a mapping that succeeds.
    EXPECT_EQ(update("map", true),
              joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS), made(FACETED, THREE_FLOATS),
                      made(4, TWO_FLOATS), made(5, std::size_t{6} * 2 * 4, ELEMENTS)}));
    for (unsigned int name = 1; name <= 5; ++name) {
        for (unsigned char const& byte : driver.bufferContents(name)) {
            EXPECT_EQ(byte, 0xA5);
        }
    }
    EXPECT_THAT(gl_spy::bufferContents(0x8892), IsEmpty());  // GL_ARRAY_BUFFER
    EXPECT_THAT(gl_spy::bufferContents(0x8893), IsEmpty());  // GL_ELEMENT_ARRAY_BUFFER
}

// == Buffers: texture coordinates ==

TEST_F(Mesh_RL_GL_buffers_calls_test, anotherChannelRefillsCoordinatesAlone) {
    addPerVertex("map");
    addIndexed("other");
    update("map");
    EXPECT_EQ(update("other"), rewritten(4));
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    EXPECT_EQ(update("map"), rewritten(4)) << "back again";
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, channelIsComparedByItsText) {
    addPerVertex("map");
    update("map");
    EXPECT_THAT(update("map"), IsEmpty()) << "another string with the same text";
    EXPECT_EQ(update("Map"), rewritten(4));
}

TEST_F(Mesh_RL_GL_buffers_calls_test, nullChannelLeavesCoordinatesAlone) {
    addPerVertex("map");
    update("map");
    mesh.markModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map"));
    EXPECT_THAT(update(nullptr), IsEmpty());
    EXPECT_EQ(update("map"), rewritten(4)) << "the bit has waited";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, modifiedCoordinatesRefillChannel) {
    addPerVertex("map");
    update("map");
    ArrayId const id = mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map");
    VL_ArrayServer.resolve(id)->as<Vector2<float>>()[0] = {42, 43};
    mesh.markModified(id);
    EXPECT_EQ(update("map"), rewritten(4));
    EXPECT_EQ(contents(4).at(0), 42);
    EXPECT_EQ(contents(4).at(1), 43);
    EXPECT_FALSE(isModified(id));
}

TEST_F(Mesh_RL_GL_buffers_calls_test, eachArrayOfIndexedChannelRefillsIt) {
    addIndexed("map");
    update("map");
    for (unsigned int const bits : {MeshArrayInf_ns::PER_FACE, MeshArrayInf_ns::TRINDEXED}) {
        mesh.markModified(mesh.namedArray(bits, "map"));
        EXPECT_EQ(update("map"), rewritten(4)) << bits;
        EXPECT_FALSE(isModified(mesh.namedArray(bits, "map")));
    }
}

TEST_F(Mesh_RL_GL_buffers_calls_test, channelsGiveSameCoordinatesInBothPaths) {
    using UVs = Array<Vector2<float>>;
    constexpr auto PER_VERTEX = MeshArrayInf_ns::PER_VERTEX;
    constexpr auto PER_FACE = MeshArrayInf_ns::PER_FACE;
    constexpr auto TRINDEXED = MeshArrayInf_ns::TRINDEXED;
    std::vector<float> const none(12, 0.0F);
    struct Row {
        char const* name;
        std::function<void(char const*)> add;
        std::vector<float> expected;
    };
    std::vector<Row> const rows{
        {"per position", [&](char const* channel) { addPerVertex(channel); }, PER_POSITION_SOUP},
        {"own triangles before positions",
         [&](char const* channel) {
             addPerVertex(channel);
             addIndexed(channel);
         },
         INDEXED_SOUP},
        {"own triangles without values",
         [&](char const* channel) {
             addPerVertex(channel);
             mesh.addNamedArray(TRINDEXED, channel, COORDINATE_TRIANGLES);
         },
         PER_POSITION_SOUP},
        {"further bits make another channel",
         [&](char const* channel) {
             addPerVertex(channel);
             mesh.addNamedArray(PER_VERTEX | MeshArrayInf_ns::UV, channel, INDEXED);
         },
         PER_POSITION_SOUP},
        {"too few values are filled with zeros",
         [&](char const* channel) {
             mesh.addNamedArray(TRINDEXED, channel, Array<Triangle>{{1, 2, 0xFFFFFFFFU}});
             mesh.addNamedArray(PER_FACE, channel, UVs{{20, 30}, {21, 31}});
         },
         {21, 31, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"values of another type",
         [&](char const* channel) {
             mesh.addNamedArray(PER_VERTEX, channel, Array<Color4<float>>{{1, 2, 3, 4}, {1, 2, 3, 4}});
         },
         none},
    };
    for (Row const& row : rows) {
        row.add(row.name);
        gl_spy::Recording const recording;
        renderer->useBufferObjects = false;
        renderer->renderTextured(row.name);
        std::vector<float> immediate;
        for (gl_spy::Vertex const& vertex : onlyPrimitive(recording).vertices) {
            immediate.push_back(static_cast<float>(vertex.textureCoordinate[0]));
            immediate.push_back(static_cast<float>(vertex.textureCoordinate[1]));
        }
        EXPECT_EQ(immediate, row.expected) << row.name;
        update(row.name);
        EXPECT_EQ(contents(4), row.expected) << row.name;
    }
}

TEST_F(Mesh_RL_GL_buffers_calls_test, channelBitsMatchExactlyUnderSearchMask) {
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::UV, "map", PER_POSITION);
    update("map");
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));

    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::ATTACHED_TO_LIFECYCLE, "owned",
                       PER_POSITION);
    update("owned");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP) << "the state bit is not searched for";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, deliberatelyMissingChannelMapsItsBufferAndWritesNothing) {
    EXPECT_EQ(update("missing"), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                         made(FACETED, THREE_FLOATS), made(4, TWO_FLOATS)}));
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));
    EXPECT_THAT(update("missing"), IsEmpty());
}

// == Buffers: edges ==

TEST_F(Mesh_RL_GL_buffers_calls_test, indexBufferHoldsCornersOfSoup) {
    update(nullptr, true);
    // Each border is listed once, the crease from both sides; corner k of triangle t is 3t + k.
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {1, 2}, {2, 0},
                                                                        {3, 4}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, smoothEdgeHasNoIndices) {
    // The second triangle has the first one's normals at the shared corners.
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {2, 0}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, anotherNumberOfEdgesReallocatesIndexBuffer) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(update(nullptr, true), joined({rewritten(SMOOTH), replaced(4, 5, 32, ELEMENTS)}));
}

TEST_F(Mesh_RL_GL_buffers_calls_test, edgesFollowEditThatAnotherDrawingHasConsumed) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update();  // clears the bit, and does not ask for edges
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 32, ELEMENTS));
}

TEST_F(Mesh_RL_GL_buffers_calls_test, modifiedAdjacencyRewritesIndexBufferAlone) {
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    EXPECT_THAT(update(), IsEmpty()) << "only the edges are made of the adjacency";
    EXPECT_TRUE(isModified(mesh.adjacency()));
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 48, ELEMENTS));
    EXPECT_FALSE(isModified(mesh.adjacency()));
}

// == Drawing from buffers ==

class Mesh_RL_GL_drawn_buffers_calls_test : public Mesh_fixture {
protected:
    void SetUp() override {
        Mesh_fixture::SetUp();
        addPerVertex("map");
        update("map", true);  // 1 to 5
        useBuffers();
    }

    template <class Drawing>
    Texts callsOf(Drawing const& draw) {
        gl_spy::Recording const recording;
        draw();
        return recording.texts();
    }
};

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, renderDrawsPositionsWithSmoothNormals) {
    EXPECT_THAT(callsOf([&] { renderer->render(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, renderFacetedDrawsPositionsWithFacetedNormals) {
    EXPECT_THAT(callsOf([&] { renderer->renderFaceted(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, FACETED), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, renderTexturedAddsCoordinates) {
    EXPECT_THAT(callsOf([&] { renderer->renderTextured("map"); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", binding(ARRAY, 4),
                            "glTexCoordPointer(2, GL_FLOAT, 0, null)", binding(ARRAY, SMOOTH),
                            "glNormalPointer(GL_FLOAT, 0, null)", binding(ARRAY, POSITIONS),
                            "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_TRIANGLES, 0, 6)",
                            binding(ARRAY, 0), "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, renderFacetedTexturedAddsCoordinates) {
    EXPECT_THAT(callsOf([&] { renderer->renderFacetedTextured("map"); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", binding(ARRAY, 4),
                            "glTexCoordPointer(2, GL_FLOAT, 0, null)", binding(ARRAY, FACETED),
                            "glNormalPointer(GL_FLOAT, 0, null)", binding(ARRAY, POSITIONS),
                            "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_TRIANGLES, 0, 6)",
                            binding(ARRAY, 0), "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, deliberatelyPointsOfBuffersAreCornersOfSoup) {
    layer.setPointSize(2);
    EXPECT_THAT(callsOf([&] { renderer->renderPoints(5); }),
                ElementsAre("glPointSize(5)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_POINTS, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glPointSize(2)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, renderEdgesDrawsIndexedLines) {
    EXPECT_THAT(callsOf([&] { renderer->renderEdges(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            binding(ELEMENTS, 5), "glDrawElements(GL_LINES, 12, GL_UNSIGNED_INT, null)",
                            binding(ELEMENTS, 0), binding(ARRAY, 0), "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, eachDrawingBringsBuffersUpToDateFirst) {
    VL_String const channel("map");
    std::vector<std::pair<char const*, std::function<void()>>> const drawings{
        {"render", [&] { renderer->render(); }},
        {"renderFaceted", [&] { renderer->renderFaceted(); }},
        {"renderTextured", [&] { renderer->renderTextured(channel); }},
        {"renderFacetedTextured", [&] { renderer->renderFacetedTextured(channel); }},
        {"renderEdges", [&] { renderer->renderEdges(); }}};
    for (auto const& drawing : drawings) {
        mesh.markModified(mesh.positions());
        Texts const calls = callsOf(drawing.second);
        Texts const update = rewritten(POSITIONS);
        ASSERT_GE(calls.size(), update.size()) << drawing.first;
        EXPECT_THAT(Texts(calls.begin(), calls.begin() + 4), ElementsAreArray(update)) << drawing.first;
    }
    mesh.markModified(mesh.positions());
    Texts const points = callsOf([&] { renderer->renderPoints(3); });
    EXPECT_THAT(Texts(points.begin() + 1, points.begin() + 5), ElementsAreArray(rewritten(POSITIONS)));
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, drawingsAskForTheirOwnChannel) {
    addIndexed("other");
    renderer->renderFacetedTextured("other");
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    renderer->renderTextured("map");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_drawn_buffers_calls_test, onlyEdgesAskForIndexBuffer) {
    Mesh_RL_GL other(&mesh, false);
    other.useBufferObjects = true;
    gl_spy::Recording const recording;
    other.render();
    other.renderFaceted();
    other.renderTextured("map");
    other.renderFacetedTextured("map");
    other.renderPoints(1);
    EXPECT_EQ(recording.count("glGenBuffers"), 4U);
    other.renderEdges();
    EXPECT_EQ(recording.count("glGenBuffers"), 5U);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, framesLeaveNoBufferBehind) {
    useBuffers();
    for (unsigned int frame = 0; frame < 50; ++frame) {
        if (frame % 3 == 0) {
            mesh_shapes::grid(1 + frame % 4).fill(mesh);
        }
        mesh.workNormals(0.5F);
        mesh.workAdjacency();
        renderer->renderTextured(frame % 2 == 0 ? "map" : "other");
        renderer->renderEdges();
        EXPECT_EQ(driver.liveObjects(), 5U);
    }
}

// == Arrays that a mesh lacks, and arrays with a fault ==

TEST_F(Mesh_RL_GL_buffers_calls_test, droppingDeletesAllBuffersAndNextDrawingFillsThemAgain) {
    addPerVertex("map");
    useBuffers();
    update("map", true);
    std::vector<float> const positions = contents(POSITIONS);
    std::vector<unsigned int> const edges = indices(5);
    {
        gl_spy::Recording const recording;
        renderer->dropBufferObjects();
        EXPECT_THAT(recording.texts(),
                    ElementsAre(deleted(1), deleted(2), deleted(3), deleted(4), deleted(5)));
    }
    EXPECT_EQ(driver.liveObjects(), 0U);

    // No array is modified: the missing buffers alone are the reason.
    update("map", true);
    EXPECT_EQ(driver.liveObjects(), 5U);
    EXPECT_EQ(contents(6), positions);
    EXPECT_EQ(contents(9), PER_POSITION_SOUP);
    EXPECT_EQ(indices(10), edges);
    EXPECT_FALSE(edges.empty());
    EXPECT_THAT(update("map", true), IsEmpty()) << "filled once";
}

TEST_F(Mesh_RL_GL_buffers_calls_test, droppedBuffersNeedNoContextAnyMore) {
    update(nullptr, true);
    renderer->dropBufferObjects();
    gl_spy::Recording const recording;
    renderer->dropBufferObjects();
    renderer.reset();
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Mesh_RL_GL_buffers_calls_test, normalsThatMeshLacksAreZeroInBothPaths) {
    Mesh plain;
    mesh_shapes::grid(1).fill(plain);
    Mesh_RL_GL other(&plain, false);
    gl_spy::Recording recording;
    other.render();
    other.renderFaceted();
    EXPECT_EQ(recording.count("glNormal3fv"), 6U + 2U);
    for (gl_spy::Call const& c : recording.named("glNormal3fv")) {
        EXPECT_EQ(c.text(), "glNormal3fv({0, 0, 0})");
    }
    other.useBufferObjects = true;
    other.render();
    EXPECT_EQ(contents(SMOOTH), std::vector<float>(18, 0.0F));
    EXPECT_EQ(contents(FACETED), std::vector<float>(18, 0.0F));
    recording.clear();
    other.renderEdges();
    other.renderFaceNormals(1);
    other.renderVertexNormals(1);
    other.renderNormals(0, 1);
    EXPECT_THAT(vertexCallsOf(recording), IsEmpty());
}

TEST_F(Mesh_RL_GL_buffers_calls_test, nothingIsDrawnOfMeshWithFaultUntilItIsRepaired) {
    useBuffers();
    auto const drawnCorners = [&] {
        gl_spy::Recording const recording;
        renderer->render();
        return recording.named("glDrawArrays").at(0).numbers.at(1);
    };
    EXPECT_EQ(drawnCorners(), 6);
    mesh.setTriangles({{0, 1, 5}, {2, 1, 3}});
    EXPECT_EQ(drawnCorners(), 0);
    EXPECT_TRUE(isModified(mesh.triangles())) << "the next drawing checks them again";

    data.positions.pushBack({7, 7, 7});
    mesh.setPositions(data.positions);
    EXPECT_EQ(drawnCorners(), 6);
}

TEST_F(Mesh_RL_GL_buffers_calls_test, adjacencyWithFaultHasNoEdgesAndHidesNoSurface) {
    for (unsigned int const entry : {2U * 4, 3U, 0xFFFFFFFEU}) {
        mesh.setAdjacency({{entry, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
        for (bool const hasBuffers : {false, true}) {
            renderer->useBufferObjects = hasBuffers;
            gl_spy::Recording const recording;
            renderer->renderEdges();
            renderer->renderEdgesConnection();
            renderer->renderEdgesUnconnected();
            EXPECT_THAT(vertexCallsOf(recording), IsEmpty()) << entry;
            for (gl_spy::Call const& c : recording.named("glDrawElements")) {
                EXPECT_EQ(c.text(), "glDrawElements(GL_LINES, 0, GL_UNSIGNED_INT, null)");
            }
        }
        gl_spy::Recording const recording;
        renderer->render();
        EXPECT_EQ(recording.named("glDrawArrays").at(0).numbers.at(1), 6) << entry;
    }
}

// Meant for the sanitizers, which detect reads outside an array.
TEST_F(Mesh_RL_GL_buffers_calls_test, indicesOutOfRangeWrittenInPlaceAreFoundBeforeTheyAreRead) {
    update(nullptr, true);
    for (ArrayId const id : {mesh.triangles(), mesh.normalTriangles(), mesh.adjacency()}) {
        ArrayTypeable* const array = VL_ArrayServer.resolve(id);
        Triangle const former = array->as<Triangle>()[1];
        array->as<Triangle>()[1] = {0x7FFFFFFFU, 0x10000000U, 0xFFFFFFFEU};
        mesh.markModified(id);
        for (bool const hasBuffers : {true, false}) {
            renderer->useBufferObjects = hasBuffers;
            renderer->render();
            renderer->renderEdges();
            renderer->renderEdgesConnection();
            renderer->renderNormals(1, 1);
        }
        array->as<Triangle>()[1] = former;
        mesh.markModified(id);
        useBuffers();
        gl_spy::Recording const recording;
        renderer->render();
        EXPECT_EQ(recording.named("glDrawArrays").at(0).numbers.at(1), 6);
    }
}

}  // namespace

}  // namespace vellum
