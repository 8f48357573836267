#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace vellum {
namespace {

using Triangles = Array<Tuple3<unsigned int>>;

constexpr unsigned int BORDER = Mesh::ADJACENCY_NONE;

// The arrays that a drawing reads through indices or triangle by triangle.
constexpr unsigned int TRIANGLES = 1;
constexpr unsigned int CORNER_NORMALS = 2;
constexpr unsigned int FACE_NORMALS = 4;
constexpr unsigned int ADJACENCY = 8;
constexpr unsigned int ALL[] = {TRIANGLES, CORNER_NORMALS, FACE_NORMALS, ADJACENCY};

/// Puts a fault into one kind of array.
void damage(Mesh& mesh, unsigned int array) {
    switch (array) {
    case TRIANGLES:
        mesh.setTriangles({{0, 1, 2}, {2, 1, 77}});
        break;
    case CORNER_NORMALS:
        mesh.setNormalTriangles({{0, 1, 2}});
        break;
    case FACE_NORMALS:
        mesh.setFaceNormals({{0, 0, 1, 0}, {0, 0, 1, 0}, {0, 0, 1, 0}});
        break;
    default:
        mesh.setAdjacency({{BORDER, BORDER, BORDER}});
        break;
    }
}

/// A square of two triangles with every array, a texture channel and named points and vectors.
void fill(Mesh& mesh) {
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}});
    mesh.setVertexNormals({{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}});
    mesh.setNormalTriangles({{0, 1, 2}, {2, 1, 3}});
    mesh.setFaceNormals({{0, 0, 1, 0}, {0, 1, 0, 0}});
    mesh.setAdjacency({{BORDER, 1 * 4 + 1, BORDER}, {0 * 4 + 2, BORDER, BORDER}});
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv",
                       Array<Vector2<float>>{{0, 0}, {1, 0}, {0, 1}, {1, 1}});
    // As many points as the damaged triangles name.
    Array<Vector3<double>> points;
    for (unsigned int i = 0; i < 78; ++i)
        points.pushBack({static_cast<double>(i), 0, 0});
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "points", points);
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "vectors",
                       Array<Color4<float>>{{0, 0, 1, 0}, {0, 1, 0, 0}});
    mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "vectors",
                       Array<Color4<float>>{{0, 0, 1, 0}, {0, 1, 0, 0}});
}

/// A drawing, and the arrays whose faults refuse it.
struct Drawing {
    char const* name;
    bool hasBuffers;
    unsigned int reads;
    std::function<void(Mesh_RL_GL&)> draw;
};

void PrintTo(Drawing const& drawing, std::ostream* out) {
    *out << drawing.name;
}

class Mesh_RL_GL_faults_calls_test : public testing::Test {
protected:
    void SetUp() override { fill(mesh); }

    /// How many vertices a drawing sends, or draws from its buffers.
    std::size_t drawn(Drawing const& drawing) {
        renderer.useBufferObjects = drawing.hasBuffers;
        gl_spy::Recording const recording;
        drawing.draw(renderer);
        std::size_t count = recording.count("glVertex3dv");
        for (gl_spy::Call const& call : recording.named("glDrawArrays"))
            count += static_cast<std::size_t>(call.numbers.at(1));
        for (gl_spy::Call const& call : recording.named("glDrawElements"))
            count += static_cast<std::size_t>(call.numbers.at(0));
        return count;
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
};

class Mesh_RL_GL_drawing_faults_calls_test : public Mesh_RL_GL_faults_calls_test,
                                             public testing::WithParamInterface<Drawing> {};

TEST_P(Mesh_RL_GL_drawing_faults_calls_test, onlyFaultsOfArraysThatItReadsRefuseIt) {
    Drawing const& drawing = GetParam();
    std::size_t const all = drawn(drawing);
    ASSERT_GT(all, 0U);
    for (unsigned int const array : ALL) {
        fill(mesh);
        damage(mesh, array);
        bool const isRefused = (drawing.reads & array) != 0;
        EXPECT_EQ(drawn(drawing) == 0, isRefused) << "a fault of array " << array;
        if (!isRefused && array != TRIANGLES) {
            EXPECT_EQ(drawn(drawing), all) << "a fault of array " << array;
        }
        fill(mesh);
        EXPECT_EQ(drawn(drawing), all) << "repaired after a fault of array " << array;
    }
}

TEST_P(Mesh_RL_GL_drawing_faults_calls_test, severalFaultsOfOtherArraysDoNotRefuseIt) {
    Drawing const& drawing = GetParam();
    for (unsigned int const array : ALL) {
        if ((drawing.reads & array) == 0)
            damage(mesh, array);
    }
    EXPECT_GT(drawn(drawing), 0U);
}

using R = Mesh_RL_GL;

INSTANTIATE_TEST_SUITE_P(
    Drawings, Mesh_RL_GL_drawing_faults_calls_test,
    testing::Values(
        Drawing{"smooth", false, TRIANGLES | CORNER_NORMALS, [](R& r) { r.render(); }},
        Drawing{"smoothFromBuffers", true, TRIANGLES | CORNER_NORMALS, [](R& r) { r.render(); }},
        Drawing{"textured", false, TRIANGLES | CORNER_NORMALS, [](R& r) { r.renderTextured("uv"); }},
        Drawing{"texturedFromBuffers", true, TRIANGLES | CORNER_NORMALS,
                [](R& r) { r.renderTextured("uv"); }},
        Drawing{"faceted", false, TRIANGLES | FACE_NORMALS, [](R& r) { r.renderFaceted(); }},
        Drawing{"facetedFromBuffers", true, TRIANGLES | FACE_NORMALS, [](R& r) { r.renderFaceted(); }},
        Drawing{"facetedTextured", false, TRIANGLES | FACE_NORMALS,
                [](R& r) { r.renderFacetedTextured("uv"); }},
        Drawing{"facetedTexturedFromBuffers", true, TRIANGLES | FACE_NORMALS,
                [](R& r) { r.renderFacetedTextured("uv"); }},
        Drawing{"points", false, 0, [](R& r) { r.renderPoints(1); }},
        Drawing{"pointsFromBuffers", true, TRIANGLES, [](R& r) { r.renderPoints(1); }},
        Drawing{"vertexNormals", false, 0, [](R& r) { r.renderVertexNormals(1); }},
        Drawing{"faceNormals", false, TRIANGLES | FACE_NORMALS, [](R& r) { r.renderFaceNormals(1); }},
        Drawing{"normalsOfATriangle", false, TRIANGLES | CORNER_NORMALS, [](R& r) { r.renderNormals(1, 1); }},
        Drawing{"namedVertexNormals", false, 0, [](R& r) { r.renderVertexNormals("points", "vectors", 1); }},
        Drawing{"namedFaceNormals", false, 0, [](R& r) { r.renderFaceNormals("points", "vectors", 1); }},
        Drawing{"edges", false, TRIANGLES | CORNER_NORMALS | ADJACENCY, [](R& r) { r.renderEdges(); }},
        Drawing{"edgesFromBuffers", true, TRIANGLES | CORNER_NORMALS | ADJACENCY,
                [](R& r) { r.renderEdges(); }},
        Drawing{"connection", false, TRIANGLES | ADJACENCY, [](R& r) { r.renderEdgesConnection(); }},
        Drawing{"unconnected", false, TRIANGLES | ADJACENCY, [](R& r) { r.renderEdgesUnconnected(); }}),
    [](auto const& info) { return std::string(info.param.name); });

// == Buffers of a mesh with left-over normals ==

TEST_F(Mesh_RL_GL_faults_calls_test, leftOverFaceNormalsAreNotUploadedAgainAndAgain) {
    damage(mesh, FACE_NORMALS);
    renderer.useBufferObjects = true;
    renderer.render();
    gl_spy::Recording const recording;
    renderer.render();
    EXPECT_EQ(recording.count("glMapBuffer"), 0U);
    EXPECT_EQ(recording.count("glGenBuffers"), 0U);
}

TEST_F(Mesh_RL_GL_faults_calls_test, repairedNormalsAreUploadedWhateverWasMarked) {
    renderer.useBufferObjects = true;
    renderer.renderFaceted();
    // The triangles become three and two again: the normals have a fault for a while, and no bit says so
    // afterwards.
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}, {0, 1, 3}});
    renderer.renderPoints(1);
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}});
    renderer.renderFaceted();
    std::vector<float> soup;
    for (unsigned int name = 1; name < 20; ++name) {
        auto const floats = gl_spy::as<float>(driver.bufferContents(name));
        if (floats.size() == 18 && floats[2] == 1 && floats[10] == 1)
            soup = floats;
    }
    EXPECT_THAT(soup, testing::ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 1, 0));
}

// == Buffers without a name ==

TEST_F(Mesh_RL_GL_faults_calls_test, withoutBufferNamesNothingIsDrawnFromTheNullPointer) {
    driver.noBufferNames();
    renderer.useBufferObjects = true;
    gl_spy::Recording const recording;
    renderer.render();
    renderer.renderFaceted();
    renderer.renderTextured("uv");
    renderer.renderPoints(1);
    renderer.renderEdges();
    for (char const* const name : {"glDrawArrays", "glDrawElements"}) {
        for (gl_spy::Call const& call : recording.named(name))
            EXPECT_THAT(call.text(),
                        testing::AnyOf(testing::HasSubstr(", 0, 0)"), testing::HasSubstr("LINES, 0,")));
    }
}

TEST_F(Mesh_RL_GL_faults_calls_test, withoutANameForTheIndicesNoEdgeIsDrawn) {
    renderer.useBufferObjects = true;
    renderer.render();  // the other buffers have their names
    driver.noBufferNames();
    gl_spy::Recording const recording;
    renderer.renderEdges();
    ASSERT_EQ(recording.count("glDrawElements"), 1U);
    EXPECT_EQ(recording.named("glDrawElements")[0].text(),
              "glDrawElements(GL_LINES, 0, GL_UNSIGNED_INT, null)");
}

}  // namespace
}  // namespace vellum
