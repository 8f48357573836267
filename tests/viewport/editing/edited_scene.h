#pragma once

#include "viewport/scene/Scene.h"

namespace vellum::viewport {

/// A scene of a single mesh, a box.
inline Scene sceneOfBox(Vector3<double> const& middle, Vector3<double> const& size, UpAxis up = UpAxis::Y) {
    MeshData mesh;
    mesh.name = "box.obj";
    mesh.up = up;
    for (unsigned int i = 0; i < 8; ++i) {
        mesh.positions.push_back({middle.x + size.x * ((i & 1) != 0 ? 0.5 : -0.5),
                                  middle.y + size.y * ((i & 2) != 0 ? 0.5 : -0.5),
                                  middle.z + size.z * ((i & 4) != 0 ? 0.5 : -0.5)});
        mesh.normals.push_back({0, 0, 1});
        mesh.colors.push_back({1, 1, 1, 1});
    }
    mesh.triangles = {{0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}};
    return Scene({mesh});
}

}  // namespace vellum::viewport
