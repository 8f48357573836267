#include "viewport/scene/HeldLook.h"

#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/scalar_colors.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

bool isSame(Color4<float> const& a, Color4<float> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b;
}

bool isUsed(std::map<std::string, Color4<float>> const& kinds, Color4<float> const& color) {
    return std::any_of(kinds.begin(), kinds.end(),
                       [&](auto const& kind) { return isSame(kind.second, color); });
}

}  // namespace

ParticleOptions HeldLook::options(ParticleOptions const& asked, std::vector<MeshData> const& meshes) const {
    ParticleOptions options = asked;
    if (!options.mode) {
        options.mode = mode;
    }
    if (!options.size) {
        options.size = size;
    }
    if (!options.range && ranges == Ranges::HELD) {
        options.range = range;
    }
    // A name that is asked for is shown by meshes as well.
    bool const isOfMeshes = std::any_of(meshes.begin(), meshes.end(), [this](MeshData const& mesh) {
        return findScalar(mesh, channel) != nullptr;
    });
    if (options.channel.empty() && !isOfMeshes) {
        options.channel = channel;
    }
    return options;
}

void HeldLook::hold(ParticleLook& look) {
    mode = mode ? *mode : look.mode;
    std::optional<ValueScale> const& scale = look.scale ? look.scale : look.meshScale;
    if (scale) {
        channel = scale->name;
        // A range without an extent would show nothing of the frames that follow, and one range does not suit
        // two quantities.
        bool const areTwo = look.scale && look.meshScale && look.scale->name != look.meshScale->name;
        if (!range && !areTwo && scale->range.low < scale->range.high) {
            range = scale->range;
        }
    }
    if (!look.legend) {
        return;
    }
    for (ParticleLegend::Entry& entry : look.legend->entries) {
        auto const known = kinds.find(entry.text);
        if (known != kinds.end()) {
            entry.color = known->second;
            continue;
        }
        bool const hasOwn = look.areElements || isSame(entry.color, look.colors.undefined());
        for (std::size_t i = 0; !hasOwn && isUsed(kinds, entry.color); ++i) {
            entry.color = kindColor(i);
        }
        kinds.emplace(entry.text, entry.color);
    }
}

void HeldLook::hold(Scene const& scene, ParticleLook const& look) {
    if (space) {
        return;
    }
    space = scene.extent();
    // Sizes that follow from the distances of particles would change from frame to frame.
    if (scene.clouds().size() != 1 || look.size) {
        return;
    }
    ParticleCloud const& cloud = scene.clouds().front();
    double const unit = scene.unitsPerFileUnit();
    if (look.mode == ParticleMode::SPHERES && !cloud.sizes) {
        size = cloud.diameter / unit;
    } else if (isOfArrows(look.mode)) {
        size = cloud.arrowLength / unit / look.arrowUnit;
    }
}

}  // namespace vellum::viewport
