#pragma once

#include "viewport/scene/ModelParts.h"

namespace vellum::viewport {

/// Sets what a part's material says of light, on a surface that is lit (see toolkit::Lit); where it says
/// nothing, that of the finish. \param isGlossy the finish has highlights GL: glMaterialfv x 2 and
/// glMaterialf.  State: emission, specular color and shininess of both sides.
void setPartMaterial(ModelPart const& part, bool isGlossy);

/// Surfaces give off no light from now on.
/// GL: glMaterialfv.  State: emission of both sides.
void endPartMaterial();

/// Leaves out what a part's texture masks while it lives.
/// GL: for parts with a mask glEnable and glAlphaFunc, at its end glDisable.  State: none is left changed.
class PartMask {
public:
    explicit PartMask(ModelPart const& part);
    ~PartMask();
    PartMask(PartMask const&) = delete;
    PartMask& operator=(PartMask const&) = delete;

private:
    bool isMasked;
};

}  // namespace vellum::viewport
