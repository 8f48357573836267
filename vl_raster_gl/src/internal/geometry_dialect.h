#pragma once

#include <string>

namespace vellum {

class Program_gl;

/// The language of geometry stages on a driver.
enum class GeometryDialect {
    EXT_SHADER4,  ///< GLSL 1.20 with GL_EXT_geometry_shader4; the primitives are parameters of the program
    GLSL_150  ///< GLSL 1.50 of the compatibility profile; the primitives are layout qualifiers in the text
};

/// Input and output of a geometry stage.
struct GeometryLayout {
    unsigned int input;        // GL_POINTS, GL_LINES or GL_TRIANGLES
    unsigned int output;       // GL_POINTS, GL_LINE_STRIP or GL_TRIANGLE_STRIP
    unsigned int maxVertices;  // output per input primitive
};

/// The dialect of the driver: the extension if it is listed, else GLSL 1.50 from version 3.2 on. A driver
/// with neither gets the extension's text, and rejects it with a log.
/// GL: isExtensionSupported(), and glGetString(GL_VERSION) if it is not.
GeometryDialect geometryDialect();

/// Whether the driver supports one of the dialects. GL: as geometryDialect().
bool takesGeometryStages();

/// The first lines of a geometry stage; geometryNames() comes last.
std::string geometryPrologue(GeometryDialect dialect, GeometryLayout const& layout);

/// Names for texts that compile in both dialects:
///
///     STAGE_IN vec4 a[];          an input, one per vertex of the primitive
///     STAGE_OUT vec4 b;           an output, undefined again after each EmitVertex()
///     POSITION_IN(i)              gl_Position of a vertex
///     FRONT_COLOR_IN(i)           gl_FrontColor of a vertex
///     TEXTURE_COORDINATE_IN(i)    gl_TexCoord[0] of a vertex
std::string geometryNames(GeometryDialect dialect);

/// A pass-through for triangles: position, first texture coordinate, colors and fog. In the dialect of the
/// extension it is Shader_gl::geometryPassThrough().
std::string geometryPassThrough(GeometryDialect dialect);

/// Sets the layout of a program after its stages are attached and before it is linked.
/// GL: programParameterI() for input, output and vertices, in the dialect of the extension while there is a
/// render layer; nothing in the other.
void setGeometryLayout(GeometryDialect dialect, GeometryLayout const& layout, Program_gl& program);

}  // namespace vellum
