#include "Mesh_RL_GL.h"

#include "foundation/geometry/Mesh.h"
#include "mesh_contract.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The buffers of a mesh call by call: how they are made, what they hold, what an edit writes anew, and how each
// drawing uses them.

namespace vellum {

namespace {

using namespace mesh_contract;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

// == Buffers: first filling ==

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstUpdateMakesPositionsSmoothAndFacetedNormals) {
    EXPECT_EQ(update(), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                made(FACETED, THREE_FLOATS)}));

    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
    EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstUpdateWithAChannelAndEdgesMakesAllFive) {
    addPerVertex("map");
    // Six lines: two borders of each triangle, and the shared edge from both sides.
    std::size_t const edgeBytes = std::size_t{6} * 2 * 4;
    EXPECT_EQ(update("map", true),
              joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS), made(FACETED, THREE_FLOATS),
                      made(4, TWO_FLOATS), made(5, edgeBytes, ELEMENTS)}));
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstFillingDoesNotAskForModifiedArrays) {
    // Another renderer of the same mesh has consumed the bits.
    update();
    Mesh_RL_GL second(&mesh, false);
    second.createBufferObjects(nullptr, false);
    EXPECT_EQ(contents(4), data.soupOfPositions());
    EXPECT_EQ(contents(5), data.soupOfVertexNormals());
    EXPECT_EQ(contents(6), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, positionsAreNarrowedToTheNearestFloat) {
    data.positions[0] = {1.0 / 3.0, 16777217.0, 1e300};
    mesh.setPositions(data.positions);
    update();
    std::vector<float> const soup = contents(POSITIONS);
    EXPECT_EQ(soup[0], static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(soup[1], 16777216.0F);
    EXPECT_EQ(soup[2], std::numeric_limits<float>::infinity());
}

TEST_F(Mesh_RL_GL_contract_calls_test, anUpdateClearsTheModifiedBitsOfWhatItHasConsumed) {
    addIndexed("map");
    for (ArrayId const& id : {mesh.positions(), mesh.triangles(), mesh.vertexNormals(),
                              mesh.normalTriangles(), mesh.faceNormals()})
        EXPECT_TRUE(isModified(id));
    update("map");
    for (ArrayId const& id :
         {mesh.positions(), mesh.triangles(), mesh.vertexNormals(), mesh.normalTriangles(),
          mesh.faceNormals(), mesh.namedArray(MeshArrayInf_ns::PER_FACE, "map"),
          mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "map")})
        EXPECT_FALSE(isModified(id));
}

TEST_F(Mesh_RL_GL_contract_calls_test, anUpdateLeavesTheOtherReadersBitsAlone) {
    ArrayTypeable* const positions = VL_ArrayServer.resolve(mesh.positions());
    positions->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2;
    update();
    EXPECT_EQ(positions->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK,
              ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMeshWithoutTrianglesHasBuffersOfNoBytesAndWritesNothing) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    VL_String const channel("map");
    gl_spy::Recording const recording;
    emptyRenderer.createBufferObjects(&channel, true);

    EXPECT_EQ(recording.count("glMapBuffer"), 0U);
    EXPECT_EQ(recording.count("glGenBuffers"), 5U);
    for (gl_spy::Call const& c : recording.named("glBufferData"))
        EXPECT_EQ(c.numbers.at(0), 0) << c.text();
    EXPECT_EQ(recording.count("glBufferData"), 5U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMeshWithoutTrianglesIsDrawnAsNoCorners) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    emptyRenderer.useBufferObjects = true;
    gl_spy::Recording const recording;
    emptyRenderer.render();
    emptyRenderer.renderFaceted();
    emptyRenderer.renderEdges();
    for (gl_spy::Call const& c : recording.named("glDrawArrays"))
        EXPECT_EQ(c.text(), "glDrawArrays(GL_TRIANGLES, 0, 0)");
}

// == Buffers: refilling ==

TEST_F(Mesh_RL_GL_contract_calls_test, updatingTwiceWithoutEditsFillsOnce) {
    addPerVertex("map");
    update("map", true);
    EXPECT_THAT(update("map", true), IsEmpty());
    EXPECT_THAT(update(nullptr, false), IsEmpty());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedPositionsRewriteThePositionsAlone) {
    update();
    data.positions[3] = {-1, -2, -3};
    *(VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>() + 3) = data.positions[3];
    mesh.markModified(mesh.positions());

    EXPECT_EQ(update(), rewritten(POSITIONS));
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
    EXPECT_FALSE(isModified(mesh.positions()));
}

TEST_F(Mesh_RL_GL_contract_calls_test, anEditWithoutItsModifiedBitIsNotSeen) {
    update();
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[3] = {-1, -2, -3};
    EXPECT_THAT(update(), IsEmpty());
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedTrianglesRewriteThePositionsAlone) {
    update();
    data.triangles[0] = {4, 2, 1};
    mesh.setTriangles(data.triangles);
    EXPECT_EQ(update(), rewritten(POSITIONS));
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedVertexNormalsRewriteTheSmoothNormalsAlone) {
    update();
    data.vertexNormals[4] = {7, 8, 9};
    mesh.setVertexNormals(data.vertexNormals);
    EXPECT_EQ(update(), rewritten(SMOOTH));
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedNormalTrianglesRewriteTheSmoothNormalsAlone) {
    update();
    data.normalTriangles[1] = {4, 4, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(update(), rewritten(SMOOTH));
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedFaceNormalsRewriteTheFacetedNormalsAlone) {
    update();
    data.faceNormals[1] = {7, 8, 9, 0};
    mesh.setFaceNormals(data.faceNormals);
    EXPECT_EQ(update(), rewritten(FACETED));
    EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, anotherTriangleCountReallocatesAllBuffersTogether) {
    update();
    // Only the arrays that must follow the count are set: the positions and vertex normals carry no bit.
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

TEST_F(Mesh_RL_GL_contract_calls_test, anotherTriangleCountReallocatesTheCoordinatesToo) {
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

TEST_F(Mesh_RL_GL_contract_calls_test, coordinatesOfAnOldTriangleCountAreNeverDrawnFrom) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}, {1, 4, 3}});
    mesh.setNormalTriangles({{4, 3, 2}, {1, 0, 2}, {0, 0, 0}});
    mesh.setFaceNormals({{1, 2, 3, 4}, {1, 2, 3, 4}, {1, 2, 3, 4}});
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    update();  // takes the new count without looking at the coordinates
    Texts const calls = update("map");
    EXPECT_THAT(calls, testing::Contains("glBufferData(GL_ARRAY_BUFFER, 72, null, GL_DYNAMIC_DRAW)"));
    EXPECT_EQ(driver.liveObjects(), 4U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMapThatFailsSkipsTheWritingAndLeavesNothingBound) {
    gl_spy::Script broken;
    broken.nullMap();
    addPerVertex("map");
    update("map", true);
    for (unsigned int name = 1; name <= 5; ++name) {
        for (unsigned char const& byte : driver.bufferContents(name))
            EXPECT_EQ(byte, 0xA5);
    }
    EXPECT_THAT(gl_spy::bufferContents(0x8892), IsEmpty());  // GL_ARRAY_BUFFER
    EXPECT_THAT(gl_spy::bufferContents(0x8893), IsEmpty());  // GL_ELEMENT_ARRAY_BUFFER
}

// == Buffers: texture coordinates ==

TEST_F(Mesh_RL_GL_contract_calls_test, anotherChannelRefillsTheCoordinatesAlone) {
    addPerVertex("map");
    addIndexed("other");
    update("map");
    EXPECT_EQ(update("other"), rewritten(4));
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    EXPECT_EQ(update("map"), rewritten(4)) << "back again";
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theChannelIsComparedByItsText) {
    addPerVertex("map");
    update("map");
    EXPECT_THAT(update("map"), IsEmpty()) << "another string with the same text";
    EXPECT_EQ(update("Map"), rewritten(4));
}

TEST_F(Mesh_RL_GL_contract_calls_test, aNullChannelLeavesTheCoordinatesAlone) {
    addPerVertex("map");
    update("map");
    mesh.markModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map"));
    EXPECT_THAT(update(nullptr), IsEmpty());
    EXPECT_EQ(update("map"), rewritten(4)) << "the bit has waited";
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedCoordinatesRefillTheChannel) {
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

TEST_F(Mesh_RL_GL_contract_calls_test, eachArrayOfAnIndexedChannelRefillsIt) {
    addIndexed("map");
    update("map");
    for (unsigned int const bits : {MeshArrayInf_ns::PER_FACE, MeshArrayInf_ns::TRINDEXED}) {
        mesh.markModified(mesh.namedArray(bits, "map"));
        EXPECT_EQ(update("map"), rewritten(4)) << bits;
        EXPECT_FALSE(isModified(mesh.namedArray(bits, "map")));
    }
}

TEST_F(Mesh_RL_GL_contract_calls_test, theChannelsOwnTrianglesComeBeforeThePositions) {
    addPerVertex("map");
    addIndexed("map");
    update("map");
    EXPECT_EQ(contents(4), INDEXED_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, ownTrianglesWithoutValuesAreNoChannel) {
    addPerVertex("map");
    mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, "map", COORDINATE_TRIANGLES);
    update("map");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aChannelsBitsMustBeExactUnderTheSearchMask) {
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::UV, "map", PER_POSITION);
    update("map");
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));

    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::ATTACHED_TO_LIFECYCLE, "owned",
                       PER_POSITION);
    update("owned");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP) << "the state bit is not searched for";
}

TEST_F(Mesh_RL_GL_contract_calls_test, deliberatelyAMissingChannelMapsItsBufferAndWritesNothing) {
    EXPECT_EQ(update("missing"), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                         made(FACETED, THREE_FLOATS), made(4, TWO_FLOATS)}));
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));
    EXPECT_THAT(update("missing"), IsEmpty());
}

// == Buffers: edges ==

TEST_F(Mesh_RL_GL_contract_calls_test, theIndexBufferHoldsCornersOfTheSoup) {
    update(nullptr, true);
    // Each border once, the crease from both sides; corner k of triangle t is 3t + k.
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {1, 2}, {2, 0},
                                                                        {3, 4}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aSmoothEdgeIsNoneOfTheIndices) {
    // The second triangle has the first one's normals at the shared corners.
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {2, 0}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, anotherNumberOfEdgesReallocatesTheIndexBuffer) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(update(nullptr, true), joined({rewritten(SMOOTH), replaced(4, 5, 32, ELEMENTS)}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, theSameNumberOfEdgesRewritesTheIndexBuffer) {
    update(nullptr, true);
    data.vertexNormals[0] = {3, 2, 1};
    mesh.setVertexNormals(data.vertexNormals);
    EXPECT_EQ(update(nullptr, true), joined({rewritten(SMOOTH), rewritten(4, ELEMENTS)}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, edgesFollowAnEditThatAnotherDrawingHasConsumed) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update();  // clears the bit, and does not ask for edges
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 32, ELEMENTS));
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedAdjacencyRewritesTheIndexBufferAlone) {
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 48, ELEMENTS));
}

// == Drawing from buffers ==

class Mesh_RL_GL_contract_buffers_calls_test : public Mesh_RL_GL_contract_calls_test {
protected:
    void SetUp() override {
        Mesh_RL_GL_contract_calls_test::SetUp();
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

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderDrawsPositionsWithSmoothNormals) {
    EXPECT_THAT(callsOf([&] { renderer->render(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderFacetedDrawsPositionsWithFacetedNormals) {
    EXPECT_THAT(callsOf([&] { renderer->renderFaceted(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, FACETED), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderTexturedAddsTheCoordinates) {
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

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderFacetedTexturedAddsTheCoordinates) {
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

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, deliberatelyPointsOfBuffersAreTheCornersOfTheSoup) {
    layer.setPointSize(2);
    EXPECT_THAT(callsOf([&] { renderer->renderPoints(5); }),
                ElementsAre("glPointSize(5)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_POINTS, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glPointSize(2)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderEdgesDrawsTheIndexedLines) {
    EXPECT_THAT(callsOf([&] { renderer->renderEdges(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            binding(ELEMENTS, 5), "glDrawElements(GL_LINES, 12, GL_UNSIGNED_INT, null)",
                            binding(ELEMENTS, 0), binding(ARRAY, 0), "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, eachDrawingBringsTheBuffersUpToDateFirst) {
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

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, theDrawingsAskForTheirOwnChannel) {
    addIndexed("other");
    renderer->renderFacetedTextured("other");
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    renderer->renderTextured("map");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, onlyTheEdgesAskForTheIndexBuffer) {
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

}  // namespace

}  // namespace vellum
