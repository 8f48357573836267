#pragma once

#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"

/// \file
/// The library's effects of particles with vertex stages that take each particle's color as it is. Geometry
/// and fragment stages are the library's, and so are the passes; magnitudes and colors of the effects have no
/// meaning.

namespace vellum::toolkit {

/// Spheres. The vertex color is that of the particle; its alpha is the factor of the effect's size.
class ColoredSpheres : public SphereRendering_shader {
public:
    ColoredSpheres() : SphereRendering_shader(Base_shader::ProcessType(0)) {}
    void create() override;
};

/// Arrows. The vertex color is the vector, as in the library's effect; the normal is the color.
class ColoredArrows : public ArrowRendering_shader {
public:
    ColoredArrows() : ArrowRendering_shader(Base_shader::ProcessType(0)) {}
    void create() override;
};

}  // namespace vellum::toolkit
