#include "glsl_shader/SSScattering_shader.h"

namespace vellum {

namespace {

// Passes normal, position and light vectors on; for their spaces see docs/shader_spaces.md (worldNormal is in
// eye space). nLights: 1 or 2.
// Deliberate (clip-space-lighting): vertPos, eyeVec and lightVec use the clip-space position.
constexpr char const* VERTEX = R"(uniform int nLights;

varying vec3 worldNormal;
varying vec3 eyeVec;
varying vec3 vertPos;
varying vec3 lightVec[3];
varying vec3 lightPos[3];

void main()
{
    worldNormal = gl_NormalMatrix * gl_Normal;
    vec4 p = gl_ModelViewProjectionMatrix * gl_Vertex;
    eyeVec = -p.xyz;
    vertPos = p.xyz;

    lightPos[0] = gl_LightSource[0].position.xyz;
    lightVec[0] = lightPos[0] - p.xyz;
    if (nLights > 1) {
        lightPos[1] = gl_LightSource[1].position.xyz;
        lightVec[1] = lightPos[1] - p.xyz;
    }

    gl_Position = p;
    gl_TexCoord[0] = gl_TextureMatrix[0] * gl_MultiTexCoord0;
}
)";

// Wrapped diffuse light, light through the material, rim and highlight. MaterialThickness: intensity of the
// light through the material; ExtinctionCoefficient: its transmitted part per channel; RimScalar: brightness
// of the rim; nLights: 1 or 2. The attenuation, 10 / distance within 0.1 and 4, and the weight 0.05 of the
// highlight are matters of taste.
//
// Half-Lambert maps the cosine from -1 ... 1 to 0 ... 1, so that light wraps around the surface.
// Deliberate (swapped-clamp): value 0, lower bound 1, the cosine as the upper bound.
constexpr char const* FRAGMENT = R"(uniform float MaterialThickness;
uniform vec3 ExtinctionCoefficient;
uniform vec4 BaseColor;
uniform float RimScalar;
uniform int nLights;

varying vec3 worldNormal;
varying vec3 eyeVec;
varying vec3 vertPos;
varying vec3 lightVec[3];
varying vec3 lightPos[3];

float halfLambert(vec3 a, vec3 b)
{
    return dot(a, b) * 0.5 + 0.5;
}

float blinnPhong(vec3 n, vec3 l, float p)
{
    return pow(clamp(0.0, 1.0, dot(n, normalize(n + l))), p);
}

vec3 scattered(vec3 position, vec3 direction, vec3 lightDiffuse, vec3 lightSpecular)
{
    float attenuation = clamp(10.0 / distance(position, vertPos), 0.1, 4.0);
    vec3 e = normalize(eyeVec);
    vec3 l = normalize(direction);
    vec3 n = normalize(worldNormal);

    vec4 diffuse = vec4(halfLambert(l, n) * attenuation) * BaseColor;

    float through = MaterialThickness * max(0.0, dot(-n, l)) + MaterialThickness * halfLambert(-e, l);
    vec3 indirect = through * attenuation * ExtinctionCoefficient;

    float turned = 1.0 - max(0.0, dot(n, e));
    vec3 rim = turned * turned * max(0.0, dot(n, l)) * lightSpecular;

    vec4 color = diffuse + vec4(indirect, 1.0);
    color.rgb += rim * RimScalar * attenuation * color.a;
    color.rgb += blinnPhong(n, l, gl_FrontMaterial.shininess) * attenuation * lightSpecular * color.a * 0.05;
    return color.rgb * lightDiffuse;
}

void main()
{
    gl_FragColor = vec4(0.0, 0.0, 0.0, 1.0);
    gl_FragColor.rgb += scattered(lightPos[0], lightVec[0], gl_LightSource[0].diffuse.rgb,
                                  gl_LightSource[0].specular.rgb);
    if (nLights > 1) {
        gl_FragColor.rgb += scattered(lightPos[1], lightVec[1], gl_LightSource[1].diffuse.rgb,
                                      gl_LightSource[1].specular.rgb);
    }
}
)";

}  // namespace

SSScattering_shader::SSScattering_shader() = default;

SSScattering_shader::SSScattering_shader(SSScattering_shader const& other) : SSScattering_shader() {
    copy(other);
}

SSScattering_shader::~SSScattering_shader() = default;

void SSScattering_shader::copy(SSScattering_shader const& other) {
    // Setters enable the effect. Before its first use that would create it, which needs a context.
    if (created) {
        setMaterialThickness(other.materialThickness);
        setExtinctionCoefficient(other.extinctionCoefficient);
        setRimScalar(other.rimScalar);
    } else {
        _store(materialThickness, other.materialThickness);
        _store(extinctionCoefficient, other.extinctionCoefficient);
        _store(rimScalar, other.rimScalar);
    }
}

// == Parameters ==

// Deliberate (enabling-setters): a changed value enables the effect at once and does not make it dirty.
template <class Value>
void SSScattering_shader::_storeAndEnable(Value& parameter, Value const& value) {
    bool const isOther = parameter != value;
    parameter = value;
    if (isOther || dirty) {
        enable(true);
    }
}

void SSScattering_shader::setBaseColor(float const& r, float const& g, float const& b, float const& a) {
    _storeAndEnable(baseColor, {r, g, b, a});
}

void SSScattering_shader::setMaterialThickness(float const& thickness) {
    _storeAndEnable(materialThickness, thickness);
}

void SSScattering_shader::setExtinctionCoefficient(float const& r, float const& g, float const& b) {
    setExtinctionCoefficient({r, g, b, extinctionCoefficient.a});
}

void SSScattering_shader::setExtinctionCoefficient(Color4<float> const& coefficient) {
    _storeAndEnable(extinctionCoefficient, coefficient);
}

void SSScattering_shader::setRimScalar(float const& scalar) {
    _storeAndEnable(rimScalar, scalar);
}

void SSScattering_shader::setNLights(unsigned int const& count) {
    _storeAndEnable(lightCount, count);
}

// == Lifecycle ==

void SSScattering_shader::create() {
    _loadStages(VERTEX, FRAGMENT);
    program->attach(stage1, stage2, nullptr);
    created = true;  // first: the setters below call enable(), which would create the effect again
    setBaseColor(baseColor.r, baseColor.g, baseColor.b, baseColor.a);
    setExtinctionCoefficient(extinctionCoefficient);
    setMaterialThickness(materialThickness);
    setRimScalar(rimScalar);
    enable(true);
    log = program->getInfoLog();
}

void SSScattering_shader::init() {
    _useProgram();
    log = program->getInfoLog();
}

void SSScattering_shader::preprocess() {
    _openPass(lightCount);
    _sendFrameSize(_readFrameSize());
    program->setUniform(thicknessKey, materialThickness);
    program->setUniform(rimKey, rimScalar);
    program->setUniform(extinctionKey, extinctionCoefficient.r, extinctionCoefficient.g,
                        extinctionCoefficient.b);
    program->setUniform(baseColorKey, baseColor.r, baseColor.g, baseColor.b, baseColor.a);
    program->setUniform(lightCountKey, static_cast<int>(lightCount));
    log = program->getInfoLog();
}

void SSScattering_shader::postprocess() {
    dirty = false;
}

void SSScattering_shader::cleanup() {
    _closePass();
}

}  // namespace vellum
