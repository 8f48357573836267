#pragma once

#include "foundation/raster/Core_RL.h"

namespace vellum::viewport {

/// Lighting by the two lights with the current colour as material, while it lives.
class Lit {
public:
    enum class Finish {
        glossy,
        dull,   // for facets, which a highlight would fill whole
        bright  // for handles, whose colours must be told apart on all sides
    };

    Lit(Core_RL& layer, Finish const& finish);
    ~Lit();
    Lit(Lit const&) = delete;
    Lit& operator=(Lit const&) = delete;

private:
    Core_RL& _layer;
};

}  // namespace vellum::viewport
