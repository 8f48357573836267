#include "viewport/scene/Scene.h"

#include <algorithm>
#include <utility>

namespace vellum::viewport {

namespace {

Box3<double> unite(Box3<double> const& a, Box3<double> const& b) {
    return {{std::min(a.min.x, b.min.x), std::min(a.min.y, b.min.y), std::min(a.min.z, b.min.z)},
            {std::max(a.max.x, b.max.x), std::max(a.max.y, b.max.y), std::max(a.max.z, b.max.z)}};
}

/// The twelve lines of a box, two ends each.
std::vector<Vector3<double>> linesOf(ParticleBox const& box) {
    std::vector<Vector3<double>> ends;
    for (unsigned int corner = 0; corner < 8; ++corner) {
        Vector3<double> place = box.origin;
        for (unsigned int axis = 0; axis < 3; ++axis) {
            place = place + box.edges[axis] * ((corner >> axis & 1U) != 0 ? 1.0 : 0.0);
        }
        for (unsigned int axis = 0; axis < 3; ++axis) {
            if ((corner >> axis & 1U) == 0) {
                ends.push_back(place);
                ends.push_back(place + box.edges[axis]);
            }
        }
    }
    return ends;
}

/// Around the particles and the box that they are in.
Box3<double> boxOf(ParticleSet const& set) {
    Box3<double> box{{0, 0, 0}, {0, 0, 0}};
    bool isFirst = true;
    auto const take = [&](Vector3<double> const& p) {
        box = isFirst ? Box3<double>{p, p} : unite(box, {p, p});
        isFirst = false;
    };
    for (Vector3<float> const& p : set.positions) {
        take(convert<double>(p));
    }
    Vector3<double> const reach{set.reach, set.reach, set.reach};
    box = {box.min - reach, box.max + reach};
    if (set.box) {
        for (Vector3<double> const& p : linesOf(*set.box)) {
            take(p);
        }
    }
    return box;
}

template <class Place>
std::shared_ptr<ParticleSystem_v2 const> systemOf(ParticleSet const& set, Place const& place) {
    auto const system = std::make_shared<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("color", ParticleChannel_v2::VECTOR);
    system->addParticles(static_cast<unsigned int>(set.positions.size()));
    auto position = set.positions.begin();
    auto color = set.colors.begin();
    for (ParticleSystemChunk_v2* chunk = system->firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float>* const positions = chunk->channelData(ParticleCloud::POSITIONS)->asVectors();
        Vector3<float>* const colors = chunk->channelData(ParticleCloud::COLORS)->asVectors();
        for (unsigned int i = 0; i < chunk->count(); ++i) {
            positions[i] = convert<float>(place(convert<double>(*position++)));
            colors[i] = *color++;
        }
    }
    return system;
}

}  // namespace

Scene::Scene(std::vector<MeshData> const& meshes, std::shared_ptr<VL_Image const> const& texture,
             std::vector<ParticleSet> const& particles)
    : bounds{{0, 0, 0}, {0, 0, 0}} {
    std::vector<Box3<double>> boxes;
    boxes.reserve(meshes.size() + particles.size());
    for (MeshData const& mesh : meshes) {
        boxes.push_back(mesh.box());
    }
    for (ParticleSet const& set : particles) {
        boxes.push_back(boxOf(set));
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        bounds = i == 0 ? boxes[i] : unite(bounds, boxes[i]);
    }
    // Halved before they are added or subtracted, coordinates at the end of a double's range stay inside it.
    Vector3<double> const center = bounds.min * 0.5 + bounds.max * 0.5;
    double const reach = 2 * length(bounds.max * 0.25 - bounds.min * 0.25);
    scale = reach > 0 ? RADIUS / reach : 1;
    auto const place = [&](Vector3<double> const& p) { return (p - center) * scale; };

    for (MeshData const& mesh : meshes) {
        Box3<double> const box = mesh.box();
        Array<Vector3<double>> vertices;
        vertices.reserve(static_cast<unsigned int>(mesh.positions.size()), false);
        vertices.setSize(static_cast<unsigned int>(mesh.positions.size()));
        std::transform(mesh.positions.begin(), mesh.positions.end(), vertices.begin(), place);
        modelList.push_back(
            {mesh.name, vertices, makeParts(mesh, place, texture), {place(box.min), place(box.max)}});
    }
    for (std::size_t i = 0; i < particles.size(); ++i) {
        ParticleSet const& set = particles[i];
        Box3<double> const& box = boxes[meshes.size() + i];
        ParticleCloud cloud{set.name,
                            systemOf(set, place),
                            {},
                            {place(box.min), place(box.max)},
                            set.spacing * scale,
                            set.diameter * scale};
        if (set.box) {
            for (Vector3<double> const& end : linesOf(*set.box)) {
                cloud.boxLines.push_back(convert<float>(place(end)));
            }
        }
        cloudList.push_back(std::move(cloud));
    }
    bounds = {place(bounds.min), place(bounds.max)};
    origin = place({0, 0, 0});
}

}  // namespace vellum::viewport
