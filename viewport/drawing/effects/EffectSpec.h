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
    std::optional<std::size_t> onlyModel;  ///< counted from 0; nothing: all models have the effect

    bool covers(std::size_t model) const { return !onlyModel || *onlyModel == model; }
};

}  // namespace vellum::viewport
