#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/files/mesh/Material.h"

#include <string>
#include <vector>

struct aiScene;

/// What Assimp's materials say, as values of ours.
namespace vellum::viewport {

/// Colors of a vertex of a file may be anything; those of ours are within 0 to 1.
Color4<float> colorOf(float red, float green, float blue, float opacity);

/// The color of the surfaces of a material, by its index, which is opaque. Materials that are not there, or
/// that the importer has made up, have a plain color.
Color4<float> surfaceColorOf(aiScene const& scene, unsigned int index);

/// The material, with what it says of its textures of color and emission; where the file holds them, with
/// their bytes.
/// \param notes gets what of it is not shown
Material materialOf(aiScene const& scene, unsigned int index, std::vector<std::string>& notes);

/// The number of the list of texture coordinates by which the textures of a material lie.
unsigned int coordinatesOf(aiScene const& scene, unsigned int index);

/// Whether the colors of vertices are multiplied with that of the material, as glTF says, and do not replace
/// it.
bool multipliesVertexColors(aiScene const& scene, unsigned int index);

}  // namespace vellum::viewport
