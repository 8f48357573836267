#include "Notes.h"

#include <unordered_map>

#include <GL/glext.h>
#include <GL/glu.h>

namespace gl_spy {

namespace {

std::unordered_map<GLenum, char const*> const& knownNames() {
#define GL_NAME(name) {name, #name},
    static std::unordered_map<GLenum, char const*> const names{
#include "enum_names.inc"
    };
#undef GL_NAME
    return names;
}

std::string hexadecimal(GLenum value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value);
    return text;
}

bool takesEnum(GLenum parameter) {
    switch (parameter) {
    case GL_TEXTURE_MIN_FILTER:
    case GL_TEXTURE_MAG_FILTER:
    case GL_TEXTURE_WRAP_S:
    case GL_TEXTURE_WRAP_T:
    case GL_TEXTURE_WRAP_R:
    case GL_TEXTURE_COMPARE_MODE:
    case GL_TEXTURE_COMPARE_FUNC:
    case GL_DEPTH_TEXTURE_MODE:
    case GL_TEXTURE_ENV_MODE:
    case GL_COMBINE_RGB:
    case GL_COMBINE_ALPHA:
    case GL_SOURCE0_RGB:
    case GL_SOURCE1_RGB:
    case GL_SOURCE2_RGB:
    case GL_SOURCE0_ALPHA:
    case GL_SOURCE1_ALPHA:
    case GL_SOURCE2_ALPHA:
    case GL_OPERAND0_RGB:
    case GL_OPERAND1_RGB:
    case GL_OPERAND2_RGB:
    case GL_OPERAND0_ALPHA:
    case GL_OPERAND1_ALPHA:
    case GL_OPERAND2_ALPHA:
    case GL_TEXTURE_GEN_MODE:
    case GL_FOG_MODE:
    case GL_FOG_COORD_SRC:
    case GL_LIGHT_MODEL_COLOR_CONTROL:
    case GL_POINT_SPRITE_COORD_ORIGIN:
        return true;
    default:
        return false;
    }
}

bool takesPrimitive(GLenum parameter) {
    return parameter == GL_GEOMETRY_INPUT_TYPE_EXT || parameter == GL_GEOMETRY_OUTPUT_TYPE_EXT;
}

bool takesBoolean(GLenum parameter) {
    return parameter == GL_COORD_REPLACE || parameter == GL_GENERATE_MIPMAP;
}

std::string inQuotes(std::string const& text) {
    std::string result = "\"";
    for (char const c : text) {
        if (c == '\n') {
            result += "\\n";
        } else if (c == '"' || c == '\\') {
            (result += '\\') += c;
        } else {
            result += c;
        }
    }
    return result + '"';
}

}  // namespace

std::string enumName(unsigned int value) {
    auto const found = knownNames().find(value);
    return found == knownNames().end() ? hexadecimal(value) : found->second;
}

std::string primitiveName(GLenum mode) {
    static constexpr char const* names[] = {"GL_POINTS",
                                            "GL_LINES",
                                            "GL_LINE_LOOP",
                                            "GL_LINE_STRIP",
                                            "GL_TRIANGLES",
                                            "GL_TRIANGLE_STRIP",
                                            "GL_TRIANGLE_FAN",
                                            "GL_QUADS",
                                            "GL_QUAD_STRIP",
                                            "GL_POLYGON",
                                            "GL_LINES_ADJACENCY",
                                            "GL_LINE_STRIP_ADJACENCY",
                                            "GL_TRIANGLES_ADJACENCY",
                                            "GL_TRIANGLE_STRIP_ADJACENCY"};
    return mode < std::size(names) ? names[mode] : hexadecimal(mode);
}

std::string factorName(GLenum factor) {
    return factor == GL_ZERO ? "GL_ZERO" : factor == GL_ONE ? "GL_ONE" : enumName(factor);
}

std::size_t parameterCount(GLenum parameter) {
    switch (parameter) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_EMISSION:
    case GL_AMBIENT_AND_DIFFUSE:
    case GL_POSITION:
    case GL_LIGHT_MODEL_AMBIENT:
    case GL_FOG_COLOR:
    case GL_TEXTURE_ENV_COLOR:
    case GL_TEXTURE_BORDER_COLOR:
    case GL_OBJECT_PLANE:
    case GL_EYE_PLANE:
        return 4;
    case GL_SPOT_DIRECTION:
    case GL_COLOR_INDEXES:
    case GL_POINT_DISTANCE_ATTENUATION:
        return 3;
    default:
        return 1;
    }
}

std::string parameterName(GLenum parameter, double value) {
    if (!(value >= 0 && value <= 0xFFFFF) || value != double(GLenum(value))) {
        return "";
    }
    GLenum const number = GLenum(value);
    if (takesPrimitive(parameter) && number <= 0xD) {
        return primitiveName(number);
    }
    if (takesBoolean(parameter) && number <= 1) {
        return number ? "GL_TRUE" : "GL_FALSE";
    }
    if (takesEnum(parameter) && knownNames().count(number)) {
        return knownNames().at(number);
    }
    return "";
}

void Notes::strings(std::vector<std::string> const& texts, bool isArray) {
    std::string list;
    for (std::string const& text : texts) {
        list += (list.empty() ? "" : ", ") + inQuotes(text);
        _call.strings.push_back(text);
    }
    _call.arguments.push_back(isArray ? "{" + list + "}" : list);
}

}  // namespace gl_spy
