#pragma once

#include "foundation/raster/Core_RL.h"

namespace vellum::viewport {

/// Lighting by the two lights with the current color as material, while it lives.
class Lit {
public:
    enum class Finish {
        GLOSSY,
        DULL,   // for facets, which a highlight would fill whole
        bright  // for handles, whose colors must be told apart on all sides
    };

    Lit(Core_RL& layer, Finish finish);
    ~Lit();
    Lit(Lit const&) = delete;
    Lit& operator=(Lit const&) = delete;

private:
    Core_RL& layer;
};

}  // namespace vellum::viewport
