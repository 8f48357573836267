#pragma once

#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <string>
#include <vector>

/// The calls that stages and programs make, as a recording shows them.
namespace vellum {

constexpr unsigned int FRAGMENT_STAGE = 35632;
constexpr unsigned int VERTEX_STAGE = 35633;
constexpr unsigned int GEOMETRY_STAGE = 36313;

/// What was called, but for strings that were asked for: the layer keeps what they say. Where a log and its
/// length go is left out.
inline Texts callsOf(gl_spy::Recording const& recording) {
    Texts texts;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glGetShaderInfoLog" || call.name == "glGetProgramInfoLog") {
            texts.push_back(call.name + "(" + call.arguments.at(0) + ", " + call.arguments.at(1) + ")");
        } else if (call.name != "glGetString") {
            texts.push_back(call.text());
        }
    }
    return texts;
}

inline std::string numbered(std::string const& name, unsigned int number) {
    return name + "(" + std::to_string(number) + ")";
}

inline std::string paired(std::string const& name, unsigned int program, unsigned int shader) {
    return name + "(" + std::to_string(program) + ", " + std::to_string(shader) + ")";
}

/// A text as calls show it.
inline std::string quoted(std::string const& text) {
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

/// A variant of a stage is made and compiled, and the layer looks whether it may print a log.
inline Texts variantMade(unsigned int shader, std::string const& type, std::string const& text) {
    std::string const id = std::to_string(shader);
    return {"glCreateShader(" + type + ")",
            "glShaderSource(" + id + ", 1, {" + quoted(text) + "}, null)",
            "glCompileShader(" + id + ")",
            "glGetShaderiv(" + id + ", GL_COMPILE_STATUS, pointer)",
            "glGetShaderiv(" + id + ", GL_COMPILE_STATUS, pointer)",
            "glGetShaderiv(" + id + ", GL_INFO_LOG_LENGTH, pointer)"};
}

/// A uniform is looked up and sent: `call` without its location, "glUniform1fv" and "1, {2}".
inline Texts uniformSent(unsigned int program, std::string const& name, unsigned int location,
                         std::string const& call, std::string const& values) {
    return {"glGetUniformLocation(" + std::to_string(program) + ", " + quoted(name) + ")",
            call + "(" + std::to_string(location) + ", " + values + ")"};
}

}  // namespace vellum
