#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/ValueScale.h"

/// \file
/// Scalars of meshes as colors of their vertices, before a Scene is made of them.
namespace vellum::viewport {

/// The scalar of that name, or null.
MeshScalar const* findScalar(MeshData const& mesh, std::string const& name);

/// Gives all vertices of a mesh the colors of a scalar on a scale; the opacity of materials stays, textures and colors
/// of the file go.
void colorByScalar(MeshData& mesh, MeshScalar const& scalar, ValueScale const& scale,
                   ValueColors const& colors);

/// Colors the meshes that have the scalar which the look shows. Nothing without ParticleLook::meshScale.
void colorMeshes(std::vector<MeshData>& meshes, ParticleLook const& look);

}  // namespace vellum::viewport
