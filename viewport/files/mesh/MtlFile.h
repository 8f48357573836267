#pragma once

#include "viewport/files/mesh/Material.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// A material of an MTL file.
struct MtlMaterial {
    Material material;
    std::optional<Color4<float>> color;  ///< of surfaces without the texture; nothing: the file gives none
};

/// The materials of an MTL file in its order, a name that it gives again only once, with all that its later
/// definitions add or change.
struct MtlFile {
    std::vector<MtlMaterial> materials;
    std::vector<std::string> notes;  ///< what was lost, one clause each
};

/// Reads the text of an MTL file.
///
///     Kd        the color; with a texture what it is multiplied with, unless it is black
///     Ks, Ns    highlights; none where Ns is 0 or missing, and where illum is 0 or 1, which draw without
///     Ke        emission; with a texture what it is multiplied with, unless it is black
///     d, or else Tr (which is 1 - d)   the opacity
///     map_Kd    the texture, with -o and -s; options that no drawing follows are skipped
///     map_Ke    the texture of the emission, likewise
///     map_d     the texture of the opacity
///
/// Everything else, such as Ka, bump maps and the numbers of other lighting models, is skipped. A number that
/// cannot be read leaves its statement out and adds a note.
MtlFile readMtl(std::string_view text);

/// Reads the files that a statement "mtllib" of an OBJ file names: one name with blanks or several names.
/// Each is looked for as findTexture() does. Where none of them is there, a file named as the OBJ file, but
/// ending in .mtl, takes their place, which a note says; all that is missing adds one. \param names what
/// follows the keyword \param added the paths of files that were read for the same OBJ file; these are not
/// read again
MtlFile loadMtl(std::string const& objPath, std::string const& names, std::set<std::string>& added);

}  // namespace vellum::viewport
