#include "glsl_shader/PointRendering_shader.h"

#include "foundation/raster/gl_enumerations.h"

namespace vellum {

namespace {

constexpr char const* VERTEX_DECLARATIONS = R"(uniform float size;
varying float vradius;
)";

constexpr char const* VERTEX_OUTPUTS = R"(    vradius = size;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
)";

constexpr char const* FRAGMENT = R"(void main()
{
    gl_FragColor = gl_Color;
}
)";

}  // namespace

PointRendering_shader::PointRendering_shader(Base_shader::ProcessType type)
    : Impostor_shader(_kind(), type) {}

PointRendering_shader::PointRendering_shader(PointRendering_shader const& other)
    : PointRendering_shader(Base_shader::ProcessType(0)) {
    copy(other);
}

PointRendering_shader::~PointRendering_shader() = default;

void PointRendering_shader::copy(PointRendering_shader const& other) {
    _copy(other);
}

Impostor_shader::Kind const& PointRendering_shader::_kind() {
    static constexpr Kind KIND{VERTEX_DECLARATIONS, VERTEX_OUTPUTS, false, false, nullptr,
                               Primitive::POINTS,   FRAGMENT,       false, 0.0F};
    return KIND;
}

}  // namespace vellum
