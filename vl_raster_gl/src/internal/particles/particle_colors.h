#pragma once

#include "Particles_RL_GL_v2.h"
#include "internal/particles/color_ramp.h"
#include "internal/particles/record_formula.h"

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleChannel_v2.h"
#include "foundation/geometry/Vector3.h"

#include <cmath>

namespace vellum {

/// The color parameters of a drawing.
struct ColorParameters {
    float scale;
    float minMagnitude;
    float maxMagnitude;
    Color4<float> minColor;
    Color4<float> maxColor;
    Color4<float> maxClampColor;
    Particles_RL_GL_v2_ns::RenderMagnitude::type magnitude;
};

/// The type of the color channel.
enum class ParticleChannelKind { NONE, VECTOR, SCALAR, UNKNOWN };

inline ParticleChannelKind kindOf(unsigned int channel, ParticleChannel_v2 const* record) {
    if (channel == ParticleChannel_v2::NONE) {
        return ParticleChannelKind::NONE;
    }
    if (record != nullptr && record->type == ParticleChannel_v2::VECTOR) {
        return ParticleChannelKind::VECTOR;
    }
    if (record != nullptr && record->type == ParticleChannel_v2::SCALAR) {
        return ParticleChannelKind::SCALAR;
    }
    return ParticleChannelKind::UNKNOWN;
}

namespace particle_colors {

using Particles_RL_GL_v2_ns::RenderMagnitude;

inline Vector3<float> rgb(Color4<float> const& color) {
    return {color.r, color.g, color.b};
}

inline ColorRamp ramp(ColorParameters const& look) {
    return {rgb(look.minColor), rgb(look.maxColor), rgb(look.maxClampColor), look.minMagnitude,
            look.maxMagnitude};
}

inline RecordFormula formula(ColorParameters const& look, RecordColor source,
                             Vector3<float> const& constant) {
    ColorRamp const r = ramp(look);
    Vector3<float> const difference = r.maxColor - r.minColor;
    return {source,
            {constant.x, constant.y, constant.z},
            {r.minColor.x, r.minColor.y, r.minColor.z},
            {difference.x, difference.y, difference.z},
            {r.maxClampColor.x, r.maxClampColor.y, r.maxClampColor.z},
            r.minMagnitude,
            r.range(),
            look.scale};
}

inline RecordFormula constant(ColorParameters const& look, Vector3<float> const& color) {
    return formula(look, RecordColor::CONSTANT, color);
}

/// A ramp, or one color for all if the range is degenerate.
inline RecordFormula ramped(ColorParameters const& look, RecordColor source,
                            Vector3<float> const& degenerate) {
    if (ramp(look).isDegenerate()) {
        return constant(look, limitedToColor(degenerate));
    }
    return formula(look, source, {});
}

/// The ramp's color of one magnitude for all particles.
inline RecordFormula ofMagnitude(ColorParameters const& look, float magnitude,
                                 Vector3<float> const& degenerate) {
    ColorRamp const colors = ramp(look);
    return constant(look, limitedToColor(colors.isDegenerate() ? degenerate : colors.colorOf(magnitude)));
}

/// The source for a magnitude: X, Y or Z, and LENGTH for all others.
inline RecordColor componentOf(RenderMagnitude::type magnitude) {
    switch (magnitude) {
    case RenderMagnitude::X:
        return RecordColor::X;
    case RenderMagnitude::Y:
        return RecordColor::Y;
    case RenderMagnitude::Z:
        return RecordColor::Z;
    default:
        return RecordColor::LENGTH;
    }
}

/// Colors in a buffer object, without an effect.
///
/// Deliberate (buffer-color-rules): a scalar is neither scaled nor made positive, unlike in main memory.
inline RecordFormula inBuffer(ParticleChannelKind kind, ColorParameters const& look) {
    Vector3<float> const lowest = rgb(look.minColor);
    switch (kind) {
    case ParticleChannelKind::NONE:
        return constant(look, limitedToColor(lowest));
    case ParticleChannelKind::SCALAR:
        return ramped(look, RecordColor::SCALAR, lowest);
    case ParticleChannelKind::VECTOR:
        return ramped(look, componentOf(look.magnitude), lowest);
    default:
        return ofMagnitude(look, length(lowest) / look.scale, lowest);
    }
}

/// Colors in main memory.
///
/// Deliberate (buffer-color-rules): the maximum color without a channel, black for lengths in a degenerate
/// range, and unclamped constant colors, unlike in buffers.
inline RecordFormula inMemory(ParticleChannelKind kind, ColorParameters const& look) {
    if (kind == ParticleChannelKind::NONE) {
        return constant(look, rgb(look.maxColor));
    }
    Vector3<float> const black{0, 0, 0};
    Vector3<float> const lowest = rgb(look.minColor);
    bool const isComponent = componentOf(look.magnitude) != RecordColor::LENGTH;
    if (kind == ParticleChannelKind::SCALAR) {
        // A scalar has no components, so they are 0.
        return isComponent ? ofMagnitude(look, 0.0F / look.scale, lowest)
                           : ramped(look, RecordColor::TRUNCATED_SCALAR, lowest);
    }
    if (!isComponent && look.magnitude == RenderMagnitude::MIN_COLOR) {
        return constant(look, lowest);
    }
    if (!isComponent && look.magnitude == RenderMagnitude::MAX_COLOR) {
        return constant(look, rgb(look.maxColor));
    }
    Vector3<float> const& degenerate = isComponent ? lowest : black;
    if (kind == ParticleChannelKind::UNKNOWN) {
        return ofMagnitude(look, 0.0F / look.scale, degenerate);
    }
    return ramped(look, componentOf(look.magnitude), degenerate);
}

/// The raw values from which an effect computes colors.
inline RecordFormula forEffect(ParticleChannelKind kind, ColorParameters const& look) {
    switch (kind) {
    case ParticleChannelKind::SCALAR:
        return formula(look, RecordColor::SPREAD_SCALAR, {});
    case ParticleChannelKind::VECTOR:
        return formula(look, RecordColor::VECTOR, {});
    default:
        return constant(look, rgb(look.minColor));
    }
}

}  // namespace particle_colors

}  // namespace vellum
