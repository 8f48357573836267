#include "Model.h"

#include <algorithm>

#include <GL/gl.h>
#include <GL/glext.h>

namespace gl_spy {

namespace {

/// The number of values in one element of a uniform: 3 for "glUniform3fv", 6 for "glUniformMatrix2x3fv".
std::size_t uniformComponents(std::string const& call) {
    bool const isMatrix = call.find("Matrix") != std::string::npos;
    std::size_t const digit = call.find_first_of("1234");
    std::size_t const rows = std::size_t(call[digit] - '0');
    if (!isMatrix) {
        return rows;
    }
    return rows * (call[digit + 1] == 'x' ? std::size_t(call[digit + 2] - '0') : rows);
}

}  // namespace

// == Objects ==

unsigned int Model::create(Kind kind) {
    _alive.insert({kind, ++_lastName});
    return _lastName;
}

void Model::destroy(Kind kind, unsigned int name) {
    _alive.erase({kind, name});
    if (kind != Kind::buffer) {
        return;
    }
    _buffers.erase(name);
    _mapped.erase(name);
    for (auto& binding : _boundBuffers) {
        if (binding.second == name) {
            binding.second = 0;
        }
    }
}

// == Buffers ==

void Model::bind(unsigned int target, unsigned int name) {
    _boundBuffers[target] = name;
    if (name != 0) {
        _buffers[name];
    }
}

Model::Bytes* Model::bound(unsigned int target) {
    auto const found = _boundBuffers.find(target);
    return found == _boundBuffers.end() || found->second == 0 ? nullptr : &_buffers[found->second];
}

Model::Bytes const* Model::buffer(unsigned int name) const {
    auto const found = _buffers.find(name);
    return found == _buffers.end() ? nullptr : &found->second;
}

void* Model::map(unsigned int target) {
    Bytes* const bytes = bound(target);
    return bytes && _mapped.insert(_boundBuffers[target]).second ? bytes->data() : nullptr;
}

bool Model::unmap(unsigned int target) {
    return _mapped.erase(_boundBuffers[target]) != 0;
}

// == Shaders and programs ==

int Model::location(unsigned int program, std::string const& name) {
    if (name.rfind("gl_", 0) == 0) {
        return -1;
    }
    int const next = int(std::count_if(_locations.begin(), _locations.end(), [program](auto const& entry) {
        return entry.first.first == program;
    }));
    return _locations.insert({{program, name}, next}).first->second;
}

std::vector<double> Model::uniform(unsigned int program, int location) const {
    auto const found = _uniforms.find({program, location});
    return found == _uniforms.end() ? std::vector<double>{0} : found->second;
}

// == State ==

void Model::follow(Call const& call) {
    _tracker.follow(call);
    if (call.name == "glUseProgram" || call.name == "glUseProgramObjectARB") {
        _program = static_cast<unsigned int>(call.numbers.at(0));
    } else if (call.name == "glActiveTexture" || call.name == "glActiveTextureARB") {
        _unit = call.enums.at(0);
    } else if (call.name == "glBindTexture") {
        _textures[{_unit, call.enums.at(0)}] = static_cast<unsigned int>(call.numbers.at(0));
    } else if (call.name.rfind("glUniform", 0) == 0) {
        // Location, in the vector forms the count, then the values.
        std::size_t const first = call.name.back() == 'v' ? 2 : 1;
        std::size_t const end = std::min(call.numbers.size(), first + uniformComponents(call.name));
        auto const values = call.numbers.begin();
        if (first < end) {
            _uniforms[{_program, int(call.numbers[0])}] =
                std::vector<double>(values + std::ptrdiff_t(first), values + std::ptrdiff_t(end));
        }
    }
}

std::vector<double> Model::query(unsigned int name) const {
    auto const matrix = [this](unsigned int mode) {
        Tracker::Matrix const& m = _tracker.matrix(mode);
        return std::vector<double>(m.begin(), m.end());
    };
    auto const buffer = [this](unsigned int target) {
        auto const found = _boundBuffers.find(target);
        return std::vector<double>{double(found == _boundBuffers.end() ? 0 : found->second)};
    };
    auto const texture = [this](unsigned int target) {
        auto const found = _textures.find({_unit, target});
        return std::vector<double>{double(found == _textures.end() ? 0 : found->second)};
    };

    switch (name) {
    case GL_MATRIX_MODE:
        return {double(_tracker.matrixMode())};
    case GL_MODELVIEW_MATRIX:
        return matrix(GL_MODELVIEW);
    case GL_PROJECTION_MATRIX:
        return matrix(GL_PROJECTION);
    case GL_TEXTURE_MATRIX:
        return matrix(GL_TEXTURE);
    case GL_VIEWPORT:
        return {_tracker.viewport().begin(), _tracker.viewport().end()};
    case GL_CURRENT_PROGRAM:
        return {double(_program)};
    case GL_ACTIVE_TEXTURE:
        return {double(_unit)};
    case GL_ARRAY_BUFFER_BINDING:
        return buffer(GL_ARRAY_BUFFER);
    case GL_ELEMENT_ARRAY_BUFFER_BINDING:
        return buffer(GL_ELEMENT_ARRAY_BUFFER);
    case GL_TEXTURE_BINDING_1D:
        return texture(GL_TEXTURE_1D);
    case GL_TEXTURE_BINDING_2D:
        return texture(GL_TEXTURE_2D);
    case GL_TEXTURE_BINDING_3D:
        return texture(GL_TEXTURE_3D);
    default:
        return {0};
    }
}

}  // namespace gl_spy
