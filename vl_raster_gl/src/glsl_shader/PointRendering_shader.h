#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a point of GL's point size, colored by its magnitude.
class VL_RASTER_GL_EXPORT PointRendering_shader : public Impostor_shader {
public:
    /// Which quantity gives the color: 0 the length of the vector, 1, 2, 3 the absolute value of its x, y or z
    /// times the square root of 3, 4 none (all have the maximum color); any other the length. GL: none.
    explicit PointRendering_shader(Base_shader::ProcessType type);

    /// An effect of its own with the same colors, magnitudes, scale and size.
    /// Deliberate (partial-effect-copy): light and light count have their first values, and the process type
    /// is 0. GL: none.
    PointRendering_shader(PointRendering_shader const& other);

    ~PointRendering_shader() override;

    /// Takes over the colors, magnitudes, scale and size of another effect; light, light count and process type
    /// stay. GL: none.
    void copy(PointRendering_shader const& other);

private:
    static Kind const& _kind();
};

}  // namespace vellum
