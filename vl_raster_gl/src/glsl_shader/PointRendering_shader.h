#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a point of GL's point size, colored by its magnitude.
class VL_RASTER_GL_EXPORT PointRendering_shader : public Impostor_shader {
public:
    /// The quantity that gives the color. 0: length of the vector; 1, 2, 3: absolute value of its x, y or z
    /// times the square root of 3; 4: none, all particles have the maximum color; above 4: as 0. GL: none.
    explicit PointRendering_shader(Base_shader::ProcessType type);

    /// Copies colors, magnitudes, scale and size. GL: none.
    /// Deliberate (partial-effect-copy): light and light count have their defaults, the process type is 0.
    PointRendering_shader(PointRendering_shader const& other);

    ~PointRendering_shader() override;

    /// Copies colors, magnitudes, scale and size of another effect. GL: none.
    void copy(PointRendering_shader const& other);

private:
    static Kind const& _kind();
};

}  // namespace vellum
