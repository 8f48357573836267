#include "viewport/scene/scalar_colors.h"

#include <algorithm>

namespace vellum::viewport {

MeshScalar const* findScalar(MeshData const& mesh, std::string const& name) {
    auto const found = std::find_if(mesh.scalars.begin(), mesh.scalars.end(),
                                    [&name](MeshScalar const& scalar) { return scalar.name == name; });
    return found != mesh.scalars.end() ? &*found : nullptr;
}

void colorByScalar(MeshData& mesh, MeshScalar const& scalar, ValueScale const& scale,
                   ValueColors const& colors) {
    for (std::size_t i = 0; i < mesh.colors.size() && i < scalar.values.size(); ++i) {
        double const value = scalar.values[i];
        mesh.colors[i] = scale.isDefined(value) ? colors.at(scale.place(value)) : colors.undefined();
        mesh.colors[i].a = 1;
    }
    mesh.hasVertexColors = true;
    for (Material& material : mesh.materials) {
        material.image = nullptr;
        material.texture.clear();
        material.opacityTexture.clear();
        material.textureBytes.clear();
        material.texelColumns = 0;
        material.texelRows = 0;
        material.emission = {0, 0, 0, 1};
        material.emissionImage = nullptr;
        material.emissionTexture = {};
    }
}

void colorMeshes(std::vector<MeshData>& meshes, ParticleLook const& look,
                 std::vector<std::string> const& covers) {
    if (!look.meshScale) {
        return;
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        bool const isCovered = i < covers.size() && !covers[i].empty();
        MeshScalar const* const scalar = isCovered ? nullptr : findScalar(meshes[i], look.meshScale->name);
        if (scalar != nullptr) {
            colorByScalar(meshes[i], *scalar, *look.meshScale, look.colors);
        }
    }
}

}  // namespace vellum::viewport
