#include "glsl_shader/SphereRendering_shader.h"

#include "foundation/raster/gl_enumerations.h"

namespace vellum {

namespace {

constexpr char const* VERTEX_DECLARATIONS = R"(uniform float size;
varying float vradius;
varying mat4 matrix;
)";

constexpr char const* VERTEX_OUTPUTS = R"(    vradius = size;
    matrix = gl_ModelViewProjectionMatrix;
    gl_Position = gl_Vertex;
)";

// A square around the particle in clip space, so that the perspective division makes distant spheres smaller:
//
//     2 (-1, 1)    4 (1, 1)
//     1 (-1, -1)   3 (1, -1)
//
// The light direction is fixed: the renderer's lights do not change the shading of particles. eye_position is
// the center in clip space; see docs/shader_spaces.md.
constexpr char const* GEOMETRY = R"(STAGE_IN mat4 matrix[];
STAGE_IN float vradius[];
STAGE_OUT vec2 TexCoord;
STAGE_OUT vec3 vertex_light_position;
STAGE_OUT float radius;
STAGE_OUT vec4 eye_position;

void corner(vec2 s)
{
    float halfsize = vradius[0] * 0.5;
    radius = vradius[0];
    gl_FrontColor = FRONT_COLOR_IN(0);
    vertex_light_position = normalize(vec3(1.0, 0.5, 0.5));
    eye_position = matrix[0] * POSITION_IN(0);
    TexCoord = s;
    gl_Position = eye_position + vec4(s * halfsize, 0.0, 0.0);
    EmitVertex();
}

void main()
{
    corner(vec2(-1.0, -1.0));
    corner(vec2(-1.0, 1.0));
    corner(vec2(1.0, -1.0));
    corner(vec2(1.0, 1.0));
    EndPrimitive();
}
)";

// The sphere's surface over the square; fragments outside the disc are discarded. Half-Lambert shading, 0.5
// to 1, keeps the color recognizable on the dark side. The depth is the depth of the center, moved toward the
// viewer in eye space by the height of the surface, so that spheres intersect. A point that moves along z in
// eye space moves along the third column of the projection in clip space: the way back to eye space is not
// needed.
constexpr char const* FRAGMENT = R"(varying vec2 TexCoord;
varying vec3 vertex_light_position;
varying float radius;
varying vec4 eye_position;

void main()
{
    float x = TexCoord.x;
    float y = TexCoord.y;
    float zz = 1.0 - x * x - y * y;
    if (zz <= 0.0) {
        discard;
    }
    float z = sqrt(zz);
    vec3 normal = vec3(x, y, z);
    float diffuse = max(dot(normal, vertex_light_position), 0.0) * 0.5 + 0.5;

    vec2 pos = eye_position.zw + gl_ProjectionMatrix[2].zw * (z * radius);
    gl_FragDepth = (pos.x / pos.y + 1.0) / 2.0;

    gl_FragColor = gl_Color * diffuse;
    gl_FragColor.a = 1.0;
}
)";

}  // namespace

SphereRendering_shader::SphereRendering_shader(Base_shader::ProcessType type)
    : Impostor_shader(_kind(), type) {}

SphereRendering_shader::SphereRendering_shader(SphereRendering_shader const& other)
    : SphereRendering_shader(Base_shader::ProcessType(0)) {
    copy(other);
}

SphereRendering_shader::~SphereRendering_shader() = default;

void SphereRendering_shader::copy(SphereRendering_shader const& other) {
    _copy(other);
}

Impostor_shader::Kind const& SphereRendering_shader::_kind() {
    static constexpr Kind KIND{VERTEX_DECLARATIONS,       VERTEX_OUTPUTS, false, false, GEOMETRY,
                               Primitive::TRIANGLE_STRIP, FRAGMENT,       false, 0.0F};
    return KIND;
}

}  // namespace vellum
