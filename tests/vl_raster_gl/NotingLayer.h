#pragma once

#include "Core_RL_GL.h"

#include <string>
#include <vector>

namespace vellum {

/// A render layer that notes which of its operations the library calls, and carries them out.
/// Use: construct it after the driver's script; it becomes the render layer. Then compare `requests`, or
/// those of one operation: `asked("createTexture")`.
class NotingLayer : public Core_RL_GL {
public:
    using Core_RL_GL::checkShaderCompilationErrors;
    using Core_RL_GL::createTexture;
    using Core_RL_GL::getError;

    unsigned int createTexture() override {
        requests.emplace_back("createTexture()");
        return Core_RL_GL::createTexture();
    }
    void destroyTexture(unsigned int const& texture) override {
        _note("destroyTexture", {std::to_string(texture)});
        Core_RL_GL::destroyTexture(texture);
    }
    void programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) override {
        _note("programParameterI",
              {std::to_string(program), std::to_string(parameter), std::to_string(value)});
        Core_RL_GL::programParameterI(program, parameter, value);
    }
    void checkShaderCompilationErrors(unsigned int shader, char const* name) override {
        _note("checkShaderCompilationErrors", {std::to_string(shader), name});
        Core_RL_GL::checkShaderCompilationErrors(shader, name);
    }
    bool getError(char const* where, int line) override {
        _note("getError", {where, std::to_string(line)});
        return Core_RL_GL::getError(where, line);
    }

    /// The requests whose operation begins like this, in order: "destroyTexture(70)".
    std::vector<std::string> asked(std::string const& operation) const {
        std::vector<std::string> found;
        for (std::string const& request : requests) {
            if (request.rfind(operation, 0) == 0) {
                found.push_back(request);
            }
        }
        return found;
    }

    std::vector<std::string> requests;  ///< all of them, in order

private:
    void _note(std::string const& operation, std::vector<std::string> const& arguments) {
        std::string text;
        for (std::string const& argument : arguments) {
            text += (text.empty() ? "" : ", ") + argument;
        }
        requests.push_back(operation + "(" + text + ")");
    }
};

}  // namespace vellum
