#pragma once

#include "foundation/export.h"
#include "foundation/geometry/MeshImporter.h"
#include "foundation/raster/Service_RL.h"

namespace vellum {

/// The abstract preview of an imported mesh: draws the result of an import before it becomes a Mesh.
///
/// The order of the virtual operations is part of the interface.
class VL_FOUNDATION_EXPORT MeshImporter_RL : public Service_RL<MeshImporter> {
public:
    /// Names all triangles for renderNormals().
    static constexpr unsigned int EVERY_TRIANGLE = 0xFFFFFFFFU;

    MeshImporter_RL();
    ~MeshImporter_RL() override;

    virtual void render() = 0;  ///< The surface.

    /// The corner normals of one triangle, or of every one.
    virtual void renderNormals(unsigned int const& triangle) = 0;
};

}  // namespace vellum
