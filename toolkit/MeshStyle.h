#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Color4.h"

namespace vellum::toolkit {

/// How the surface of a mesh is drawn.
enum class Shading {
    BOX,        ///< the edges of the mesh's box
    WIREFRAME,  ///< the outlines of all triangles
    FACETED,    ///< filled, one normal for each triangle
    SMOOTH      ///< filled, with the vertex normals
};

/// Which lines are drawn over a surface.
enum class Edges {
    NONE,
    HARD,      ///< borders and hard edges (see prepareMesh()); the depth test leaves hidden ones out
    SHINING,   ///< the same, hidden ones faintly too, whatever hides them
    TRIANGLES  ///< the edges of all triangles
};

/// How a mesh is drawn by drawMesh(). The defaults draw a smooth surface in light gray.
///
/// A style is kept, not made in each frame: its names are allocated.
struct MeshStyle {
    Shading shading = Shading::SMOOTH;
    Color4<float> color{0.8F, 0.8F, 0.8F,
                        1};     ///< of the surface or its lines; blended where alpha is below 1
    Edges edges = Edges::NONE;  ///< with the filled shadings only
    Color4<float> edgeColor{0.1F, 0.1F, 0.12F, 1};
    float lineWidth = 1.5F;     ///< of edges and outlines, pixels, above 0
    bool outlinesBack = false;  ///< triangles seen from behind are outlines
    VL_String textureChannel =
        {};                    ///< the name of texture coordinates, of filled surfaces; empty: none are sent
    unsigned int texture = 0;  ///< as Core_RL::loadTextureColor() named it; 0: none, or that of an effect
    VL_String colors =
        {};  ///< the name of colors (setColors()), in place of `color`, and blended; empty: none
};

}  // namespace vellum::toolkit
