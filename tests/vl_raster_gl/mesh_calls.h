#pragma once

#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vellum {

/// The expectations of the mesh renderer's tests: the contents of its buffers, and the calls that create and
/// write them. Most tests draw an irregular mesh: no two of its numbers are equal, and triangles share
/// normals in another way than positions.
namespace mesh_calls {

using Triangle = Tuple3<unsigned int>;
using Point = std::array<double, 3>;

inline constexpr unsigned int POINTS = 0;
inline constexpr unsigned int LINES = 1;
inline constexpr unsigned int TRIANGLES = 4;
inline constexpr unsigned int QUADS = 7;
inline constexpr unsigned int BORDER = 0xFFFFFFFFU;
inline constexpr char ARRAY[] = "GL_ARRAY_BUFFER";
inline constexpr char ELEMENTS[] = "GL_ELEMENT_ARRAY_BUFFER";

inline std::string call(std::string const& name, std::string const& arguments) {
    return name + "(" + arguments + ")";
}

inline std::string binding(std::string const& target, unsigned int name) {
    return call("glBindBuffer", target + ", " + std::to_string(name));
}

inline Texts writing(std::string const& target) {
    return {call("glMapBuffer", target + ", GL_WRITE_ONLY"), call("glUnmapBuffer", target),
            binding(target, 0)};
}

/// Creates and writes a buffer.
inline Texts made(unsigned int name, std::size_t bytes, std::string const& target = ARRAY) {
    return joined({{"glGenBuffers(1, pointer)", binding(target, name),
                    call("glBufferData", target + ", " + std::to_string(bytes) + ", null, GL_DYNAMIC_DRAW")},
                   writing(target)});
}

inline std::string deleted(unsigned int name) {
    return call("glDeleteBuffers", "1, {" + std::to_string(name) + "}");
}

/// Replaces a buffer by one of another size.
inline Texts replaced(unsigned int old, unsigned int name, std::size_t bytes,
                      std::string const& target = ARRAY) {
    return joined({{deleted(old)}, made(name, bytes, target)});
}

/// Writes a buffer in place.
inline Texts rewritten(unsigned int name, std::string const& target = ARRAY) {
    return joined({{binding(target, name)}, writing(target)});
}

inline Point pointOf(Vector3<double> const& v) {
    return {v.x, v.y, v.z};
}
inline Point pointOf(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}
inline Point pointOf(Color4<float> const& v) {
    return {v.r, v.g, v.b};
}

inline unsigned int corner(Triangle const& t, unsigned int k) {
    return k == 0 ? t.e0 : k == 1 ? t.e1 : t.e2;
}

inline bool isModified(ArrayId const& id) {
    return (VL_ArrayServer.resolve(id)->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_0) != 0;
}

/// The positions of the primitive as sent.
inline std::vector<Point> positionsOf(gl_spy::Primitive const& primitive) {
    std::vector<Point> points;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        points.push_back(vertex.position);
    }
    return points;
}

inline std::vector<Point> normalsOf(gl_spy::Primitive const& primitive) {
    std::vector<Point> normals;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        normals.push_back(vertex.normal);
    }
    return normals;
}

/// The names of the calls that describe vertices, in order.
inline Texts vertexCallsOf(gl_spy::Recording const& recording) {
    Texts names;
    for (gl_spy::Call const& c : recording.calls()) {
        for (char const* stem : {"glNormal3", "glTexCoord2", "glVertex3"}) {
            if (c.name.compare(0, std::string(stem).size(), stem) == 0) {
                names.push_back(c.name);
            }
        }
    }
    return names;
}

/// Two triangles that share one edge. Their vertex normals are listed in another order than the positions,
/// and one position belongs to no triangle.
struct Data {
    Array<Vector3<double>> positions{
        {0.1, 0.2, 0.3}, {1.25, 0.7, -0.4}, {0.9, 2.1, 0.6}, {3.3, 2.7, 1.1}, {9, 8, 7}};
    Array<Triangle> triangles{{0, 1, 2}, {2, 1, 3}};
    Array<Vector3<float>> vertexNormals{
        {0.5F, 0, 1}, {0, 0.25F, 1}, {0.125F, 0.5F, 1}, {-0.5F, 0, 1}, {0, -0.25F, 1}};
    Array<Triangle> normalTriangles{{4, 3, 2}, {1, 0, 2}};
    Array<Color4<float>> faceNormals{{0.5F, 0.25F, 2, 77}, {-0.75F, 1.5F, 4, 88}};
    // Edge 1 of the first triangle is edge 0 of the second.
    Array<Triangle> adjacency{{BORDER, 1 * 4 + 1, BORDER}, {0 * 4 + 2, BORDER, BORDER}};

    void fill(Mesh& mesh) const {
        mesh.setPositions(positions);
        mesh.setTriangles(triangles);
        mesh.setVertexNormals(vertexNormals);
        mesh.setNormalTriangles(normalTriangles);
        mesh.setFaceNormals(faceNormals);
        mesh.setAdjacency(adjacency);
    }

    Point p(unsigned int t, unsigned int k) const { return pointOf(positions[corner(triangles[t], k)]); }
    Point n(unsigned int t, unsigned int k) const {
        return pointOf(vertexNormals[corner(normalTriangles[t], k)]);
    }

    std::vector<float> soupOfPositions() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : p(t, k)) {
                    soup.push_back(static_cast<float>(component));
                }
            }
        }
        return soup;
    }
    std::vector<float> soupOfVertexNormals() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : n(t, k)) {
                    soup.push_back(static_cast<float>(component));
                }
            }
        }
        return soup;
    }
    std::vector<float> soupOfFaceNormals() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : pointOf(faceNormals[t])) {
                    soup.push_back(static_cast<float>(component));
                }
            }
        }
        return soup;
    }
    std::vector<Point> corners() const { return {p(0, 0), p(0, 1), p(0, 2), p(1, 0), p(1, 1), p(1, 2)}; }
    std::vector<Point> cornerNormals() const {
        return {n(0, 0), n(0, 1), n(0, 2), n(1, 0), n(1, 1), n(1, 2)};
    }
};

/// Coordinates of the five positions.
inline Array<Vector2<float>> const PER_POSITION{
    {0.5F, 0.25F}, {0.75F, 0.125F}, {0.375F, 1}, {2, 3}, {0.0625F, 0.875F}};
inline std::vector<float> const PER_POSITION_SOUP{0.5F,   0.25F, 0.75F, 0.125F, 0.375F, 1,
                                                  0.375F, 1,     0.75F, 0.125F, 2,      3};

/// Coordinates with triangles of their own.
inline Array<Vector2<float>> const INDEXED{{10, 11}, {12, 13}, {14, 15}, {16, 17}};
inline Array<Triangle> const COORDINATE_TRIANGLES{{3, 2, 1}, {0, 0, 3}};
inline std::vector<float> const INDEXED_SOUP{16, 17, 14, 15, 12, 13, 10, 11, 10, 11, 16, 17};

// The names of the buffers: the recording GL counts up from 1, and the renderer creates them in this order.
inline constexpr unsigned int POSITIONS = 1;
inline constexpr unsigned int SMOOTH = 2;
inline constexpr unsigned int FACETED = 3;

inline constexpr std::size_t THREE_FLOATS = std::size_t{2} * 3 * 3 * 4;  // bytes for two triangles
inline constexpr std::size_t TWO_FLOATS = std::size_t{2} * 3 * 2 * 4;

/// A renderer of that mesh on a scripted driver. Each test file derives its suite from it.
class Mesh_fixture : public testing::Test {
protected:
    void SetUp() override {
        data.fill(mesh);
        renderer = std::make_unique<Mesh_RL_GL>(&mesh, false);
    }

    void useBuffers() { renderer->useBufferObjects = true; }

    void addPerVertex(char const* name) {
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, name, PER_POSITION);
    }
    void addIndexed(char const* name) {
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, name, INDEXED);
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, name, COORDINATE_TRIANGLES);
    }

    /// The calls of one update of the buffers.
    Texts update(char const* channel = nullptr, bool withEdges = false) {
        gl_spy::Recording const recording;
        if (channel != nullptr) {
            VL_String const name(channel);
            renderer->createBufferObjects(&name, withEdges);
        } else {
            renderer->createBufferObjects(nullptr, withEdges);
        }
        return recording.texts();
    }

    std::vector<float> contents(unsigned int name) const {
        return gl_spy::as<float>(driver.bufferContents(name));
    }
    std::vector<unsigned int> indices(unsigned int name) const {
        return gl_spy::as<unsigned int>(driver.bufferContents(name));
    }

    /// The edges in the index buffer, as pairs of soup corners.
    std::multiset<std::pair<unsigned int, unsigned int>> edgesIn(unsigned int name) const {
        std::multiset<std::pair<unsigned int, unsigned int>> edges;
        std::vector<unsigned int> const all = indices(name);
        for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
            edges.insert({all[i], all[i + 1]});
        }
        return edges;
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Data data;
    Mesh mesh;
    std::unique_ptr<Mesh_RL_GL> renderer;
};

}  // namespace mesh_calls

}  // namespace vellum
