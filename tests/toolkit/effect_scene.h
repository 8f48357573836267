#pragma once

#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "toolkit/View.h"

#include <cmath>

#include "toolkit/internal/gl.h"

/// A small scene for tests of effects.
namespace vellum::toolkit::effect_scene {

/// A ball with outward normals, in buffers.
struct Ball {
    explicit Ball(double radius = 1, unsigned int parts = 48) {
        constexpr double PI = 3.14159265358979323846;
        Array<Vector3<double>> positions;
        Array<Tuple3<unsigned int>> triangles;
        for (unsigned int row = 0; row <= parts; ++row) {
            for (unsigned int column = 0; column <= 2 * parts; ++column) {
                double const polar = PI * row / parts;
                double const around = PI * column / parts;
                positions.pushBack({radius * std::sin(polar) * std::sin(around), radius * std::cos(polar),
                                    radius * std::sin(polar) * std::cos(around)});
            }
        }
        for (unsigned int row = 0; row < parts; ++row) {
            for (unsigned int column = 0; column < 2 * parts; ++column) {
                unsigned int const corner = row * (2 * parts + 1) + column;
                unsigned int const below = corner + 2 * parts + 1;
                triangles.pushBack({corner, below, below + 1});
                triangles.pushBack({corner, below + 1, corner + 1});
            }
        }
        mesh.setPositions(positions);
        mesh.setTriangles(triangles);
        mesh.workAdjacency();
        mesh.workNormals(3);
        renderer.useBufferObjects = true;
    }

    /// \param flags of MeshShadingFlags_ns
    void draw(unsigned int flags = 0) {
        MeshShading shading;
        shading.mode = MeshShadingMode_ns::SMOOTH;
        shading.flags = flags;
        renderer.render(shading);
    }

    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
};

/// Looks at the origin from (0, 0, 4 * scale), with the depth test on.
inline View lookAtOrigin(double scale = 1) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(40, 1, 0.1 * scale, 100 * scale);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslated(0, 0, -4 * scale);
    glEnable(GL_DEPTH_TEST);
    return View::current();
}

/// Stripes over the whole frame.
inline void drawBackground() {
    glClearColor(0.1F, 0.1F, 0.2F, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    for (int stripe = 0; stripe < 256; stripe += 32) {
        glScissor(stripe, 0, 16, 256);
        glClearColor(0.9F, static_cast<float>(stripe) / 256, 0.2F, 1);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glDisable(GL_SCISSOR_TEST);
}

}  // namespace vellum::toolkit::effect_scene
