#pragma once

#include "foundation/raster/Core_RL.h"

namespace vellum::viewport {

/// Lighting by lights 0 and 1 while it lives, with the current color as the material's color. The lights themselves
/// are set before, for example by setHeadLights().
///
///     {
///         Lit const lit(layer, Lit::Finish::GLOSSY);
///         mesh.render();
///     }   // unlit again
///
/// State: normals are made unit length from now on; a finish changes ambient light and material for good.
class Lit {
public:
    enum class Finish {
        GLOSSY,
        DULL,   ///< for facets, which a highlight would fill whole
        BRIGHT  ///< for handles, whose colors must be recognizable on all sides
    };

    explicit Lit(Core_RL& layer);  ///< With the ambient light and the highlights that are set.
    Lit(Core_RL& layer, Finish finish);
    ~Lit();
    Lit(Lit const&) = delete;
    Lit& operator=(Lit const&) = delete;

private:
    Core_RL& layer;
};

}  // namespace vellum::viewport
