#pragma once

#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <string>

namespace vellum {

/// The base of the three particle effects: parameters, color ramp, pass.
///
/// The vertex color of a particle carries a vector. Its length, or one of its components, is divided by the
/// magnitude scale. The minimum and the maximum magnitude have the minimum and the maximum color; magnitudes
/// between them are interpolated, magnitudes above have the clamp color, magnitudes below are extrapolated.
/// Finally each channel is clamped to 0 to 1. If the two magnitudes are equal, all particles have the minimum
/// color.
///
/// Use, by the particle renderer:
///
///     PointRendering_shader effect(Base_shader::ProcessType(0));
///     effect.setMaxMagnitude(10);                    // ... and the other parameters
///     effect.preprocess();
///     layer.drawArrays(Primitive::POINTS, 0, count);
///     effect.postprocess();
///     effect.cleanup();
///
/// A setter makes the effect dirty if the value differs; see Base_shader.
class VL_RASTER_GL_EXPORT Impostor_shader : public Base_shader {
public:
    ~Impostor_shader() override;

    // == Parameters ==

    /// Sent as "LightPos"; the built-in texts do not read it.
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    /// The number of fixed-function lights that a pass enables, from GL_LIGHT0 on.
    void setNLights(unsigned int const& count);

    void setMinColor(Color4<float> color);       ///< At the minimum magnitude; alpha is not used.
    void setMaxColor(Color4<float> color);       ///< At the maximum magnitude; alpha is not used.
    void setMaxClampColor(Color4<float> color);  ///< Above it; alpha is not used.
    void setMinMagnitude(float magnitude);
    void setMaxMagnitude(float magnitude);
    void setMagnitudeScale(float scale);  ///< Divides all magnitudes.
    void setSize(float size);             ///< Of spheres and arrows; points have GL's point size.

    /// The quantity that gives the color, from the constructor.
    Base_shader::ProcessType const& processType() const { return type; }

    // == Lifecycle ==

    /// Loads, attaches and links the stages; stores the program's log.
    /// GL: the calls of Shader_gl::loadShaderSource() per stage, glCreateProgram, glAttachShader per stage,
    /// glProgramParameteriEXT x 3 on drivers with the extension, glLinkProgram, glUseProgram,
    /// glGetProgramInfoLog.  State: the current program.
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: when dirty glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*;
    /// glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white, alpha
    /// blending; for arrows glLineWidth(2); glGetIntegerv(GL_VIEWPORT); glUseProgram; the uniforms.
    /// State: the current color and, for arrows, the line width, which cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< Clears the dirty flag. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

    /// Creates the stages and attaches them. Called by create().
    void createShadersGeometry();

protected:
    /// The differences between the three effects.
    struct Kind {
        char const* vertexDeclarations;  ///< further varyings and uniforms of the vertex stage
        char const* vertexOutputs;       ///< statements that set them and gl_Position
        bool isFullRateClamped;          ///< magnitudes at the maximum have the clamp color
        /// Deliberate (process-types-above-4): they give the maximum color, not the color of the length.
        bool isOtherTypeConstant;
        char const* geometry;         ///< body of the geometry stage, or null
        unsigned int geometryOutput;  ///< GL primitive of its output
        char const* fragment;         ///< the fragment stage
        bool isSizeLast;              ///< "size" is sent after the colors
        float lineWidth;              ///< pixels; 0: unchanged
    };

    Impostor_shader(Kind const& kind, Base_shader::ProcessType const& type);

    /// Copies colors, magnitudes, scale and size.
    /// Deliberate (partial-effect-copy): not light, light count and process type.
    void _copy(Impostor_shader const& other);

private:
    std::string _vertexText() const;

    Color4<float> lightPosition{1, 1, 0, 0};
    unsigned int lightCount = 1;
    Color4<float> minColor{0.6666667F, 1, 1, 1};             // 170 / 255
    Color4<float> maxColor{0, 0.21568627F, 0.31764707F, 1};  // 55 / 255, 81 / 255
    Color4<float> maxClampColor{1, 0, 1, 1};
    float minMagnitude = 0;
    float maxMagnitude = 1;
    float magnitudeScale = 1;
    float size = 1;
    Base_shader::ProcessType type;
    Kind const& kind;  // a constant of the effect's source

    Program_gl::UniformKey lightPositionKey{"LightPos"};
    Program_gl::UniformKey lightCountKey{"nLights"};
    Program_gl::UniformKey maxMagnitudeKey{"maxMagnitude"};
    Program_gl::UniformKey minMagnitudeKey{"minMagnitude"};
    Program_gl::UniformKey magnitudeScaleKey{"magnitudeScale"};
    Program_gl::UniformKey sizeKey{"size"};
    Program_gl::UniformKey minColorKey{"minColor"};
    Program_gl::UniformKey maxColorKey{"maxColor"};
    Program_gl::UniformKey maxClampColorKey{"maxClampColor"};
};

}  // namespace vellum
