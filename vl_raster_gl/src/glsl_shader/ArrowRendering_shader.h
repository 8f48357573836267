#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a flat arrow of lines along its vector.
///
/// The geometry stage emits six vertices per point: the shaft from the particle along its vector, `size`
/// times as long, and a head. Lines are two pixels wide. On drivers with GL_EXT_geometry_shader4 the geometry
/// stage uses that extension, otherwise GLSL 1.50 of the compatibility profile, from OpenGL 3.2 on.
/// docs/shader_spaces.md lists the spaces of the names in the shader texts.
class VL_RASTER_GL_EXPORT ArrowRendering_shader : public Impostor_shader {
public:
    /// The quantity that gives the color. 0: length of the vector; 1, 2, 3: absolute value of its x, y or z
    /// times the square root of 3; 4: none, all particles have the maximum color; above 4: as 4. GL: none.
    explicit ArrowRendering_shader(Base_shader::ProcessType type);

    /// Copies colors, magnitudes, scale and size. GL: none.
    /// Deliberate (partial-effect-copy): light and light count have their defaults, the process type is 0.
    ArrowRendering_shader(ArrowRendering_shader const& other);

    ~ArrowRendering_shader() override;

    /// Copies colors, magnitudes, scale and size of another effect. GL: none.
    void copy(ArrowRendering_shader const& other);

    /// For development: reloads the effect if shaders/arrow_vertex.c, shaders/arrow_geometry.c or
    /// shaders/arrow_fragment.c in the watched folder was modified since the last reload of any arrow effect,
    /// and prints " RELOADING!".
    /// Deliberate (unread-arrow-sources): the built-in texts are compiled again; the files are not read.
    /// GL: on a reload, glDetachShader and glDeleteShader per stage.
    void reloadShaders();

    /// Sets the folder that reloadShaders() watches; by default the working directory.
    static void setWatchedFolder(char const* path);

private:
    static Kind const& _kind();
};

}  // namespace vellum
