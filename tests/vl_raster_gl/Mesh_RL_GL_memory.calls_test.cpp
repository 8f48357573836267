#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

#include "internal/gl_api.h"
#include "tests/support/thread_limits.h"

// The memory that a mesh of a million triangles takes: its buffers and the list of its edges, and no more
// from frame to frame. The counts include the buffers that the recording GL keeps; its records of calls are
// no large blocks.

namespace vellum {

namespace {

// Allowed beside the arrays: a name, a record, and the rounding of large blocks to pages.
constexpr std::size_t SLACK = std::size_t{64} * 1024;

class Mesh_RL_GL_memory_calls_test : public testing::Test {
protected:
    void SetUp() override {
        // 708 x 708 squares of two triangles.
        mesh_shapes::grid(708, 0.1).fill(mesh);
        ASSERT_GE(mesh.triangleCount(), 1000000U);
        ASSERT_TRUE(mesh.workNormals());
        ASSERT_TRUE(mesh.workAdjacency());
        Array<Vector2<float>> coordinates;
        unsigned int const count = VL_ArrayServer.resolve(mesh.positions())->size;
        coordinates.reserve(count, false);
        coordinates.setSize(count);
        ASSERT_TRUE(mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", coordinates));
        ASSERT_EQ(mesh.fault(), MeshFault_ns::NONE);

        corners = std::size_t{mesh.triangleCount()} * 3;
        renderer.useBufferObjects = true;
    }

    /// Starts measuring the memory that is added.
    void mark() { marked = counted_memory::markHeld(); }
    std::size_t added() const {
        std::size_t const held = counted_memory::held();
        return held > marked ? held - marked : 0;
    }
    std::size_t addedAtMost() const { return counted_memory::mostHeld() - marked; }

    void drawAll() {
        renderer.render();
        renderer.renderFaceted();
        renderer.renderTextured("uv");
        renderer.renderEdges();
        renderer.renderPoints(2);
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
    std::size_t corners = 0;
    std::size_t marked = 0;
};

TEST_F(Mesh_RL_GL_memory_calls_test, millionTrianglesTakeTheirBuffersAndEdgesTheirList) {
    std::size_t const floats = sizeof(float);
    std::size_t const surfaceBuffers = corners * (3 + 3 + 3 + 2) * floats;
    std::size_t const edgeBuffer = std::size_t{708} * 4 * 2 * sizeof(unsigned int);  // the border of the grid
    std::size_t const edgeList = corners * sizeof(unsigned int);

    mark();
    std::size_t stores = 0;
    {
        gl_spy::Recording const recording;
        VL_String const channel("uv");
        renderer.createBufferObjects(&channel, false);
        for (gl_spy::Call const& call : recording.named("glBufferData")) {
            stores += static_cast<std::size_t>(call.numbers.at(0));
        }
    }
    EXPECT_EQ(stores, surfaceBuffers);
    EXPECT_LE(added(), surfaceBuffers + SLACK) << "surfaces take their buffers alone";
    EXPECT_LE(addedAtMost(), surfaceBuffers + SLACK) << "also while they are filled";

    renderer.renderEdges();
    EXPECT_LE(added(), surfaceBuffers + edgeBuffer + edgeList + SLACK);
    EXPECT_LE(addedAtMost(), surfaceBuffers + edgeBuffer + edgeList + SLACK);
    EXPECT_GE(added(), surfaceBuffers + edgeBuffer + edgeList) << "the counting works";
}

TEST_F(Mesh_RL_GL_memory_calls_test, nothingGrowsFromFrameToFrame) {
    drawAll();
    mark();
    std::size_t const largeBefore = counted_memory::largeAllocations();
    for (int frame = 0; frame < 3; ++frame) {
        drawAll();
    }
    EXPECT_EQ(added(), 0U) << "frames of an unchanged mesh";
    for (ArrayId const& id : {mesh.positions(), mesh.triangles(), mesh.vertexNormals(), mesh.adjacency(),
                              mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "uv")}) {
        mesh.markModified(id);
        drawAll();
    }
    EXPECT_EQ(added(), 0U) << "frames that refill every buffer in place";
    EXPECT_EQ(counted_memory::largeAllocations(), largeBefore) << "not even for a while";
}

TEST_F(Mesh_RL_GL_memory_calls_test, staticFrameAllocatesNothingOfItsOwn) {
    renderer.render();
    renderer.render();  // whatever the recording OpenGL keeps is there now

    std::size_t const beforeLibrary = counted_memory::allocations();
    renderer.render();
    std::size_t const byLibrary = counted_memory::allocations() - beforeLibrary;

    // The same calls by hand show how much the recording of calls takes.
    std::size_t const beforeHand = counted_memory::allocations();
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 2);
    glNormalPointer(GL_FLOAT, 0, nullptr);
    glBindBuffer(GL_ARRAY_BUFFER, 1);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(corners));
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    std::size_t const byHand = counted_memory::allocations() - beforeHand;

    EXPECT_EQ(byLibrary, byHand);
}

TEST_F(Mesh_RL_GL_memory_calls_test, destroyingRendererGivesEverythingBackButChannelsName) {
    mark();
    {
        Mesh_RL_GL another(&mesh, false);
        another.useBufferObjects = true;
        another.renderTextured("uv");
        another.renderEdges();
        EXPECT_GT(added(), corners * sizeof(float));
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
    // Deliberate (channel-name-leak): a renderer leaves the name of its last channel behind.
    EXPECT_LE(added(), SLACK);
}

// == Many triangles ==

/// The bytes of the buffers of a renderer, made in this order: positions, both normals, coordinates, edges.
std::vector<std::vector<unsigned char>> buffersOf(gl_spy::Script const& driver, Mesh& mesh) {
    Mesh_RL_GL another(&mesh, false);
    VL_String const channel("uv");
    gl_spy::Recording recording;
    another.createBufferObjects(&channel, true);
    std::vector<std::vector<unsigned char>> buffers;
    for (gl_spy::Call const& call : recording.named("glBindBuffer")) {
        auto const name = static_cast<unsigned int>(call.numbers.back());
        if (name != 0) {
            buffers.push_back(driver.bufferContents(name));
        }
    }
    return buffers;
}

TEST_F(Mesh_RL_GL_memory_calls_test, buffersHaveTheSameBytesOnEveryNumberOfThreads) {
    ArrayTypeable* const record = VL_ArrayServer.resolve(mesh.positions());
    auto* const positions = static_cast<Vector3<double>*>(record->data);
    for (unsigned int i = 0; i < record->size; i += 101) {
        positions[i].x =
            i % 2 == 0 ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity();
    }
    auto const* const triangles =
        static_cast<unsigned int const*>(VL_ArrayServer.resolve(mesh.triangles())->data);
    std::vector<float> expected;
    for (std::size_t corner = 0; corner < corners; ++corner) {
        Vector3<double> const& p = positions[triangles[corner]];
        expected.insert(expected.end(),
                        {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)});
    }
    std::vector<std::vector<unsigned char>> first;
    for (int const threads : threadLimits()) {
        setThreadLimit(threads);
        std::vector<std::vector<unsigned char>> const buffers = buffersOf(driver, mesh);
        setThreadLimit(0);
        ASSERT_EQ(buffers.size(), 5U);
        if (first.empty()) {
            first = buffers;
            ASSERT_EQ(first[0].size(), expected.size() * sizeof(float));
            EXPECT_EQ(std::memcmp(first[0].data(), expected.data(), first[0].size()), 0);
        }
        EXPECT_TRUE(buffers == first) << threads << " threads";
    }
}

}  // namespace

}  // namespace vellum
