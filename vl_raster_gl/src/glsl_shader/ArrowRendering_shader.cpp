#include "glsl_shader/ArrowRendering_shader.h"

#include "foundation/raster/gl_enumerations.h"

#include <ctime>
#include <iostream>
#include <string>

#include <sys/stat.h>

namespace vellum {

namespace {

// Deliberate (size-in-geometry-stage): no `uniform float size` here.
constexpr char const* VERTEX_DECLARATIONS = R"(varying mat4 matrix;
varying vec3 magnitude;
)";

constexpr char const* VERTEX_OUTPUTS = R"(    magnitude = gl_Color.rgb;
    matrix = gl_ModelViewProjectionMatrix;
    gl_Position = gl_Vertex;
)";

// A shaft and a head in one line strip, in clip space; p2 is the projected vector. size: factor of its
// length.
//
//                 p3
//     begin ------------- p2 ------------- p4
//                 p5
//
// The strip is begin, p2, p3, p4, p5, p2. The back corners of the head are the vector shortened to two thirds
// and rotated by 0.8 radians to either side; its tip is twice as far away as p2. The outputs that only the
// sphere reads are written too, as GLSL leaves outputs without a value undefined.
constexpr char const* GEOMETRY = R"(uniform float size;
STAGE_IN mat4 matrix[];
STAGE_IN vec3 magnitude[];
STAGE_OUT vec2 TexCoord;
STAGE_OUT vec3 vertex_light_position;
STAGE_OUT float radius;
STAGE_OUT vec4 eye_position;

void corner(vec4 position)
{
    TexCoord = vec2(0.0);
    vertex_light_position = vec3(0.0);
    radius = 0.0;
    eye_position = vec4(0.0);
    gl_FrontColor = FRONT_COLOR_IN(0);
    gl_Position = position;
    EmitVertex();
}

void main()
{
    const float alpha = 0.8;
    const float head = 2.0;
    vec4 eye = matrix[0] * POSITION_IN(0);
    vec4 begin = matrix[0] * POSITION_IN(0);
    vec4 end = matrix[0] * (POSITION_IN(0) + vec4(magnitude[0], 0.0));

    float c = cos(alpha);
    float s = sin(alpha);
    mat3 rot_ccw = mat3(c, s, 0.0, -s, c, 0.0, 0.0, 0.0, 1.0);
    mat3 rot_cw = mat3(c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0);
    vec3 p2 = (end - begin).xyz * size;
    vec3 t3 = 2.0 * p2 / 3.0;
    vec3 p3 = rot_ccw * t3;
    vec3 p4 = head * p2;
    vec3 p5 = rot_cw * t3;

    corner(begin);
    corner(begin + vec4(p2.xy, 0.0, 0.0));
    corner(begin + vec4(p3.xy, 0.0, 0.0));
    corner(eye + vec4(p4.xy, 0.0, 0.0));
    corner(eye + vec4(p5.xy, 0.0, 0.0));
    corner(begin + vec4(p2.xy, 0.0, 0.0));
    EndPrimitive();
}
)";

constexpr char const* FRAGMENT = R"(void main()
{
    gl_FragColor = gl_Color;
}
)";

std::string& watchedFolder() {
    static std::string folder = ".";
    return folder;
}

// One for all arrow effects, as the files are common to them.
std::time_t lastReload = 0;

}  // namespace

ArrowRendering_shader::ArrowRendering_shader(Base_shader::ProcessType type)
    : Impostor_shader(_kind(), type) {}

ArrowRendering_shader::ArrowRendering_shader(ArrowRendering_shader const& other)
    : ArrowRendering_shader(Base_shader::ProcessType(0)) {
    copy(other);
}

ArrowRendering_shader::~ArrowRendering_shader() = default;

void ArrowRendering_shader::copy(ArrowRendering_shader const& other) {
    _copy(other);
}

Impostor_shader::Kind const& ArrowRendering_shader::_kind() {
    static constexpr Kind KIND{VERTEX_DECLARATIONS,   VERTEX_OUTPUTS, true, true, GEOMETRY,
                               Primitive::LINE_STRIP, FRAGMENT,       true, 2.0F};
    return KIND;
}

void ArrowRendering_shader::reloadShaders() {
    for (char const* const name : {"arrow_vertex.c", "arrow_geometry.c", "arrow_fragment.c"}) {
        struct stat status = {};
        std::string const path = watchedFolder() + "/shaders/" + name;
        if (stat(path.c_str(), &status) == 0 && status.st_mtime > lastReload) {
            // Deliberate (unread-arrow-sources): the time counts, not the contents.
            lastReload = status.st_mtime;
            std::cout << " RELOADING!\n" << std::flush;
            reload();
            return;
        }
    }
}

void ArrowRendering_shader::setWatchedFolder(char const* path) {
    watchedFolder() = path != nullptr ? path : ".";
}

}  // namespace vellum
