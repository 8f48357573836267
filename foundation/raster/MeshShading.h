#pragma once

#include "foundation/basic/VL_String.h"

#include <cstddef>

namespace vellum {

/// How a mesh is shown: the values of MeshShading::mode. Any other value draws nothing.
namespace MeshShadingMode_ns {

enum type : unsigned int {
    BOX = 0,        ///< The edges of the mesh's box.
    WIREFRAME = 1,  ///< The outlines of the triangles.
    FACETED = 2,    ///< Filled, one normal per triangle.
    SMOOTH = 3      ///< Filled, with the vertex normals.
};

}  // namespace MeshShadingMode_ns

/// The bits of MeshShading::flags.
namespace MeshShadingFlags_ns {

enum type : unsigned int {
    TEXTURE = 1,               ///< In the filled modes: sends texture coordinates.
    WIREFRAME_BACK_FACES = 2,  ///< In the filled modes: draws back faces as outlines.
    GPU_SHADER = 4             ///< Through the renderer's effect, if it has one.
};

}  // namespace MeshShadingFlags_ns

/// A request to a mesh renderer: how to draw its mesh.
struct MeshShading {
    unsigned int mode = MeshShadingMode_ns::SMOOTH;
    unsigned int flags = 0;    ///< MeshShadingFlags_ns
    VL_String textureChannel;  ///< Name of the coordinate channel for TEXTURE.
};

static_assert(offsetof(MeshShading, flags) == 4 && offsetof(MeshShading, textureChannel) == 8,
              "two 32-bit words, then the name");

}  // namespace vellum
