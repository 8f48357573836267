#pragma once

#include "glsl_shader/Impostor_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws each particle as a flat arrow of lines along its vector.
///
/// A geometry stage makes six vertices of each point: the shaft from the particle to the tip of its vector, `size`
/// times as long, and a head. Lines are two pixels wide. For the language of the geometry stage see
/// geometry_dialect.h.
class VL_RASTER_GL_EXPORT ArrowRendering_shader : public Impostor_shader {
public:
    /// Which quantity gives the color: 0 the length of the vector, 1, 2, 3 the absolute value of its x, y or z
    /// times the square root of 3, 4 none (all have the maximum color); any other none, too. GL: none.
    explicit ArrowRendering_shader(Base_shader::ProcessType type);

    /// An effect of its own with the same colors, magnitudes, scale and size.
    /// Deliberate (partial-effect-copy): light and light count have their first values, and the process type
    /// is 0. GL: none.
    ArrowRendering_shader(ArrowRendering_shader const& other);

    ~ArrowRendering_shader() override;

    /// Takes over the colors, magnitudes, scale and size of another effect; light, light count and process type
    /// stay. GL: none.
    void copy(ArrowRendering_shader const& other);

    /// For work on the texts: reloads the effect when one of shaders/arrow_vertex.c, shaders/arrow_geometry.c and
    /// shaders/arrow_fragment.c in the watched folder was written since the last time. Prints " RELOADING!" then.
    /// Deliberate (unread-arrow-sources): the files themselves are not read; the stages are made of the
    /// effect's own texts again. The time is kept for all arrow effects together.
    /// GL: that of reload(), if any.
    void reloadShaders();

    /// The folder in which reloadShaders() looks; the working directory until it is set.
    static void setWatchedFolder(char const* path);

private:
    static Kind const& _kind();
};

}  // namespace vellum
