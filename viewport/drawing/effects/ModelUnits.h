#pragma once

#include "foundation/geometry/Matrix4.h"

namespace vellum::viewport {

/// The matrices of a model in its own units while it lives: the model-view matrix turns and moves, and the
/// projection does the scaling. So normals keep their length, which effects rely on, and lengths in eye space
/// are those of the model.
class ModelUnits {
public:
    /// \param toScene turns, scales alike along all axes, and moves.
    explicit ModelUnits(Matrix4<double> const& toScene);
    ~ModelUnits();
    ModelUnits(ModelUnits const&) = delete;
    ModelUnits& operator=(ModelUnits const&) = delete;
};

}  // namespace vellum::viewport
