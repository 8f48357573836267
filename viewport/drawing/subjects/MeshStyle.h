#pragma once

#include "foundation/geometry/Color4.h"
#include "toolkit/MeshStyle.h"

#include <optional>

namespace vellum::viewport {

using toolkit::Shading;

/// Which normals are drawn as lines over a model.
enum class Normals { NONE, VERTEX, FACE };

/// How models are drawn. The texture is not part of it: it belongs to the scene.
struct MeshStyle {
    Shading shading = Shading::SMOOTH;
    Normals normals = Normals::NONE;
    bool edges = false;  ///< borders and hard edges, over a darker surface
    bool edgesBlend =
        false;  ///< borders and hard edges, hidden ones shining through; not together with `edges`
    bool allEdges = false;       ///< of all triangles; not together with the others
    bool connectivity = false;   ///< shared edges in white, borders in amber
    bool wireframeBack = false;  ///< triangles seen from behind are outlines
    bool importPreview = false;  ///< the result of the import, in place of all of the above
    bool immediate = false;      ///< no buffer objects, even if the driver has them

    std::optional<Color4<float>> color = {};  ///< in place of those of the files
    float opacity = 1;                        ///< of surfaces, lines and points, 0 to 1

    /// Of edges, outlines and the lines of files, and the size of their points; pixels, above 0; nothing:
    /// what suits.
    std::optional<double> lineWidth = {};

    bool isFilled() const { return shading == Shading::FACETED || shading == Shading::SMOOTH; }
};

}  // namespace vellum::viewport
