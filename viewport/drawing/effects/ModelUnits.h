#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"

namespace vellum::viewport {

/// A matrix of OpenGL as it is at the time of construction.
struct CurrentMatrix {
    /// \param name GL_MODELVIEW_MATRIX or GL_PROJECTION_MATRIX
    explicit CurrentMatrix(unsigned int name);

    /// The place that a point comes to, without the perspective division.
    Vector3<double> operator*(Vector3<double> const& p) const {
        return {e[0] * p.x + e[4] * p.y + e[8] * p.z + e[12], e[1] * p.x + e[5] * p.y + e[9] * p.z + e[13],
                e[2] * p.x + e[6] * p.y + e[10] * p.z + e[14]};
    }

    double e[16];
};

/// The matrices of a model in its own units while it lives: the model-view matrix turns and moves, and the projection
/// does the scaling. So normals keep their length, which effects rely on, and lengths in eye space are those of the
/// model.
class ModelUnits {
public:
    /// \param toScene scales alike along all axes, and moves.
    explicit ModelUnits(Matrix4<double> const& toScene);
    ~ModelUnits();
    ModelUnits(ModelUnits const&) = delete;
    ModelUnits& operator=(ModelUnits const&) = delete;
};

}  // namespace vellum::viewport
