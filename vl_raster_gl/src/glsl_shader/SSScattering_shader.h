#pragma once

#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws a mesh of wax, skin or leaves: light enters the material, wraps around it and shines through thin parts.
///
/// For up to two lights. Each adds a wrapped diffuse light, the light that passes through the material toward
/// the viewer, a rim where the surface turns away, and a weak highlight; all under the light's diffuse and
/// specular colors, and weaker with the light's distance.
///
///     SSScattering_shader wax;
///     wax.setMaterialThickness(0.4F);      // also creates the effect and takes its program into use
///     mesh.shader = &wax;
///     mesh.render(MeshShading{...});       // init, preprocess, draw, postprocess, cleanup
///
/// Deliberate (enabling-setters): setters take the program into use at once when the value differs or the
/// effect is dirty, and create the effect the first time; preprocess() does neither. So an effect on which
/// nothing was ever set is created by its renderer, and init() must come before preprocess(), as renderers do
/// it.
///
/// Deliberate (clip-space-lighting): the surface's position is that in clip coordinates, in which light
/// positions are taken too; so the distance to a light, 0.1 to 4 times the brightness at 10, depends on the
/// projection.
class VL_RASTER_GL_EXPORT SSScattering_shader : public Base_shader {
public:
    SSScattering_shader();  ///< GL: none.

    /// An effect of its own with the same thickness, extinction and rim. Deliberate (partial-effect-copy):
    /// base color and light count have their first values. GL: none.
    SSScattering_shader(SSScattering_shader const& other);

    ~SSScattering_shader() override;

    /// Takes over thickness, extinction and rim of another effect; the rest stays. They are sent by the next
    /// pass. GL: none, unless the effect is created and a value differs or it is dirty: then as the setters.
    void copy(SSScattering_shader const& other);

    // == Parameters ==
    // Each setter: GL: that of enable(true) when the value differs or the effect is dirty.
    // State: the current program, until cleanup().

    /// The color of the material, each 0 to 1. First (0.8, 0.8, 0.8, 1), the diffuse color of GL's own
    /// material.
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// How strongly light shines through; 0 is opaque. First 0.1.
    void setMaterialThickness(float const& thickness);

    /// What part of the light that shines through arrives, for red, green and blue; the fourth component is
    /// kept and not used. First (0.5, 0.5, 0.5, 1).
    void setExtinctionCoefficient(float const& r, float const& g, float const& b);
    void setExtinctionCoefficient(Color4<float> const& coefficient);

    /// How bright the rim is. First 0.2.
    void setRimScalar(float const& scalar);

    /// The number of fixed-function lights that a pass switches on, from GL_LIGHT0 on. The second one counts
    /// when there are two or more, and no other. First 1.
    void setNLights(unsigned int const& count);

    // == Lifecycle ==

    /// Loads, attaches and links the stages, and keeps the program's log. Deliberate (enabling-setters): the
    /// parameters then go through their setters, so that while the effect is dirty the program is enabled
    /// once for each of four.
    void create() override;

    /// Takes the program into use and keeps its log.
    /// GL: glUseProgram, glGetProgramInfoLog.  State: the current program.
    void init() override;

    /// Opens the pass. The program must be in use.
    /// GL: glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white, alpha
    /// blending; glGetIntegerv(GL_VIEWPORT); the uniforms; glGetProgramInfoLog.
    /// State: the current color, which cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< The effect is no longer dirty. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

private:
    template <class Value>
    void _storeAndEnable(Value& parameter, Value const& value);

    Color4<float> baseColor{0.8F, 0.8F, 0.8F, 1};
    float materialThickness = 0.1F;
    Color4<float> extinctionCoefficient{0.5F, 0.5F, 0.5F, 1};
    float rimScalar = 0.2F;
    unsigned int lightCount = 1;

    Program_gl::UniformKey thicknessKey{"MaterialThickness"};
    Program_gl::UniformKey rimKey{"RimScalar"};
    Program_gl::UniformKey extinctionKey{"ExtinctionCoefficient"};
    Program_gl::UniformKey baseColorKey{"BaseColor"};
    Program_gl::UniformKey lightCountKey{"nLights"};
};

}  // namespace vellum
