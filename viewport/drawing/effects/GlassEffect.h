#pragma once

#include "foundation/geometry/Color4.h"
#include "toolkit/EffectLights.h"

#include <string>

namespace vellum::viewport {

/// Parameters of glass, which shows what is behind it and mirrors an environment.
struct GlassEffect {
    Color4<float> color{0.75F, 0.92F, 0.85F, 1};  ///< tint, 0 to 1
    double depth = 0.1;                           ///< strength of refraction, -100 to 100
    double mix = 1;           ///< how much of the background shows where glass is seen straight on, 0 to 100
    std::string environment;  ///< a picture file; empty: the program's own sky
    toolkit::EffectLights lights{1, {{-2, 3, 2.5F}}, {{3, 1, 1}}};
};

}  // namespace vellum::viewport
