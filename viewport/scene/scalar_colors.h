#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/ValueScale.h"

#include <string>
#include <vector>

/// \file
/// Scalars of meshes as colors of their vertices, before a Scene is made of them.
namespace vellum::viewport {

/// The scalar of that name, or null.
MeshScalar const* findScalar(MeshData const& mesh, std::string const& name);

/// Gives all vertices of a mesh the colors of a scalar on a scale, in place of the textures and colors of the
/// file. Materials keep their opacity.
void colorByScalar(MeshData& mesh, MeshScalar const& scalar, ValueScale const& scale,
                   ValueColors const& colors);

/// Colors the meshes that have the scalar of ParticleLook::meshScale.
/// \param covers as of lookOf(): covered meshes stay as they are
void colorMeshes(std::vector<MeshData>& meshes, ParticleLook const& look,
                 std::vector<std::string> const& covers = {});

}  // namespace vellum::viewport
