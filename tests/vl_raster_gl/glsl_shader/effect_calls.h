#pragma once

#include "tests/gl_spy/gl_spy.h"

#include <string>
#include <vector>

namespace vellum {

/// The uniforms of a recording in the order of their sending: "Depth glUniform1fv {0.1}".
inline std::vector<std::string> uniformsSent(gl_spy::Recording const& recording) {
    std::vector<std::string> sent;
    std::string name;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glGetUniformLocation") {
            name = call.strings.at(0);
        } else if (call.name.rfind("glUniform", 0) == 0) {
            sent.push_back(name + " " + call.name + " " + call.arguments.back());
        }
    }
    return sent;
}

/// The texts of all loaded shaders, in order.
inline std::vector<std::string> stageTexts(gl_spy::Recording const& recording) {
    std::vector<std::string> texts;
    for (gl_spy::Call const& call : recording.named("glShaderSource")) {
        texts.push_back(call.strings.at(0));
    }
    return texts;
}

/// The types of all created shaders, in order: "GL_VERTEX_SHADER".
inline std::vector<std::string> stageKinds(gl_spy::Recording const& recording) {
    std::vector<std::string> kinds;
    for (gl_spy::Call const& call : recording.named("glCreateShader")) {
        kinds.push_back(call.arguments.at(0));
    }
    return kinds;
}

/// Runs one pass, without a drawing.
template <class Effect>
void runPass(Effect& effect) {
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
}

/// Whether the next pass sends the uniforms. Clears the recording first.
template <class Effect>
bool isSent(Effect& effect, gl_spy::Recording& recording) {
    recording.clear();
    runPass(effect);
    return recording.count("glUniform1fv") != 0;
}

}  // namespace vellum
