#pragma once

#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws a mesh of wax, skin or leaves: light enters the material, wraps around it and shines through thin
/// parts. For one or two lights.
///
/// Each light adds a wrapped diffuse term, light that passes through the material toward the viewer, a rim
/// where the surface turns away, and a weak highlight. All have the light's diffuse and specular colors and
/// decrease with its distance. docs/shader_spaces.md lists the spaces of the names in the shader texts.
///
///     SSScattering_shader wax;
///     wax.setMaterialThickness(0.4F);      // also creates the effect and takes its program into use
///     mesh.shader = &wax;
///     mesh.render(MeshShading{...});       // init, preprocess, draw, postprocess, cleanup
///
/// preprocess() neither creates the effect nor takes the program into use: create() and init() must come
/// before it, as in the renderers.
///
/// Deliberate (enabling-setters): a setter creates the effect and takes its program into use.
/// Deliberate (clip-space-lighting): distances to lights depend on the projection.
class VL_RASTER_GL_EXPORT SSScattering_shader : public Base_shader {
public:
    SSScattering_shader();  ///< GL: none.

    /// Copies thickness, extinction and rim. GL: none.
    /// Deliberate (partial-effect-copy): base color and light count have their defaults.
    SSScattering_shader(SSScattering_shader const& other);

    ~SSScattering_shader() override;

    /// Copies thickness, extinction and rim of another effect. The next pass sends them. GL: as the setters,
    /// if the effect is created; else none.
    void copy(SSScattering_shader const& other);

    // == Parameters ==
    // GL, for each setter: if the value differs or the effect is dirty, glUseProgram and, per cached uniform,
    // glGetUniformLocation and glUniform*; on the first use also the calls of create().
    // State: the current program, until cleanup().

    /// The color of the material, each 0 to 1. Default (0.8, 0.8, 0.8, 1), the diffuse color of GL's default
    /// material.
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// The intensity of the light that shines through; 0 is opaque. Default 0.1.
    void setMaterialThickness(float const& thickness);

    /// The transmitted part of the light that shines through, for red, green and blue; alpha is stored and
    /// not used. Default (0.5, 0.5, 0.5, 1).
    void setExtinctionCoefficient(float const& r, float const& g, float const& b);
    void setExtinctionCoefficient(Color4<float> const& coefficient);

    /// The brightness of the rim. Default 0.2.
    void setRimScalar(float const& scalar);

    /// The number of fixed-function lights that a pass enables, from GL_LIGHT0 on. At most the first two
    /// light the surface. Default 1.
    void setNLights(unsigned int const& count);

    // == Lifecycle ==

    /// Loads, attaches and links the stages, and stores the program's log.
    /// Deliberate (enabling-setters): a dirty effect is enabled four more times, once per parameter.
    /// GL: the calls of Shader_gl::loadShaderSource() for two stages, glCreateProgram, glAttachShader x 2,
    /// glLinkProgram, glUseProgram up to five times, glGetProgramInfoLog.  State: the current program.
    void create() override;

    /// Takes the program into use and stores its log.
    /// GL: glUseProgram, glGetProgramInfoLog.  State: the current program.
    void init() override;

    /// Opens the pass. The program must be in use.
    /// GL: glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white,
    /// alpha blending; glGetIntegerv(GL_VIEWPORT); the uniforms; glGetProgramInfoLog.
    /// State: the current color, which cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< Clears the dirty flag. GL: none.

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
