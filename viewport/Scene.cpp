#include "viewport/Scene.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

Box3<double> unite(Box3<double> const& a, Box3<double> const& b) {
    return {{std::min(a.min.x, b.min.x), std::min(a.min.y, b.min.y), std::min(a.min.z, b.min.z)},
            {std::max(a.max.x, b.max.x), std::max(a.max.y, b.max.y), std::max(a.max.z, b.max.z)}};
}

}  // namespace

Scene::Scene(std::vector<MeshData> const& meshes, std::shared_ptr<VL_Image const> const& texture)
    : _box{{0, 0, 0}, {0, 0, 0}} {
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        _box = i == 0 ? meshes[i].box() : unite(_box, meshes[i].box());
    }
    // Halved before they are added or subtracted, coordinates at the end of a double's range stay inside it.
    Vector3<double> const centre = _box.min * 0.5 + _box.max * 0.5;
    double const reach = 2 * length(_box.max * 0.25 - _box.min * 0.25);
    _scale = reach > 0 ? radius / reach : 1;
    auto const place = [&](Vector3<double> const& p) { return (p - centre) * _scale; };

    for (MeshData const& mesh : meshes) {
        Box3<double> const box = mesh.box();
        Array<Vector3<double>> vertices;
        vertices.reserve(static_cast<unsigned int>(mesh.positions.size()), false);
        vertices.setSize(static_cast<unsigned int>(mesh.positions.size()));
        std::transform(mesh.positions.begin(), mesh.positions.end(), vertices.begin(), place);
        _models.push_back(
            {mesh.name, vertices, makeParts(mesh, place, texture), {place(box.min), place(box.max)}});
    }
    _box = {place(_box.min), place(_box.max)};
    _origin = place({0, 0, 0});
}

}  // namespace vellum::viewport
