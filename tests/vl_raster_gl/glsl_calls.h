#pragma once

#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <string>
#include <vector>

/// The calls of shaders and programs as recordings show them.
namespace vellum {

constexpr unsigned int FRAGMENT_STAGE = 35632;
constexpr unsigned int VERTEX_STAGE = 35633;
constexpr unsigned int GEOMETRY_STAGE = 36313;

/// The calls without glGetString, whose results the layer caches, and without the addresses that logs are
/// written to.
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

/// A string argument as calls show it: quoted and escaped.
inline std::string inQuotes(std::string const& text) {
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

/// Creates and compiles a variant; the layer checks whether there is a log to print.
inline Texts variantMade(unsigned int shader, std::string const& type, std::string const& text) {
    std::string const id = std::to_string(shader);
    return {"glCreateShader(" + type + ")",
            "glShaderSource(" + id + ", 1, {" + inQuotes(text) + "}, null)",
            "glCompileShader(" + id + ")",
            "glGetShaderiv(" + id + ", GL_COMPILE_STATUS, pointer)",
            "glGetShaderiv(" + id + ", GL_COMPILE_STATUS, pointer)",
            "glGetShaderiv(" + id + ", GL_INFO_LOG_LENGTH, pointer)"};
}

/// Looks a uniform up and sends it, for example by the call "glUniform1fv" with "1, {2}" behind its location.
inline Texts uniformSent(unsigned int program, std::string const& name, unsigned int location,
                         std::string const& call, std::string const& values) {
    return {"glGetUniformLocation(" + std::to_string(program) + ", " + inQuotes(name) + ")",
            call + "(" + std::to_string(location) + ", " + values + ")"};
}

}  // namespace vellum
