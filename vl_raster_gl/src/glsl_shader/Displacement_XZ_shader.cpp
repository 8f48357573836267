#include "glsl_shader/Displacement_XZ_shader.h"

#include "Program_gl.h"
#include "internal/displaced_normal.h"
#include "internal/misuse.h"

#include "foundation/raster/Core_RL.h"

#include <string>

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr unsigned int LIGHTS = 2;  // enabled by a pass; the built-in texts read the first
constexpr int DISPLACEMENT_UNIT = 1;

// Displaces the vertex by its texel, -1 to 1 per channel, in the tangent frame of its normal. scale: factor
// along the normal; repeat_u, repeat_v: tiles. epsilon is the distance between 1 and the next float.
// Deliberate (axis-tangent-frame): other normals have the identity as their frame.
constexpr char const* VERTEX = R"(uniform sampler2D displacementMap;
uniform float scale;
uniform float repeat_u;
uniform float repeat_v;
varying vec4 vPos;
varying mat3 base;

mat3 frame(vec3 normal)
{
    const float epsilon = 1.192092896e-07;
    vec3 crossX = cross(normal, vec3(1.0, 0.0, 0.0));
    vec3 crossY = cross(normal, vec3(0.0, 1.0, 0.0));
    vec3 crossZ = cross(normal, vec3(0.0, 0.0, 1.0));
    if (length(crossX) < epsilon || length(crossY) < epsilon || length(crossZ) < epsilon) {
        vec3 tangent = normalize(length(crossY) > length(crossZ) ? crossY : crossZ);
        vec3 binormal = normalize(cross(tangent, normal));
        return mat3(tangent, normal, binormal);
    }
    return mat3(1.0);
}

void main()
{
    gl_TexCoord[0] = vec4(gl_MultiTexCoord0.x * repeat_u, gl_MultiTexCoord0.y * repeat_v, 0.0, 1.0);
    vec3 d = (texture2D(displacementMap, gl_TexCoord[0].xy).xyz - 0.5) * 2.0;
    d.y *= scale;
    base = frame(gl_Normal);
    vec4 p = vec4(gl_Vertex.xyz + base * d, 1.0);
    gl_Position = gl_ModelViewProjectionMatrix * p;
    vPos = gl_ModelViewMatrix * p;
}
)";

// dim_X, dim_Z: object units per tile of the map; resolution: texels across the map; foamThreshold: 0 to 1.
// normalsMap is declared and not read.
constexpr char const* FRAGMENT_DECLARATIONS = R"(uniform sampler2D normalsMap;
uniform sampler2D displacementMap;
uniform vec4 basecolor;
uniform float scale;
uniform float dim_X;
uniform float dim_Z;
uniform int resolution;
uniform float foamThreshold;
varying vec4 vPos;
varying mat3 base;

vec3 displacePoint(vec2 q)
{
    vec2 texel = q / float(resolution);
    vec3 d = texture2D(displacementMap, texel).xyz * 2.0 - 1.0;
    d.y *= scale;
    return vec3(texel.x * dim_X, 0.0, texel.y * dim_Z) + d;
}
)";

// The Fresnel term mixes the depth color (seen from above) with the sky color (seen at a low angle). The
// swapped x and z of flatNormal turn the rebuilt normal into the tangent frame. foamThreshold 0 divides by 0:
// 0 / 0 counts as 1, and other quotients, from alphas above 1, are left to the driver.
constexpr char const* FRAGMENT_MAIN = R"(
float foam(float m)
{
    float c = 1.0 - foamThreshold;
    if (m < c) {
        return 0.0;
    }
    float range = 1.0 - c;
    m = m == c && range == 0.0 ? 1.0 : (m - c) / range;
    return m * m;
}

void main()
{
    vec3 flatNormal = displacedNormal(gl_TexCoord[0].xy * float(resolution));
    vec3 n = normalize(gl_NormalMatrix * (base * vec3(-flatNormal.z, flatNormal.y, flatNormal.x)));

    float shininess = gl_FrontMaterial.shininess * 10.0;
    vec3 specularProduct = gl_FrontLightProduct[0].specular.rgb * 3.0;
    const float MixRatio = 1.5;
    vec3 skyColor = mix(vec3(0.16, 0.36, 0.5) * 1.2, vec3(0.5, 0.5, 0.5), 0.4);
    vec3 depthColor = vec3(0.1, 0.25, 0.40) * 0.5;

    vec3 l = normalize(gl_LightSource[0].position.xyz - vPos.xyz);
    vec3 v = normalize(-vPos.xyz);
    vec3 h = normalize(l + v);
    vec3 specular = vec3(0.0);
    if (dot(n, v) > 0.0 && dot(n, l) * dot(n, v) > 0.0) {
        specular = specularProduct * pow(max(dot(n, h), 0.0), shininess);
    }
    float fresnel = clamp(abs(dot(normalize(vPos.xyz), n)) * MixRatio, 0.01, 0.9);
    vec3 diffuse = max(dot(n, l), 0.0) * basecolor.rgb;

    vec3 color = mix(skyColor, depthColor, fresnel);
    color = mix(color, diffuse, 0.2);
    color += specular;
    color += vec3(foam(texture2D(displacementMap, gl_TexCoord[0].xy).a));
    gl_FragColor = vec4(color, 1.0);
}
)";

}  // namespace

Displacement_XZ_shader::Displacement_XZ_shader() {
    _nameTexture();
}

// The copy must work without a context, so its texture is created on the first use.
Displacement_XZ_shader::Displacement_XZ_shader(Displacement_XZ_shader const& other)
    : Base_shader(other)
    , lightPosition(other.lightPosition)
    , baseColor(other.baseColor)
    , scale(other.scale)
    , repeatU(other.repeatU)
    , repeatV(other.repeatV)
    , dimX(other.dimX)
    , dimZ(other.dimZ)
    , foamThreshold(other.foamThreshold)
    , resolution(other.resolution) {}

Displacement_XZ_shader::~Displacement_XZ_shader() {
    misuse::refuseDeadLayer("Displacement_XZ_shader::~Displacement_XZ_shader");
    if (VL_Raster != nullptr && displacementTexture != 0) {
        VL_Raster->destroyTexture(displacementTexture);
    }
}

void Displacement_XZ_shader::_nameTexture() {
    if (VL_Raster != nullptr && displacementTexture == 0) {
        displacementTexture = VL_Raster->createTexture();
    }
}

// == Parameters ==

void Displacement_XZ_shader::setLightPosition(float const& x, float const& y, float const& z,
                                              float const& w) {
    _store(lightPosition, {x, y, z, w});
}

void Displacement_XZ_shader::setBaseColor(float const& r, float const& g, float const& b, float const& a) {
    _store(baseColor, {r, g, b, a});
}

void Displacement_XZ_shader::setScale(float const& scale) {
    _store(this->scale, scale);
}

void Displacement_XZ_shader::setDim_X(float const& size) {
    _store(dimX, size);
}

void Displacement_XZ_shader::setDim_Z(float const& size) {
    _store(dimZ, size);
}

void Displacement_XZ_shader::setRepeat_U(float const& tiles) {
    _store(repeatU, tiles);
}

void Displacement_XZ_shader::setRepeat_V(float const& tiles) {
    _store(repeatV, tiles);
}

void Displacement_XZ_shader::setResolution(int const& texels) {
    _store(resolution, texels);
}

void Displacement_XZ_shader::setFoamThreshold(float const& threshold) {
    _store(foamThreshold, threshold);
}

void Displacement_XZ_shader::setDisplacementTexture(VL_Image const& image) {
    _nameTexture();
    loadTextureFloat32(image, displacementTexture);
}

// == Lifecycle ==

void Displacement_XZ_shader::create() {
    std::string const fragment = std::string(FRAGMENT_DECLARATIONS) + DISPLACED_NORMAL + FRAGMENT_MAIN;
    _loadStages(VERTEX, fragment.c_str());
    program->attach(stage1, stage2, nullptr);
    created = true;
    flag = false;
    program->enable(true);
    log = program->getInfoLog();
}

void Displacement_XZ_shader::init() {
    _useProgram();
}

void Displacement_XZ_shader::preprocess() {
    _nameTexture();
    if (dirty) {
        enable(true);
    }
    _openPass(LIGHTS);
    _sendFrameSize(_readFrameSize());
    program->setUniform(scaleKey, scale);
    program->setUniform(repeatUKey, repeatU);
    program->setUniform(repeatVKey, repeatV);
    program->setUniform(foamThresholdKey, foamThreshold);
    program->setUniform(dimXKey, dimX);
    program->setUniform(dimZKey, dimZ);
    program->setUniform(resolutionKey, resolution);
    program->setUniform(lightPositionKey, lightPosition.r, lightPosition.g, lightPosition.b, lightPosition.a);
    program->setUniform(baseColorKey, baseColor.r, baseColor.g, baseColor.b, baseColor.a);
    program->setUniformSampler("displacementMap", displacementTexture, DISPLACEMENT_UNIT);
    log = program->getInfoLog();
}

void Displacement_XZ_shader::postprocess() {}

void Displacement_XZ_shader::cleanup() {
    _closePass();
}

}  // namespace vellum
