#pragma once

#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <string>

namespace vellum {

/// What the three particle effects have in common: parameters, the colors of magnitudes, the pass.
///
/// The vertex color of a particle carries a vector. Its length, or one component of it, divided by the
/// magnitude scale, is placed between the minimum and the maximum magnitude and gives a color between the
/// minimum and the maximum color, or the clamp color above them. Below the minimum the line through the two
/// colors goes on; at last each channel is limited to 0 to 1. Where the two magnitudes are equal all particles
/// have the minimum color.
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
/// A setter makes the effect dirty when the value differs from the one before; see Base_shader.
class VL_RASTER_GL_EXPORT Impostor_shader : public Base_shader {
public:
    ~Impostor_shader() override;

    // == Parameters ==

    /// Sent as "LightPos"; the effects' own texts do not read it.
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    /// The number of fixed-function lights that a pass switches on, from GL_LIGHT0 on.
    void setNLights(unsigned int const& count);

    void setMinColor(Color4<float> color);       ///< At the minimum magnitude; alpha is not used.
    void setMaxColor(Color4<float> color);       ///< At the maximum magnitude; alpha is not used.
    void setMaxClampColor(Color4<float> color);  ///< Above it; alpha is not used.
    void setMinMagnitude(float magnitude);
    void setMaxMagnitude(float magnitude);
    void setMagnitudeScale(float scale);  ///< What magnitudes are divided by.
    void setSize(float size);             ///< Of a sphere or an arrow; points have GL's point size.

    /// Which quantity gives the color, as the constructor was told.
    Base_shader::ProcessType const& processType() const { return type; }

    // == Lifecycle ==

    /// Loads, attaches and links the stages; keeps the program's log.
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: that of enable(true) when dirty; glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off,
    /// lighting and lights on, white, alpha blending; for arrows glLineWidth(2); glGetIntegerv(GL_VIEWPORT);
    /// glUseProgram; the uniforms.
    /// State: the current color and, for arrows, the line width, which cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< The effect is no longer dirty. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

    /// Makes the stages and attaches them. Called by create().
    void createShadersGeometry();

protected:
    /// In what the three effects differ.
    struct Kind {
        char const* vertexDeclarations;  ///< varyings of the vertex stage, and uniforms of its own
        char const* vertexOutputs;       ///< statements that set them and gl_Position
        bool isFullRateClamped;  ///< magnitudes at the maximum have the clamp color, not the maximum's
        /// Deliberate (process-types-above-4): they give the maximum color, not the color of the length.
        bool isOtherTypeConstant;
        char const* geometry;         ///< body of the geometry stage, or null
        unsigned int geometryOutput;  ///< GL primitive that it gives
        char const* fragment;         ///< the fragment stage
        bool isSizeLast;              ///< "size" is sent behind the colors
        float lineWidth;              ///< pixels; 0 leaves it alone
    };

    Impostor_shader(Kind const& kind, Base_shader::ProcessType const& type);

    /// Takes over colors, magnitudes, scale and size. Deliberate (partial-effect-copy): not light, light
    /// count and process type.
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
};

}  // namespace vellum
