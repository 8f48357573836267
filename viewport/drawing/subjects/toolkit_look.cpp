#include "viewport/drawing/subjects/toolkit_look.h"

#include "viewport/scene/ParticleCloud.h"

namespace vellum::viewport {

namespace {

toolkit::ParticleMode modeOf(ParticleMode mode) {
    switch (mode) {
    case ParticleMode::SPHERES:
        return toolkit::ParticleMode::SPHERES;
    case ParticleMode::ARROWS:
        return toolkit::ParticleMode::ARROWS;
    case ParticleMode::SOLID_ARROWS:
        return toolkit::ParticleMode::SOLID_ARROWS;
    case ParticleMode::POINTS:
        break;
    }
    return toolkit::ParticleMode::POINTS;
}

/// The color that a ramp has where the magnitude is 0: it goes on below its range. Its components may lie
/// outside those of colors; they are limited after the blending.
Color4<float> colorOfZero(RampColors const& colors, float low, float high) {
    float const t = -low / (high - low);
    return {colors.low.r + (colors.high.r - colors.low.r) * t,
            colors.low.g + (colors.high.g - colors.low.g) * t,
            colors.low.b + (colors.high.b - colors.low.b) * t, 1};
}

}  // namespace

toolkit::ParticleLook toolkitLook(ParticleStyle const& style) {
    toolkit::ParticleLook look;
    look.mode = modeOf(style.mode);
    look.percent = style.percent;
    RampColors const& colors = style.colors;
    if (style.scale) {
        float const low = style.scale->lowMagnitude();
        float const high = style.scale->highMagnitude();
        look.channel = ParticleCloud::SHOWN;
        look.high = static_cast<double>(high);
        if (style.colorMap.empty()) {
            look.low = 0;
            look.colors = {{colorOfZero(colors, low, high), colors.high}, colors.above};
        } else {
            look.low = static_cast<double>(low);
            look.colors = toolkit::ColorMap::named(style.colorMap);
        }
    } else if (isOfArrows(style.mode)) {
        // Their colors are the cloud's, or one.
        look.channel = ParticleCloud::SHOWN;
        look.colors = {{colors.high}, colors.high};
    } else {
        look.colors = {{colors.high}, colors.above};
    }
    return look;
}

}  // namespace vellum::viewport
