#pragma once

#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/ParticleOptions.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// How particles are drawn, after all choices that depend on the files have been made.
struct ParticleStyle {
    ParticleMode mode = ParticleMode::POINTS;
    std::optional<ParticleScale> scale;  ///< nothing: all particles have the high color
    RampColors colors;
    float percent = 100;  ///< of the particles, 0 to 100
    std::optional<double>
        size;  ///< above 0; points: pixels, spheres and arrows: units of the file; nothing: chosen
    std::string colorMap = {};                  ///< one of toolkit::ColorMap::names(); empty: `colors`
    std::optional<ParticleLegend> legend = {};  ///< what colors of kinds mean; nothing: they show none
    std::optional<ValueScale> meshScale = {};   ///< of the colors of meshes; nothing: they show no values

    /// The style for particles that have been prepared with these options.
    static ParticleStyle of(ParticleLook const& look, ParticleOptions const& options) {
        return {look.mode,    look.scale,       options.colors, options.percent,
                options.size, options.colorMap, look.legend,    look.meshScale};
    }
};

}  // namespace vellum::viewport
