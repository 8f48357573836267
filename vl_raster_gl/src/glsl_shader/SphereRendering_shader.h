#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a shaded sphere that always faces the camera.
///
/// The geometry stage expands each point to a square, `size` wide in clip space, so that it shrinks with the
/// distance. The fragment stage discards the corners outside the disc, shades it with a fixed light and moves
/// its depth toward the viewer. On drivers with GL_EXT_geometry_shader4 the geometry stage uses that
/// extension, otherwise GLSL 1.50 of the compatibility profile, from OpenGL 3.2 on. docs/shader_spaces.md
/// lists the spaces of the names in the shader texts.
class VL_RASTER_GL_EXPORT SphereRendering_shader : public Impostor_shader {
public:
    /// The quantity that gives the color. 0: length of the vector; 1, 2, 3: absolute value of its x, y or z
    /// times the square root of 3; 4: none, all particles have the maximum color; above 4: as 0. GL: none.
    explicit SphereRendering_shader(Base_shader::ProcessType type);

    /// Copies colors, magnitudes, scale and size. GL: none.
    /// Deliberate (partial-effect-copy): light and light count have their defaults, the process type is 0.
    SphereRendering_shader(SphereRendering_shader const& other);

    ~SphereRendering_shader() override;

    /// Copies colors, magnitudes, scale and size of another effect. GL: none.
    void copy(SphereRendering_shader const& other);

private:
    static Kind const& _kind();
};

}  // namespace vellum
