#pragma once

#include "toolkit/ColorMap.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ParticleOptions.h"

#include <optional>

/// \file
/// Scalars of meshes as colors of their vertices, before a Scene is made of them.
namespace vellum::viewport {

/// The scalar of that name, or null.
MeshScalar const* findScalar(MeshData const& mesh, std::string const& name);

/// The range of the finite values of a scalar; of those above 0 for a logarithmic scale. Nothing where there are none.
std::optional<ValueRange> rangeOf(MeshScalar const& scalar, bool isLogarithmic = false);

/// Gives all vertices of a mesh the colors of a scalar, as a map has them over a range; the opacity of materials stays,
/// textures and colors of the file go. Values that are not a number, and those without a logarithm on a logarithmic
/// scale, have the color `undefined`.
/// \param range its low end above 0 for a logarithmic scale; without an extent all values inside have the first color
void colorByScalar(MeshData& mesh, MeshScalar const& scalar, ValueRange const& range,
                   toolkit::ColorMap const& map, Color4<float> const& undefined, bool isLogarithmic = false);

}  // namespace vellum::viewport
