#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/EffectLights.h"

#include <string>

namespace vellum::viewport {

/// Parameters of an effect that moves the vertices of a model by a map.
struct DisplacementEffect {
    std::string map;                 ///< a picture file, required; its sides must be powers of two
    std::string normals;             ///< a picture file like `map`; empty: none
    Vector3<float> scale{0, 10, 0};  ///< the way of white, in hundredths of a tile; -1e6 to 1e6
    Vector2<double> tile{1, 1};      ///< how often the map covers the longest side; 0.001 to 1000
    bool tessellate = false;         ///< split each triangle first
    unsigned int depth = 4;          ///< tessellated, the number of parts of each edge, 1 to 64
    Color4<float> color{0.72F, 0.70F, 0.66F, 1};  ///< of the surface, 0 to 1
    double gloss = 0.15;                          ///< strength of the highlight, 0 to 1
    double shininess = 24;                        ///< exponent of the highlight, 0 to 128
    toolkit::EffectLights lights{1, {{-3, 3, 1.5F}}, {{3, 0.6F, -1.5F}}};
};

}  // namespace vellum::viewport
