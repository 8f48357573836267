#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Reads an STL file, text or binary. A binary file is known by its size, which its number of facets gives:
/// its first word may be "solid", too.
///
/// Every facet has vertices of its own, since the format has no others. Normals of facets are not taken: they
/// say no more than the vertices and would draw every model faceted. The solids of a text are parts.
///
/// Binary files have two ways to keep colors in the two bytes behind a facet, 5 bits for each component:
///
///     header without "COLOR="   bit 15 set: red in the highest of the bits, blue in the lowest
///     header with "COLOR=" and the color of the whole: red, green, blue, opacity
///                               bit 15 not set: red in the lowest bits, blue in the highest
///
/// A facet whose bit says otherwise has the color of the whole or none. Where all of these bytes are 0 no
/// facet has a color of its own. Other use of these bytes is not known.
///
/// All damage is a fault: also bytes behind the last facet, since the number of facets is then wrong. Faults
/// name no file.
Result<MeshData> readStlMesh(std::string_view bytes, Progress const& progress = {});

/// Whether the bytes are a whole binary file, by their number, or begin as a text does.
bool isStl(std::string_view bytes);

}  // namespace vellum::viewport
