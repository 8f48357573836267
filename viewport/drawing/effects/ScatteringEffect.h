#pragma once

#include "foundation/geometry/Color4.h"
#include "toolkit/EffectLights.h"

namespace vellum::viewport {

/// Parameters of a material that light enters and leaves elsewhere: wax, skin.
struct ScatteringEffect {
    Color4<float> color{0.80F, 0.55F, 0.42F, 1};       ///< of the surface, 0 to 1
    double thickness = 0.25;                           ///< how much light comes through, 0 to 100
    Color4<float> extinction{0.80F, 0.20F, 0.12F, 1};  ///< color of the light that comes through, 0 to 100
    double rim = 0.25;                                 ///< strength of the light along the rim, 0 to 100
    double shininess = 32;                             ///< exponent of the highlight, 0 to 128
    toolkit::EffectLights lights{1, {{-2, 2, 3}}, {{3, 1, -3}}};
};

}  // namespace vellum::viewport
