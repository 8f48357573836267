#include "internal/geometry_dialect.h"

#include "Program_gl.h"
#include "Shader_gl.h"

#include "foundation/raster/Core_RL.h"

#include <cstdlib>

#include "internal/gl_api.h"

namespace vellum {

namespace {

// Through the render layer, so that a subclass can hide the extension and test the other dialect.
bool isExtensionListed() {
    return VL_Raster != nullptr && VL_Raster->isExtensionSupported("GL_EXT_geometry_shader4");
}

// Two integers and not one decimal number: 3.10 is later than 3.2.
bool hasVersion32() {
    auto const* const text = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    if (text == nullptr) {
        return false;
    }
    char* end = nullptr;
    long const major = std::strtol(text, &end, 10);
    long const minor = *end == '.' ? std::strtol(end + 1, nullptr, 10) : 0;
    return major > 3 || (major == 3 && minor >= 2);
}

char const* primitiveName(unsigned int primitive) {
    switch (primitive) {
    case GL_LINES:
        return "lines";
    case GL_LINE_STRIP:
        return "line_strip";
    case GL_TRIANGLES:
        return "triangles";
    case GL_TRIANGLE_STRIP:
        return "triangle_strip";
    default:
        return "points";
    }
}

}  // namespace

GeometryDialect geometryDialect() {
    // A driver with neither is offered the extension's text, so that its log says what it lacks.
    return !isExtensionListed() && hasVersion32() ? GeometryDialect::GLSL_150 : GeometryDialect::EXT_SHADER4;
}

bool takesGeometryStages() {
    return isExtensionListed() || hasVersion32();
}

std::string geometryPrologue(GeometryDialect dialect, GeometryLayout const& layout) {
    std::string const lines = dialect == GeometryDialect::EXT_SHADER4
                                  ? "#version 120\n#extension GL_EXT_geometry_shader4: enable\n"
                                  : std::string("#version 150 compatibility\nlayout(") +
                                        primitiveName(layout.input) + ") in;\nlayout(" +
                                        primitiveName(layout.output) +
                                        ", max_vertices = " + std::to_string(layout.maxVertices) + ") out;\n";
    return lines + geometryNames(dialect);
}

std::string geometryNames(GeometryDialect dialect) {
    if (dialect == GeometryDialect::EXT_SHADER4) {
        return R"(#define STAGE_IN varying in
#define STAGE_OUT varying out
#define POSITION_IN(i) gl_PositionIn[i]
#define FRONT_COLOR_IN(i) gl_FrontColorIn[i]
#define TEXTURE_COORDINATE_IN(i) gl_TexCoordIn[i][0]
)";
    }
    return R"(#define STAGE_IN in
#define STAGE_OUT out
#define POSITION_IN(i) gl_in[i].gl_Position
#define FRONT_COLOR_IN(i) gl_in[i].gl_FrontColor
#define TEXTURE_COORDINATE_IN(i) gl_in[i].gl_TexCoord[0]
)";
}

std::string geometryPassThrough(GeometryDialect dialect) {
    if (dialect == GeometryDialect::EXT_SHADER4) {
        // The interface fixes this text, so it is not written with the common names.
        return Shader_gl::geometryPassThrough();
    }
    return geometryPrologue(dialect, {GL_TRIANGLES, GL_TRIANGLE_STRIP, 3}) + R"(
void main()
{
    for (int i = 0; i < 3; ++i) {
        gl_Position = gl_in[i].gl_Position;
        gl_TexCoord[0] = gl_in[i].gl_TexCoord[0];
        gl_FrontColor = gl_in[i].gl_FrontColor;
        gl_BackColor = gl_in[i].gl_BackColor;
        gl_FrontSecondaryColor = gl_in[i].gl_FrontSecondaryColor;
        gl_BackSecondaryColor = gl_in[i].gl_BackSecondaryColor;
        gl_FogFragCoord = gl_in[i].gl_FogFragCoord;
        EmitVertex();
    }
    EndPrimitive();
}
)";
}

void setGeometryLayout(GeometryDialect dialect, GeometryLayout const& layout, Program_gl& program) {
    if (dialect != GeometryDialect::EXT_SHADER4 || VL_Raster == nullptr) {
        return;
    }
    // Parameters count from the next link on. The other dialect has them in the text.
    unsigned int const id = program.getId();
    VL_Raster->programParameterI(id, ShaderParameterName::GEOMETRY_INPUT_TYPE_EXT,
                                 static_cast<int>(layout.input));
    VL_Raster->programParameterI(id, ShaderParameterName::GEOMETRY_OUTPUT_TYPE_EXT,
                                 static_cast<int>(layout.output));
    VL_Raster->programParameterI(id, ShaderParameterName::GEOMETRY_VERTICES_OUT_EXT,
                                 static_cast<int>(layout.maxVertices));
}

}  // namespace vellum
