#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/raster/Core_RL.h"

#include <optional>

namespace vellum::viewport {

/// Makes clockwise triangles the front ones while it lives, as those of an object that is mirrored. Else it
/// makes no GL call.
class FrontFaces {
public:
    explicit FrontFaces(bool isMirrored);
    ~FrontFaces();
    FrontFaces(FrontFaces const&) = delete;
    FrontFaces& operator=(FrontFaces const&) = delete;

private:
    bool isMirrored;
};

/// Draws an object elsewhere in the scene while it lives, through the model-view matrix. What is mirrored
/// keeps its front faces. Without a matrix it makes no GL call.
class Moved {
public:
    /// \param matrix in the frame of the scene; not singular
    Moved(Core_RL& layer, std::optional<Matrix4<double>> const& matrix);
    ~Moved();
    Moved(Moved const&) = delete;
    Moved& operator=(Moved const&) = delete;

    /// Whether a matrix mirrors.
    static bool isMirror(Matrix4<double> const& matrix);

private:
    Core_RL& layer;
    bool isMoved;
    FrontFaces faces;
};

}  // namespace vellum::viewport
