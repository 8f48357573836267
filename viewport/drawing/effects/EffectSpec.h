#pragma once

#include "viewport/drawing/effects/CustomEffect.h"
#include "viewport/drawing/effects/DisplacementEffect.h"
#include "viewport/drawing/effects/GlassEffect.h"
#include "viewport/drawing/effects/OceanEffect.h"
#include "viewport/drawing/effects/ScatteringEffect.h"

#include <cstddef>
#include <optional>
#include <variant>

namespace vellum::viewport {

/// The parameters of one effect. All are within the ranges that its header states.
using EffectValues =
    std::variant<DisplacementEffect, OceanEffect, GlassEffect, ScatteringEffect, CustomEffect>;

/// An effect and the models that it is drawn on.
struct EffectSpec {
    EffectValues values;
    std::optional<std::size_t>
        onlyModel;  ///< counted from 0; nothing: all models have the effect, except an ocean, which is then an open sea

    /// Whether it is an open sea: without files a scene of its own, else one that the things of the files
    /// stand in.
    bool isSea() const { return !onlyModel && std::holds_alternative<OceanEffect>(values); }

    bool covers(std::size_t model) const { return !isSea() && (!onlyModel || *onlyModel == model); }
};

}  // namespace vellum::viewport
