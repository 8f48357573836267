#include "glsl_shader/Displacement_shader.h"

#include "Program_gl.h"
#include "Shader_gl.h"
#include "internal/displaced_normal.h"
#include "internal/geometry_dialect.h"
#include "internal/misuse.h"
#include "internal/shader_text.h"

#include "foundation/raster/Core_RL.h"

#include <algorithm>
#include <utility>

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr int NORMALS_UNIT = 0;
constexpr int DISPLACEMENT_UNIT = 1;

// == The plain path ==

// Displaces the vertex by its texel: -1 to 1 per channel, times scale (hundredths).
// Deliberate (four-component-displacement): displaces w as well.
constexpr char const* VERTEX = R"(uniform sampler2D displacementMap;
uniform vec2 uvTileFactor;
uniform vec3 scale;
varying vec3 vNormal;
varying vec4 vPos;

void main()
{
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_TexCoord[0].x *= uvTileFactor.x;
    gl_TexCoord[0].y *= uvTileFactor.y;

    vec4 dv = (texture2D(displacementMap, gl_TexCoord[0].xy) - 0.5) * 2.0;
    dv.xyz *= scale;
    dv *= 0.01;
    vec4 p = gl_Vertex + dv;

    gl_Position = gl_ModelViewProjectionMatrix * p;
    vPos = gl_ModelViewMatrix * p;
    vNormal = normalize(gl_NormalMatrix * gl_Normal);
}
)";

// The fragment stage of both paths. Parts:
//
//     CONSTANTS         mapSize: texels across the map for normals, independent of the texture's size;
//                       choppy: factor of the displacement for normals
//     DISPLACED_NORMAL  displacedNormal(), of internal/displaced_normal.h
//     MAIN              main()
//
// phong() is the light i at the eye-space position vPos. Each light adds an alpha of 1, so that two give 2.
// Deliberate (four-component-light-distance): the distance has four components, the direction three.
constexpr char const* FRAGMENT = R"(@CONSTANTS@uniform sampler2D normalsMap;
uniform sampler2D displacementMap;
uniform vec4 basecolor;
uniform int nLights;
uniform vec3 scale;
varying vec3 vNormal;
varying vec4 vPos;

vec3 displacePoint(vec2 q)
{
    vec3 d = (texture2D(displacementMap, q / mapSize).xyz * 2.0 - 1.0) * scale * 0.01;
    return vec3(q.x, 0.0, q.y) / mapSize + d * choppy;
}
@DISPLACED_NORMAL@
vec4 phong(int i, vec3 n)
{
    vec4 color = vec4(0.0, 0.0, 0.0, 1.0);
    float r = distance(gl_LightSource[i].position, vPos);
    float a = gl_LightSource[i].quadraticAttenuation * r * r + gl_LightSource[i].linearAttenuation * r +
              gl_LightSource[i].constantAttenuation;
    vec3 l = normalize(gl_LightSource[i].position.xyz - vPos.xyz);
    vec3 v = normalize(-vPos.xyz);
    vec3 h = normalize(l + v);
    bool isFront = dot(n, v) > 0.0;
    bool isLit = dot(n, l) * dot(n, v) > 0.0;
    if (isFront) {
        color.rgb += basecolor.rgb * gl_FrontLightProduct[i].ambient.rgb;
        if (isLit) {
            color.rgb += basecolor.rgb * gl_FrontLightProduct[i].diffuse.rgb * max(dot(n, l), 0.0) / a;
            color.rgb += gl_FrontLightProduct[i].specular.rgb *
                         pow(max(dot(n, h), 0.0), gl_FrontMaterial.shininess) / a;
        }
    } else {
        color.rgb += basecolor.rgb * gl_BackLightProduct[i].ambient.rgb;
        if (isLit) {
            color.rgb += basecolor.rgb * gl_BackLightProduct[i].diffuse.rgb * max(dot(-n, l), 0.0) / a;
            color.rgb += gl_BackLightProduct[i].specular.rgb *
                         pow(max(dot(-n, h), 0.0), gl_BackMaterial.shininess) / a;
        }
    }
    return color;
}
@MAIN@)";

constexpr char const* CONSTANTS = R"(const float mapSize = 256.0;
const float choppy = 1.0;
)";

constexpr char const* MAIN = R"(
void main()
{
    vec3 n = gl_NormalMatrix * displacedNormal(gl_TexCoord[0].xy * mapSize);
    vec4 color = phong(0, n);
    if (nLights > 1) {
        color += phong(1, n);
    }
    gl_FragColor = color;
}
)";

// == The tessellated path ==

constexpr char const* TESSELATED_CONSTANTS = R"(const float mapSize = 256.0;
const float Yscale = 1.0;
const float choppy = 2.0;
)";

constexpr char const* TESSELATED_VERTEX = R"(uniform vec2 uvTileFactor;

void main()
{
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_TexCoord[0].x *= uvTileFactor.x;
    gl_TexCoord[0].y *= uvTileFactor.y;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
)";

// Splits a triangle p0, p1, p2 into n x n. Each step (i, j) emits one or two of them as a strip:
// q0, q2, q1, q3.
//
//     p0
//     | \                  u = (p2 - p1) / n, v = (p0 - p1) / n
//     q1 - q3
//     | \  |  \            q3 only where it lies in the triangle
//     q0 - q2 - p2
//     (p1)
//
// depth is n; below 1 the triangle is neither split nor displaced. scale is in hundredths. MOST_DEPTH, if
// defined, is the largest n. All points are in object space.
constexpr char const* GEOMETRY = R"(uniform sampler2D normalsMap;
uniform sampler2D displacementMap;
uniform vec3 scale;
uniform int depth;
STAGE_OUT vec4 vPos;
STAGE_OUT vec3 vNormal;

vec3 p0;
vec3 p1;
vec3 p2;
float whole;
vec3 faceNormal;

float area(vec3 a, vec3 b, vec3 c)
{
    return length(cross(b - a, c - a)) * 0.5;
}

void emitPoint(vec3 q)
{
    vec4 coordinate = (area(q, p1, p2) * TEXTURE_COORDINATE_IN(0) + area(p0, q, p2) * TEXTURE_COORDINATE_IN(1) +
                       area(p0, p1, q) * TEXTURE_COORDINATE_IN(2)) / whole;
    vec4 p = vec4(q, 1.0);
    if (depth > 0) {
        p.xyz += (texture2D(displacementMap, coordinate.xy).xyz - 0.5) * 2.0 * scale * 0.01;
    }
    gl_TexCoord[0] = coordinate;
    gl_Position = gl_ModelViewProjectionMatrix * p;
    vPos = gl_ModelViewMatrix * p;
    vNormal = faceNormal;
    EmitVertex();
}

void main()
{
    p0 = (gl_ModelViewProjectionMatrixInverse * POSITION_IN(0)).xyz;
    p1 = (gl_ModelViewProjectionMatrixInverse * POSITION_IN(1)).xyz;
    p2 = (gl_ModelViewProjectionMatrixInverse * POSITION_IN(2)).xyz;
    whole = area(p0, p1, p2);

    int n = depth > 0 ? depth : 1;
#ifdef MOST_DEPTH
    n = n > MOST_DEPTH ? MOST_DEPTH : n;
#endif
    vec3 o = p1;
    vec3 a = p0;
    vec3 b = p2;
    vec3 u = normalize(b - o) * (length(b - o) / float(n));
    vec3 v = normalize(a - o) * (length(a - o) / float(n));
    faceNormal = normalize(gl_NormalMatrix * cross(u, v));

    for (int i = 0; i < n; i++) {
        for (int j = 0; j < n; j++) {
            if (i + j < n) {
                vec3 q0 = o + float(i) * u + float(j) * v;
                emitPoint(q0);
                emitPoint(q0 + u);
                emitPoint(q0 + v);
                if (i + j < n - 1) {
                    emitPoint(q0 + u + v);
                }
            }
            EndPrimitive();
        }
    }
}
)";

// Deliberate (tessellated-single-light): light 0, independent of nLights.
constexpr char const* TESSELATED_MAIN = R"(
void main()
{
    vec3 n = gl_NormalMatrix * displacedNormal(gl_TexCoord[0].xy / Yscale * mapSize);
    gl_FragColor = phong(0, n);
}
)";

// == The limits of geometry stages ==

constexpr int COMPONENTS = 15;  // of a vertex: gl_Position 4, gl_TexCoord[0] 4, vPos 4, vNormal 3

// The minima of OpenGL 3.2.
constexpr int LEAST_VERTICES = 256;
constexpr int LEAST_COMPONENTS = 1024;

constexpr int verticesAt(int depth) {
    return 2 * depth * depth + depth;
}

struct GeometryLimits {
    int vertices = 0;    // of one triangle
    int components = 0;  // of all of them together
};

GeometryLimits readGeometryLimits() {
    GeometryLimits limits;
    glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES, &limits.vertices);
    glGetIntegerv(GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS, &limits.components);
    return limits;
}

// The largest depth whose vertices fit both limits. Limits below the required minima are ignored.
int greatestDepth(GeometryLimits const& limits) {
    int const vertices = std::max(limits.vertices, LEAST_VERTICES);
    int const components = std::max(limits.components, LEAST_COMPONENTS);
    int const most = std::min(vertices, components / COMPONENTS);
    int depth = 1;
    while (verticesAt(depth + 1) <= most) {
        ++depth;
    }
    return depth;
}

std::string fragmentText(char const* constants, char const* main) {
    return filledIn(FRAGMENT, ShaderPart{"CONSTANTS", constants},
                    ShaderPart{"DISPLACED_NORMAL", DISPLACED_NORMAL}, ShaderPart{"MAIN", main});
}

}  // namespace

Displacement_shader::Displacement_shader() {
    _nameTextures();
}

// A copy must work without a context, so its textures are created on the first use.
Displacement_shader::Displacement_shader(Displacement_shader const& other) : Base_shader(other) {
    copy(other);
}

Displacement_shader::~Displacement_shader() {
    misuse::refuseDeadLayer("Displacement_shader::~Displacement_shader");
    delete normalsImage;
    delete displacementImage;
    if (VL_Raster != nullptr) {
        for (unsigned int const texture : {displacementTexture, normalsTexture}) {
            if (texture != 0) {
                VL_Raster->destroyTexture(texture);
            }
        }
    }
}

void Displacement_shader::copy(Displacement_shader const& other) {
    bool const isCreatedDifferently =
        tesselated != other.tesselated || displacementPath != other.displacementPath;
    _store(scale, other.scale);
    _store(tileFactor, other.tileFactor);
    _store(spare, other.spare);
    _store(depth, other.depth);
    tesselated = other.tesselated;
    displacementPath = other.displacementPath;
    if (isCreatedDifferently && created) {
        reload();
    }
}

// == Textures ==

void Displacement_shader::_nameTextures() {
    if (displacementTexture == 0 && VL_Raster != nullptr) {
        displacementTexture = VL_Raster->createTexture();
        normalsTexture = VL_Raster->createTexture();
    }
}

void Displacement_shader::setDisplacementTexture(VL_String path) {
    bool const isChanged = displacementPath != path;
    displacementPath = std::move(path);
    if (isChanged || dirty) {
        _nameTextures();
        loadTexture(displacementPath, displacementImage, displacementTexture);
    }
}

void Displacement_shader::setNormalsTexture(VL_String path) {
    bool const isChanged = normalsPath != path;
    normalsPath = std::move(path);
    if (isChanged || dirty) {
        _nameTextures();
        loadTexture(normalsPath, normalsImage, normalsTexture);
    }
}

void Displacement_shader::setDisplacementTexture(VL_Image const& image) {
    _nameTextures();
    loadTextureFloat32(image, displacementTexture);
}

void Displacement_shader::setNormalsTexture(VL_Image const& image) {
    _nameTextures();
    loadTextureFloat32(image, normalsTexture);
}

void Displacement_shader::loadTexture(VL_String const& path, VL_Image*& image, unsigned int const& texture) {
    if (VL_Raster != nullptr) {
        VL_Raster->destroyTexture(texture);  // the name is reused
    }
    delete image;
    image = new VL_Image;
    if (!image->read(path)) {
        return;
    }
    _uploadTexture(*image, texture, GL_RGBA32F_ARB, nextHighestPowerOf2(static_cast<int>(image->width())),
                   nextHighestPowerOf2(static_cast<int>(image->height())));
}

// == Parameters ==

void Displacement_shader::setBaseColor(float const& r, float const& g, float const& b, float const& a) {
    _store(baseColor, {r, g, b, a});
}

void Displacement_shader::setScale(float const& x, float const& y, float const& z) {
    _store(scale, {x, y, z});
}

void Displacement_shader::setScale(Vector3<float> const& scale) {
    setScale(scale.x, scale.y, scale.z);
}

void Displacement_shader::setTileScale(float const& u, float const& v) {
    _store(tileFactor, {u, v});
}

void Displacement_shader::setTileScale(Vector3<float> const& tiles) {
    setTileScale(tiles.x, tiles.y);
}

void Displacement_shader::setDepth(int const& depth) {
    _store(this->depth, depth);
}

void Displacement_shader::tesselate(bool const& on) {
    bool const isChanged = tesselated != on;
    tesselated = on;
    if (isChanged || dirty) {
        reload();
    }
}

void Displacement_shader::setNLights(unsigned int const& count) {
    _store(lightCount, count);
}

// == Lifecycle ==

void Displacement_shader::create() {
    if (tesselated) {
        tesselated = program->checkGeometryShaderSupport();
    }
    if (tesselated) {
        createShadersGeometry();
    } else {
        createShadersCompatible();
    }
    created = true;
    if (displacementPath.size() > 1 && dirty) {  // the size counts the terminating zero
        _nameTextures();
        loadTexture(displacementPath, displacementImage, displacementTexture);
    }
    enable(true);
    log = program->getInfoLog();
}

void Displacement_shader::createShadersCompatible() {
    _loadStages(VERTEX, fragmentText(CONSTANTS, MAIN).c_str());
    program->attach(stage1, stage2, nullptr);
}

void Displacement_shader::createShadersGeometry() {
    _loadStages(TESSELATED_VERTEX, fragmentText(TESSELATED_CONSTANTS, TESSELATED_MAIN).c_str());

    GeometryDialect const dialect = geometryDialect();
    bool const isExtension = dialect == GeometryDialect::EXT_SHADER4;
    GeometryLimits const limits = readGeometryLimits();
    std::string geometry;
    if (isExtension) {
        geometry = "#version 120\n#extension GL_EXT_geometry_shader4 : enable\n" + geometryNames(dialect);
    } else {
        int const most = greatestDepth(limits);
        auto const vertices = static_cast<unsigned int>(verticesAt(most));
        geometry = geometryPrologue(dialect, {GL_TRIANGLES, GL_TRIANGLE_STRIP, vertices}) +
                   "#define MOST_DEPTH " + std::to_string(most) + '\n';
    }
    stage3 = new Shader_gl;
    stage3->loadShaderSource(GL_GEOMETRY_SHADER_EXT, (geometry + GEOMETRY).c_str(), false);
    program->attach(stage1, stage2, stage3);
    if (isExtension) {
        GLuint const id = program->getId();
        glProgramParameteriEXT(id, GL_GEOMETRY_INPUT_TYPE_EXT, GL_TRIANGLES);
        glProgramParameteriEXT(id, GL_GEOMETRY_OUTPUT_TYPE_EXT, GL_TRIANGLE_STRIP);
        glProgramParameteriEXT(id, GL_GEOMETRY_VERTICES_OUT_EXT, limits.vertices);
    }
}

void Displacement_shader::init() {
    _useProgram();
}

void Displacement_shader::preprocess() {
    _nameTextures();
    if (dirty) {
        enable(true);
    }
    _openPass(lightCount);
    _sendFrameSize(_readFrameSize());
    program->setUniform(depthKey, depth);
    program->setUniform(baseColorKey, baseColor[0], baseColor[1], baseColor[2], baseColor[3]);
    program->setUniform(scaleKey, scale[0], scale[1], scale[2]);
    program->setUniform(tileFactorKey, tileFactor[0], tileFactor[1]);
    program->setUniformSampler("normalsMap", normalsTexture, NORMALS_UNIT);
    program->setUniformSampler("displacementMap", displacementTexture, DISPLACEMENT_UNIT);
    program->setUniform(lightCountKey, static_cast<int>(lightCount));
    log = program->getInfoLog();
}

void Displacement_shader::postprocess() {
    dirty = false;
}

void Displacement_shader::cleanup() {
    _closePass();
}

}  // namespace vellum
