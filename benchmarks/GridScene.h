#pragma once

#include "Mesh_RL_GL.h"
#include "foundation/basic/Array.h"
#include "foundation/geometry/Mesh.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {

/// Fills a mesh with a wavy square grid, with vertex normals.
/// \param squares along a side of the grid; two triangles each
inline void makeGrid(Mesh& mesh, unsigned int squares, float crease) {
    Array<Vector3<double>> positions;
    Array<Tuple3<unsigned int>> triangles;
    positions.reserve((squares + 1) * (squares + 1), false);
    triangles.reserve(squares * squares * 2, false);
    for (unsigned int y = 0; y <= squares; ++y) {
        for (unsigned int x = 0; x <= squares; ++x) {
            double const u = 2.0 * x / squares - 1;
            double const v = 2.0 * y / squares - 1;
            positions.pushBack({u, v, 0.3 * std::sin(7 * u) * std::cos(5 * v)});
        }
    }
    for (unsigned int y = 0; y < squares; ++y) {
        for (unsigned int x = 0; x < squares; ++x) {
            unsigned int const corner = y * (squares + 1) + x;
            triangles.pushBack({corner, corner + 1, corner + squares + 2});
            triangles.pushBack({corner, corner + squares + 2, corner + squares + 1});
        }
    }
    mesh.setPositions(positions);
    mesh.setTriangles(triangles);
    mesh.workAdjacency();
    mesh.workNormals(crease);
}

/// A context with a grid in buffers. The viewport is small, so that the cost of a frame is the work on the
/// triangles. A benchmark program has one, which its first benchmark makes.
template <class Layer>
class GridScene {
public:
    GridScene(unsigned int squares, float crease) : context({64, 64}) {
        makeGrid(mesh, squares, crease);
        if (context.isValid()) {
            benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
            renderer = std::make_unique<Mesh_RL_GL>(&mesh, false);
            renderer->useBufferObjects = true;
            renderer->render();
            glFinish();
        }
    }

    char const* error() const { return context.isValid() ? nullptr : context.error().c_str(); }

private:
    OffscreenContext context;
    Layer layer;

public:
    Mesh mesh;
    std::unique_ptr<Mesh_RL_GL> renderer;  // deleted before the context, which its buffers need
};

}  // namespace vellum::benchmarks
