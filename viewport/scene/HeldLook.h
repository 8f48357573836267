#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/scene/Scene.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What the pictures of a film have in common, so that what changes in it is what changes in the files: the
/// quantity that colors show, its range, the colors of kinds, points or spheres, the usual size of spheres
/// and arrows, and the space that the scene is placed by.
///
///     HeldLook held(HeldLook::Ranges::HELD);
///     ... for each frame ...
///         Result<ParticleLook> look = lookOf(frames, held.options(asked, meshes), meshes);
///         held.hold(look.value());
///         Scene scene(meshes, texture, frames, look.value(), imports, up, held.extent());
///         held.hold(scene, look.value());
class HeldLook {
public:
    enum class Ranges {
        HELD,  ///< that of the first frame whose values differ
        EACH   ///< each frame has its own
    };

    explicit HeldLook(Ranges ranges = Ranges::HELD) : ranges(ranges) {}

    /// The options with what was held where they leave it open; those of the first frame are as asked.
    ParticleOptions options(ParticleOptions const& asked, std::vector<MeshData> const& meshes) const;

    /// Holds what a look has decided, and gives its kinds the colors that they had before. A new kind has a
    /// color that no other kind had.
    void hold(ParticleLook& look);

    /// Holds the space of the first scene, and the sizes of its particles.
    /// \param look that the scene was made with
    void hold(Scene const& scene, ParticleLook const& look);

    /// In units of the files; nothing before the first scene.
    std::optional<Box3<double>> const& extent() const { return space; }

private:
    Ranges ranges;
    std::optional<ParticleMode> mode;
    std::string channel;  // empty: colors show no values
    std::optional<ValueRange> range;
    std::optional<double> size;
    std::map<std::string, Color4<float>> kinds;  // colors by the text
    std::optional<Box3<double>> space;
};

}  // namespace vellum::viewport
