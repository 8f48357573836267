#include "viewport/scene/Scene.h"

#include "foundation/basic/large_pages.h"
#include "foundation/basic/threads.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <utility>

namespace vellum::viewport {

namespace {

UpAxis upOf(std::vector<MeshData> const& meshes, std::vector<ParticleFrame> const& particles) {
    return !meshes.empty() ? meshes.front().up : !particles.empty() ? UpAxis::Z : UpAxis::Y;
}

}  // namespace

Scene::Scene(std::vector<MeshData> const& meshes, std::shared_ptr<VL_Image const> const& texture,
             std::vector<ParticleFrame> particles, ParticleLook const& look, Imports imports,
             std::optional<UpAxis> up, Frames frames, std::optional<Box3<double>> const& extent)
    : bounds{{0, 0, 0}, {0, 0, 0}}
    , fileBounds(bounds)
    , upAxis(up ? *up : upOf(meshes, particles))
    , turn(upAxis) {
    std::vector<Box3<double>> boxes;
    boxes.reserve(meshes.size() + particles.size());
    for (MeshData const& mesh : meshes) {
        boxes.push_back(mesh.box());
    }
    std::vector<CloudMaker> makers;
    makers.reserve(particles.size());
    for (std::size_t i = 0; i < particles.size(); ++i) {
        if (frames == Frames::DROPPED) {
            look.dropUnused(particles[i]);
        }
        makers.emplace_back(particles[i], look, i);
        boxes.push_back(makers.back().box());
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        bounds = i == 0 ? boxes[i] : bounds;
        include(bounds, boxes[i].min);
        include(bounds, boxes[i].max);
    }
    if (extent && length(extent->max * 0.25 - extent->min * 0.25) > 0) {
        bounds = *extent;
    }
    fileBounds = bounds;
    // Halved before they are added or subtracted, coordinates at the end of a double's range stay inside it.
    Vector3<double> const center = bounds.min * 0.5 + bounds.max * 0.5;
    double const reach = 2 * length(bounds.max * 0.25 - bounds.min * 0.25);
    scale = reach > 0 ? RADIUS / reach : 1;
    Placement const place{center, scale, turn};

    for (std::size_t i = 0; i < meshes.size(); ++i) {
        MeshData const& mesh = meshes[i];
        Box3<double> const& box = boxes[i];
        Array<Vector3<double>> vertices;
        vertices.reserve(static_cast<unsigned int>(mesh.positions.size()), false);
        preferLargePages(vertices.data(), mesh.positions.size() * sizeof(Vector3<double>));
        vertices.setSize(static_cast<unsigned int>(mesh.positions.size()));
        constexpr std::size_t RANGE = 1 << 15;
        forRanges(mesh.positions.size(), RANGE, [&](std::size_t begin, std::size_t end) {
            std::transform(mesh.positions.data() + begin, mesh.positions.data() + end,
                           vertices.begin() + begin, place);
        });
        std::vector<ModelPart> parts = makeParts(mesh, place, texture, imports);
        auto const vertexOf = [&](unsigned int i) {
            return ModelVertex{convert<float>(vertices[i]), mesh.colors[i]};
        };
        std::vector<ModelVertex> lines;
        lines.reserve(2 * mesh.lines.size());
        for (MeshLine const& line : mesh.lines) {
            lines.push_back(vertexOf(line.e0));
            lines.push_back(vertexOf(line.e1));
        }
        std::vector<ModelVertex> points(mesh.points.size());
        std::transform(mesh.points.begin(), mesh.points.end(), points.begin(), vertexOf);
        modelList.push_back({mesh.name, std::move(vertices), std::move(parts),
                             turn({(box.min - center) * scale, (box.max - center) * scale}), std::move(lines),
                             std::move(points)});
    }
    for (std::size_t i = 0; i < particles.size(); ++i) {
        cloudList.push_back(makers[i].make(place, frames == Frames::DROPPED ? &particles[i] : nullptr));
        if (frames == Frames::KEPT) {
            cloudList.back().records = makers[i].records();
            frameList.push_back(std::move(particles[i]));
        }
        particles[i] = {};
    }
    bounds = turn({(bounds.min - center) * scale, (bounds.max - center) * scale});
    origin = place({0, 0, 0});
}

}  // namespace vellum::viewport
