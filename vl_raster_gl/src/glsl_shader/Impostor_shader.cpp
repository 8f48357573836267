#include "glsl_shader/Impostor_shader.h"

#include "Particles_RL_GL_v2.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "internal/geometry_dialect.h"
#include "internal/shader_text.h"

#include "internal/gl_api.h"

namespace vellum {

namespace {

using Particles_RL_GL_v2_ns::RenderMagnitude;

constexpr unsigned int MOST_VERTICES = 8;  // of one particle

// The vertex stage. Uniforms: magnitudes in the units of the channel, colors as red, green, blue. Parts:
//
//     DECLARATIONS  varyings, and uniforms of the effect
//     COLOR         one of the texts below, which set `color`
//     OUTPUTS       statements that set the varyings and gl_Position
constexpr char const* VERTEX = R"(uniform float maxMagnitude;
uniform float minMagnitude;
uniform float magnitudeScale;
uniform vec3 minColor;
uniform vec3 maxColor;
uniform vec3 maxClampColor;
@DECLARATIONS@
void main()
{
    gl_TexCoord[0] = gl_MultiTexCoord0;
@COLOR@    gl_FrontColor = vec4(clamp(color, 0.0, 1.0), 1.0);
@OUTPUTS@}
)";

constexpr char const* ONE_COLOR = R"(    vec3 color = maxColor;
)";

// The ramp. SPEED is the vector whose length is the speed of a particle.
// Deliberate (full-rate): a rate of exactly 1 has the maximum color here, the clamp color below.
constexpr char const* RAMP = R"(    float speed = length(@SPEED@) / magnitudeScale;
    vec3 color = minColor;
    float divisor = maxMagnitude - minMagnitude;
    if (abs(divisor) > 1.0e-14) {
        float rate = (speed - minMagnitude) / divisor;
        if (rate > 1.0) {
            color = maxClampColor;
        } else {
            color = minColor * (1.0 - rate) + maxColor * rate;
        }
    }
)";

constexpr char const* RAMP_CLAMPED_AT_FULL_RATE = R"(    float speed = length(@SPEED@) / magnitudeScale;
    vec3 color = minColor;
    float divisor = maxMagnitude - minMagnitude;
    if (abs(divisor) > 1.0e-14) {
        float rate = (speed - minMagnitude) / divisor;
        if (rate < 1.0) {
            color = minColor * (1.0 - rate) + maxColor * rate;
        } else {
            color = maxClampColor;
        }
    }
)";

char const* speedVector(RenderMagnitude::type magnitude) {
    switch (magnitude) {
    case RenderMagnitude::X:
        return "gl_Color.rrr";
    case RenderMagnitude::Y:
        return "gl_Color.ggg";
    case RenderMagnitude::Z:
        return "gl_Color.bbb";
    default:
        return "gl_Color.rgb";
    }
}

}  // namespace

Impostor_shader::Impostor_shader(Kind const& kind, Base_shader::ProcessType const& type)
    : type(type), kind(kind) {}

Impostor_shader::~Impostor_shader() = default;

void Impostor_shader::_copy(Impostor_shader const& other) {
    setMinColor(other.minColor);
    setMaxColor(other.maxColor);
    setMaxClampColor(other.maxClampColor);
    setMinMagnitude(other.minMagnitude);
    setMaxMagnitude(other.maxMagnitude);
    setMagnitudeScale(other.magnitudeScale);
    setSize(other.size);
}

// == Parameters ==

void Impostor_shader::setLightPosition(float const& x, float const& y, float const& z, float const& w) {
    _store(lightPosition, Color4<float>{x, y, z, w});
}

void Impostor_shader::setNLights(unsigned int const& count) {
    _store(lightCount, count);
}

void Impostor_shader::setMinColor(Color4<float> color) {
    _store(minColor, color);
}

void Impostor_shader::setMaxColor(Color4<float> color) {
    _store(maxColor, color);
}

void Impostor_shader::setMaxClampColor(Color4<float> color) {
    _store(maxClampColor, color);
}

void Impostor_shader::setMinMagnitude(float magnitude) {
    _store(minMagnitude, magnitude);
}

void Impostor_shader::setMaxMagnitude(float magnitude) {
    _store(maxMagnitude, magnitude);
}

void Impostor_shader::setMagnitudeScale(float scale) {
    _store(magnitudeScale, scale);
}

void Impostor_shader::setSize(float size) {
    _store(this->size, size);
}

// == Lifecycle ==

void Impostor_shader::create() {
    createShadersGeometry();
    created = true;
    enable(true);
    log = program->getInfoLog();
}

void Impostor_shader::init() {
    _useProgram();
}

void Impostor_shader::preprocess() {
    if (dirty) {
        enable(true);
    }
    _openPass(lightCount);
    if (kind.lineWidth != 0.0F) {
        glLineWidth(kind.lineWidth);
    }
    // Deliberate (unused-frame-query): callers see the query in their traces.
    _readFrameSize();
    _useProgram();

    program->setUniform(lightPositionKey, lightPosition.r, lightPosition.g, lightPosition.b);
    program->setUniform(lightCountKey, static_cast<int>(lightCount));
    program->setUniform(maxMagnitudeKey, maxMagnitude);
    program->setUniform(minMagnitudeKey, minMagnitude);
    program->setUniform(magnitudeScaleKey, magnitudeScale);
    if (!kind.isSizeLast) {
        program->setUniform(sizeKey, size);
    }
    program->setUniform(minColorKey, minColor.r, minColor.g, minColor.b);
    program->setUniform(maxColorKey, maxColor.r, maxColor.g, maxColor.b);
    program->setUniform(maxClampColorKey, maxClampColor.r, maxClampColor.g, maxClampColor.b);
    if (kind.isSizeLast) {
        program->setUniform(sizeKey, size);
    }
}

void Impostor_shader::postprocess() {
    dirty = false;
}

void Impostor_shader::cleanup() {
    _closePass();
}

// == Stages ==

void Impostor_shader::createShadersGeometry() {
    _loadStages(_vertexText().c_str(), kind.fragment);
    if (kind.geometry == nullptr) {
        program->attach(stage1, stage2, nullptr);
        return;
    }
    GeometryDialect const dialect = geometryDialect();
    GeometryLayout const layout{GL_POINTS, kind.geometryOutput, MOST_VERTICES};
    stage3 = new Shader_gl;
    stage3->loadShaderSource(GL_GEOMETRY_SHADER_EXT,
                             (geometryPrologue(dialect, layout) + kind.geometry).c_str(), false);
    program->attach(stage1, stage2, stage3);
    setGeometryLayout(dialect, layout, *program);
}

std::string Impostor_shader::_vertexText() const {
    // MIN_COLOR is one color as well, the maximum color.
    auto const magnitude = RenderMagnitude::type(type);
    bool const isBeyond = magnitude > RenderMagnitude::MIN_COLOR;
    bool const isOneColor = magnitude == RenderMagnitude::MIN_COLOR || (isBeyond && kind.isOtherTypeConstant);
    char const* const ramp = kind.isFullRateClamped ? RAMP_CLAMPED_AT_FULL_RATE : RAMP;
    std::string const color =
        isOneColor ? ONE_COLOR : filledIn(ramp, ShaderPart{"SPEED", speedVector(magnitude)});
    return filledIn(VERTEX, ShaderPart{"DECLARATIONS", kind.vertexDeclarations}, ShaderPart{"COLOR", color},
                    ShaderPart{"OUTPUTS", kind.vertexOutputs});
}

}  // namespace vellum
