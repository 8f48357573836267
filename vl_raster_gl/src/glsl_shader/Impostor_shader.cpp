#include "glsl_shader/Impostor_shader.h"

#include "Program_gl.h"
#include "Shader_gl.h"
#include "internal/geometry_dialect.h"

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr unsigned int MOST_VERTICES = 8;  // of one particle

constexpr unsigned int CONSTANT_COLOR = 4;  // the process type without magnitudes
constexpr unsigned int LENGTH = 0;          // the process type of the whole vector

// The uniforms of every vertex stage: magnitudes in the units of the channel, colors as red, green, blue.
constexpr char const* RAMP_UNIFORMS = R"(uniform float maxMagnitude;
uniform float minMagnitude;
uniform float magnitudeScale;
uniform vec3 minColor;
uniform vec3 maxColor;
uniform vec3 maxClampColor;
)";

// The vector whose length is the speed of a particle.
char const* speedVector(unsigned int const& processType) {
    switch (processType) {
    case 1:
        return "gl_Color.rrr";
    case 2:
        return "gl_Color.ggg";
    case 3:
        return "gl_Color.bbb";
    default:
        return "gl_Color.rgb";
    }
}

// The statements that place the speed between the two colors. `color` and `speedVector` are replaced text:
// the rest is the one source of the ramp. Deliberate (full-rate-clamp): at a rate of exactly 1
// `isFullRateClamped` decides.
std::string rampStatements(char const* vector, bool const& isFullRateClamped) {
    std::string const interpolation = "color = minColor * (1.0 - rate) + maxColor * rate;\n";
    std::string const clamping = "color = maxClampColor;\n";
    return std::string("    float speed = length(") + vector + R"() / magnitudeScale;
    vec3 color = minColor;
    float divisor = maxMagnitude - minMagnitude;
    if (abs(divisor) > 1.0e-14) {
        float rate = (speed - minMagnitude) / divisor;
        if ()" +
           (isFullRateClamped
                ? "rate < 1.0) {\n            " + interpolation + "        } else {\n            " + clamping
                : "rate > 1.0) {\n            " + clamping + "        } else {\n            " +
                      interpolation) +
           "        }\n    }\n";
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

    program->setUniform("LightPos", lightPosition.r, lightPosition.g, lightPosition.b);
    program->setUniform("nLights", static_cast<int>(lightCount));
    program->setUniform("maxMagnitude", maxMagnitude);
    program->setUniform("minMagnitude", minMagnitude);
    program->setUniform("magnitudeScale", magnitudeScale);
    if (!kind.isSizeLast) {
        program->setUniform("size", size);
    }
    program->setUniform("minColor", minColor.r, minColor.g, minColor.b);
    program->setUniform("maxColor", maxColor.r, maxColor.g, maxColor.b);
    program->setUniform("maxClampColor", maxClampColor.r, maxClampColor.g, maxClampColor.b);
    if (kind.isSizeLast) {
        program->setUniform("size", size);
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
    bool const isConstant = type == CONSTANT_COLOR || (type > CONSTANT_COLOR && kind.isOtherTypeConstant);
    std::string const color = isConstant ? "    vec3 color = maxColor;\n"
                                         : rampStatements(speedVector(type > CONSTANT_COLOR ? LENGTH : type),
                                                          kind.isFullRateClamped);
    return std::string(RAMP_UNIFORMS) + kind.vertexDeclarations + R"(
void main()
{
    gl_TexCoord[0] = gl_MultiTexCoord0;
)" + color +
           "    gl_FrontColor = vec4(clamp(color, 0.0, 1.0), 1.0);\n" + kind.vertexOutputs + "}\n";
}

}  // namespace vellum
