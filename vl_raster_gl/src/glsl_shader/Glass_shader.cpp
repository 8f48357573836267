#include "glsl_shader/Glass_shader.h"

#include "Program_gl.h"

#include "foundation/raster/Core_RL.h"

#include <utility>

#include "internal/gl_api.h"
#include "internal/misuse.h"

namespace vellum {

namespace {

enum TextureUnit : int { ENVIRONMENT_UNIT = 0, REFRACTION_UNIT = 1 };

// Passes normal and position on (see docs/shader_spaces.md: EyeDir is an eye-space position, EyePos is in
// clip space), and the cosines of the first two lights.
// Deliberate (both-lights-in-glass): every driver has at least 8 lights, so both can be read.
constexpr char const* VERTEX = R"(const int nLights = gl_MaxLights;

varying vec3 Normal;
varying vec3 EyeDir;
varying vec4 EyePos;
varying float LightIntensity[nLights];

void main()
{
    gl_TexCoord[0].xy = gl_Vertex.xz + 0.5;
    gl_Position = ftransform();

    Normal = normalize(gl_NormalMatrix * gl_Normal);
    EyeDir = vec3(gl_ModelViewMatrix * gl_Vertex);
    EyePos = gl_ModelViewProjectionMatrix * gl_Vertex;

    LightIntensity[0] = max(dot(normalize(gl_LightSource[0].position.xyz - EyeDir), Normal), 0.0);
    LightIntensity[1] = max(dot(normalize(gl_LightSource[1].position.xyz - EyeDir), Normal), 0.0);
}
)";

// Mixes the reflected environment with the refracted framebuffer. BaseColor: red, green, blue; Depth:
// refraction in normalized device coordinates; MixRatio: factor of the Fresnel term; Frame* and texture*:
// pixels.
//
// The environment is sampled at (s, t). x is the cosine between the x axis and the reflected direction
// without its height, y the cosine between the y axis and the reflected direction; both -1 to 1:
//
//     z >= 0    s = 1/2 + x / 4      1/4 to 3/4
//     z < 0     s = 1 - x / 4        3/4 to 5/4, beyond 1 the repeating image begins again: up to 1/4
//     both      t = (y + 1) / 2
//
// The copy of the viewport lies in the lower left corner of a texture with power-of-two sizes. A look-up is
// clamped to the viewport before it is scaled to that corner: clamping afterwards would read texels beyond
// the viewport.
constexpr char const* FRAGMENT = R"(const int nLights = gl_MaxLights;

uniform vec3 BaseColor;
uniform float Depth;
uniform float MixRatio;
uniform float FrameWidth;
uniform float FrameHeight;
uniform float textureWidth;
uniform float textureHeight;
uniform sampler2D EnvMap;
uniform sampler2D RefractionMap;

varying vec3 Normal;
varying vec3 EyeDir;
varying vec4 EyePos;
varying float LightIntensity[nLights];

vec3 environment()
{
    vec3 r = reflect(EyeDir, Normal);
    vec2 index;
    index.y = dot(normalize(r), vec3(0.0, 1.0, 0.0));
    r.y = 0.0;
    index.x = dot(normalize(r), vec3(1.0, 0.0, 0.0)) * 0.5;
    if (r.z >= 0.0) {
        index = (index + 1.0) * 0.5;
    } else {
        index.t = (index.t + 1.0) * 0.5;
        index.s = -index.s * 0.5 + 1.0;
    }
    return texture2D(EnvMap, index).rgb;
}

vec3 refraction()
{
    vec3 d = normalize(EyeDir) - normalize(Normal);
    float depthVal = Depth / -d.z;
    vec2 eye = EyePos.xy / EyePos.w;
    vec2 index = (eye + d.xy * depthVal) / 2.0 + 0.5;
    index.s = clamp(index.s, 0.0, 1.0 - 1.0 / textureWidth);
    index.t = clamp(index.t, 0.0, 1.0 - 1.0 / textureHeight);
    index.s *= FrameWidth / textureWidth;
    index.t *= FrameHeight / textureHeight;
    return texture2D(RefractionMap, index).rgb;
}

void main()
{
    float fresnel = clamp(abs(dot(normalize(EyeDir), Normal)) * MixRatio, 0.1, 0.9);
    vec3 base = LightIntensity[0] * BaseColor + LightIntensity[1] * BaseColor;
    vec3 color = mix(environment(), refraction(), fresnel);
    color = mix(color, base, 0.2);
    gl_FragColor = vec4(color, 1.0);
}
)";

// Without a render layer the effect can be constructed and copied; 0 is no texture.
unsigned int makeTexture() {
    return VL_Raster != nullptr ? VL_Raster->createTexture() : 0;
}

}  // namespace

Glass_shader::Glass_shader() : environmentTexture(makeTexture()), refractionTexture(makeTexture()) {}

Glass_shader::Glass_shader(Glass_shader const& other) : Glass_shader() {
    copy(other);
}

Glass_shader::~Glass_shader() {
    misuse::refuseDeadLayer("Glass_shader::~Glass_shader");
    // The render layer may be gone before the effect; the context then deletes its textures.
    if (VL_Raster != nullptr) {
        VL_Raster->destroyTexture(environmentTexture);
        VL_Raster->destroyTexture(refractionTexture);
    }
}

void Glass_shader::copy(Glass_shader const& other) {
    setDepth(other.depth);
    setMixRatio(other.mixRatio);
    if (created) {
        setEnvironmentTexture(other.environmentPath);
    } else {
        // Without a context nothing can be uploaded; create() loads the file.
        _store(environmentPath, other.environmentPath);
    }
}

// == Parameters ==

void Glass_shader::setLightPosition(float const& x, float const& y, float const& z, float const& w) {
    _store(lightPosition, Color4<float>{x, y, z, w});
}

void Glass_shader::setBaseColor(float const& r, float const& g, float const& b, float const& a) {
    _store(baseColor, Color4<float>{r, g, b, a});
}

void Glass_shader::setDepth(float const& depth) {
    _store(this->depth, depth);
}

void Glass_shader::setMixRatio(float const& ratio) {
    _store(mixRatio, ratio);
}

void Glass_shader::setNLights(unsigned int const& count) {
    _store(lightCount, count);
}

void Glass_shader::setEnvironmentTexture(VL_String path) {
    bool const isOther = path != environmentPath;
    environmentPath = std::move(path);
    if (isOther || dirty) {
        loadTextureRGB(environmentPath, environmentTexture);
    }
}

// == Lifecycle ==

void Glass_shader::create() {
    _loadStages(VERTEX, FRAGMENT);
    program->attach(stage1, stage2, nullptr);
    created = true;
    // The size counts the terminating zero. A clean effect that is created again still has its texture.
    if (environmentPath.size() > 1 && dirty) {
        loadTextureRGB(environmentPath, environmentTexture);
    }
    enable(true);
    log = program->getInfoLog();
}

void Glass_shader::init() {
    // Deliberate (repeating-framebuffer-copy): the copy repeats, which its border pixels show.
    copyFramebufferToTexture(refractionTexture);
}

void Glass_shader::preprocess() {
    if (dirty) {
        enable(true);
    }
    _openPass(lightCount);
    FrameSize const frame = _readFrameSize();
    _useProgram();

    program->setUniform(baseColorKey, baseColor.r, baseColor.g, baseColor.b);
    program->setUniform(lightPositionKey, lightPosition.r, lightPosition.g, lightPosition.b);
    program->setUniform(depthKey, depth);
    program->setUniform(mixRatioKey, mixRatio);
    _sendFrameSize(frame);
    // Samplers are not cached by the program, so every pass binds them.
    program->setUniformSampler("EnvMap", environmentTexture, ENVIRONMENT_UNIT);
    program->setUniformSampler("RefractionMap", refractionTexture, REFRACTION_UNIT);
    program->setUniform(lightCountKey, static_cast<int>(lightCount));
}

void Glass_shader::postprocess() {
    dirty = false;
}

void Glass_shader::cleanup() {
    _closePass();
    // Deliberate (freed-refraction-name): init() uses the name again.
    if (VL_Raster != nullptr) {
        VL_Raster->destroyTexture(refractionTexture);
    }
}

}  // namespace vellum
