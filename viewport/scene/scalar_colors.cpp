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
    }
}

void colorMeshes(std::vector<MeshData>& meshes, ParticleLook const& look) {
    if (!look.meshScale) {
        return;
    }
    for (MeshData& mesh : meshes) {
        if (MeshScalar const* const scalar = findScalar(mesh, look.meshScale->name)) {
            colorByScalar(mesh, *scalar, *look.meshScale, look.colors);
        }
    }
}

}  // namespace vellum::viewport
