#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a shaded sphere that always faces the camera.
///
/// A geometry stage makes a square of each point, `size` wide in clip coordinates, so that it shrinks with the
/// distance; the fragment stage cuts a disc out of it, shades it by a fixed light and moves its depth toward
/// the viewer. For the language of the geometry stage see geometry_dialect.h.
class VL_RASTER_GL_EXPORT SphereRendering_shader : public Impostor_shader {
public:
    /// Which quantity gives the color: 0 the length of the vector, 1, 2, 3 the absolute value of its x, y or z
    /// times the square root of 3, 4 none (all have the maximum color); any other the length. GL: none.
    explicit SphereRendering_shader(Base_shader::ProcessType type);

    /// An effect of its own with the same colors, magnitudes, scale and size.
    /// Deliberate (partial-effect-copy): light and light count have their first values, and the process type
    /// is 0. GL: none.
    SphereRendering_shader(SphereRendering_shader const& other);

    ~SphereRendering_shader() override;

    /// Takes over the colors, magnitudes, scale and size of another effect; light, light count and process type
    /// stay. GL: none.
    void copy(SphereRendering_shader const& other);

private:
    static Kind const& _kind();
};

}  // namespace vellum
