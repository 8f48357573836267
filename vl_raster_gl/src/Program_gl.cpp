#include "Program_gl.h"

#include "Shader_gl.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iostream>
#include <iterator>
#include <memory>
#include <string_view>

#include "internal/gl_api.h"
#include "internal/info_log.h"

namespace vellum {

namespace {

constexpr int LARGEST_SIZE = 4;  // of vectors and matrices
static_assert(sizeof(int) == sizeof(std::uint32_t) && sizeof(float) == sizeof(std::uint32_t),
              "uniforms are 32-bit values");

// Switches, not tables of functions: a user's effect sends some thirty uniforms in a pass, and calls through
// a table can be measured.

void sendInts(int size, GLint location, GLsizei count, GLint const* values) {
    switch (size) {
    case 1:
        glUniform1iv(location, count, values);
        break;
    case 2:
        glUniform2iv(location, count, values);
        break;
    case 3:
        glUniform3iv(location, count, values);
        break;
    case 4:
        glUniform4iv(location, count, values);
        break;
    default:
        break;
    }
}

void sendFloats(int size, GLint location, GLsizei count, GLfloat const* values) {
    switch (size) {
    case 1:
        glUniform1fv(location, count, values);
        break;
    case 2:
        glUniform2fv(location, count, values);
        break;
    case 3:
        glUniform3fv(location, count, values);
        break;
    case 4:
        glUniform4fv(location, count, values);
        break;
    default:
        break;
    }
}

void sendMatrices(int order, GLint location, GLsizei count, GLfloat const* values) {
    switch (order) {
    case 2:
        glUniformMatrix2fv(location, count, GL_FALSE, values);
        break;
    case 3:
        glUniformMatrix3fv(location, count, GL_FALSE, values);
        break;
    case 4:
        glUniformMatrix4fv(location, count, GL_FALSE, values);
        break;
    default:
        break;
    }
}

// The number of 32-bit values of a uniform. Sizes that GL does not have are never sent, so no values are read
// for them: a wrong size must not read beyond the caller's values.
std::size_t valueCount(bool isMatrix, int count, int size) {
    if (size > LARGEST_SIZE) {
        return 0;
    }
    std::size_t const elements = static_cast<std::size_t>(count) * static_cast<std::size_t>(size);
    return isMatrix ? elements * elements : elements;
}

unsigned int nextSerial() {
    static unsigned int last = 0;
    return ++last;
}

}  // namespace

Program_gl::Program_gl() : serial(nextSerial()) {}

Program_gl::~Program_gl() {
    for (SHADER_MASK_PAIR const& entry : shaders) {
        entry.shader->dettach(this);
    }
    if (id != 0) {
        glDeleteProgram(id);
        id = 0;
    }
}

// == Stages ==

void Program_gl::attach(Shader_gl* vertex, Shader_gl* geometry, Shader_gl* fragment) {
    if (id == 0) {
        id = glCreateProgram();
    }
    for (Shader_gl* shader : {vertex, geometry, fragment}) {
        if (shader != nullptr && shader->getID(0) != 0) {
            _attach(shader);
        }
    }
}

void Program_gl::_attach(Shader_gl* shader) {
    linked = false;
    shader->programs.push_back(this);
    shaders.push_back({shader, 0});
    glAttachShader(id, shader->getID(0));
}

// The program stays linked: GL uses the linked program until it is linked again.
void Program_gl::_detach(Shader_gl* shader) {
    for (SHADER_MASK_PAIR const& entry : shaders) {
        if (entry.shader == shader) {
            glDetachShader(id, shader->getID(entry.mask));
        }
    }
    shaders.remove_if([shader](SHADER_MASK_PAIR const& entry) { return entry.shader == shader; });
}

void Program_gl::setMask(Shader_gl* shader, unsigned int mask) {
    if (shader == nullptr || shader->getID(mask) == 0) {
        return;
    }
    linked = false;
    for (SHADER_MASK_PAIR& entry : shaders) {
        if (entry.shader == shader) {
            glDetachShader(id, shader->getID(entry.mask));
            entry.mask = mask;
            glAttachShader(id, shader->getID(mask));
        }
    }
}

void Program_gl::_link() {
    if (id != 0 && !linked) {
        // Deliberate (link-is-not-checked): a program that does not link counts as linked.
        glLinkProgram(id);
        linked = true;
    }
}

// == Use ==

void Program_gl::enable(bool on) {
    if (!on) {
        disable();
        return;
    }
    _link();
    glUseProgram(id);
    _applyUniform(nullptr);
    enabled = true;
}

void Program_gl::disable() {
    glUseProgram(0);
    enabled = false;
}

bool Program_gl::isEnabled() const {
    return enabled;
}

unsigned int Program_gl::getId() const {
    return id;
}

// == Cached uniforms ==

void Program_gl::setUniform(char const* name, int x) {
    _setUniform(name, UNIFORM_PAIR::UNIFORM_INT, 1, 1, &x);
}

void Program_gl::setUniform(char const* name, int x, int y) {
    std::array<int, 2> const values{x, y};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_INT, 1, 2, values.data());
}

void Program_gl::setUniform(char const* name, int x, int y, int z) {
    std::array<int, 3> const values{x, y, z};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_INT, 1, 3, values.data());
}

void Program_gl::setUniform(char const* name, int x, int y, int z, int w) {
    std::array<int, 4> const values{x, y, z, w};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_INT, 1, 4, values.data());
}

void Program_gl::setUniform(char const* name, int count, int size, int const* values) {
    _setUniform(name, UNIFORM_PAIR::UNIFORM_INT, count, size, values);
}

void Program_gl::setUniform(char const* name, float x) {
    _setUniform(name, UNIFORM_PAIR::UNIFORM_FLOAT, 1, 1, &x);
}

void Program_gl::setUniform(char const* name, float x, float y) {
    std::array<float, 2> const values{x, y};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_FLOAT, 1, 2, values.data());
}

void Program_gl::setUniform(char const* name, float x, float y, float z) {
    std::array<float, 3> const values{x, y, z};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_FLOAT, 1, 3, values.data());
}

void Program_gl::setUniform(char const* name, float x, float y, float z, float w) {
    std::array<float, 4> const values{x, y, z, w};
    _setUniform(name, UNIFORM_PAIR::UNIFORM_FLOAT, 1, 4, values.data());
}

void Program_gl::setUniform(char const* name, int count, int size, float const* values) {
    _setUniform(name, UNIFORM_PAIR::UNIFORM_FLOAT, count, size, values);
}

void Program_gl::setUniformMatrix(char const* name, int order, float const* values) {
    _setUniform(name, UNIFORM_PAIR::UNIFORM_MATRIX, 1, order, values);
}

void Program_gl::_setUniform(char const* name, UNIFORM_PAIR::UNIFORM_TYPE type, int count, int size,
                             void const* values) {
    if (count < 0 || size < 0 || values == nullptr) {
        return;
    }
    char const* const wanted = name != nullptr ? name : "";

    UNIFORM_PAIR* uniform = _findUniform(wanted);
    if (uniform == nullptr) {
        uniforms.push_back(std::make_unique<UNIFORM_PAIR>(UNIFORM_PAIR{wanted, type, 0, 0, {}}));
        uniform = uniforms.back().get();
    }

    // Values of the same length overwrite the old ones: effects send the same uniforms in every pass, and a
    // pass should not allocate.
    uniform->data.resize(valueCount(type == UNIFORM_PAIR::UNIFORM_MATRIX, count, size));
    if (!uniform->data.empty()) {
        std::memcpy(uniform->data.data(), values, uniform->data.size() * sizeof(std::uint32_t));
    }
    uniform->type = type;
    uniform->count = count;
    uniform->size = size;

    if (enabled) {
        _applyUniform(uniform);
    }
}

void Program_gl::_setUniform(UniformKey& key, UNIFORM_PAIR::UNIFORM_TYPE type, int size, void const* values) {
    _setUniform(key.name, type, 1, size, values);
    key.kept = _findUniform(key.name);
    key.serial = serial;
}

// Effects set the same uniforms in the same order in every pass, so the search begins after the uniform that
// was set last. Null if no cached uniform has the name.
Program_gl::UNIFORM_PAIR* Program_gl::_findUniform(char const* name) {
    auto const find = [this, name](Uniforms::iterator const& begin, Uniforms::iterator const& end) {
        auto const found = std::find_if(begin, end, [name](std::unique_ptr<UNIFORM_PAIR> const& each) {
            return std::strcmp(each->name.c_str(), name) == 0;
        });
        if (found == end) {
            return false;
        }
        behindLast = std::next(found);
        return true;
    };
    if (find(behindLast, uniforms.end()) || find(uniforms.begin(), behindLast)) {
        return std::prev(behindLast)->get();
    }
    return nullptr;
}

void Program_gl::_applyUniform(UNIFORM_PAIR const* uniform) {
    if (uniform == nullptr) {
        for (std::unique_ptr<UNIFORM_PAIR> const& each : uniforms) {
            _applyUniform(each.get());
        }
        return;
    }
    GLint const location = _location(uniform->name.c_str());
    void const* const values = uniform->data.data();
    switch (uniform->type) {
    case UNIFORM_PAIR::UNIFORM_INT:
        sendInts(uniform->size, location, uniform->count, static_cast<GLint const*>(values));
        break;
    case UNIFORM_PAIR::UNIFORM_FLOAT:
        sendFloats(uniform->size, location, uniform->count, static_cast<GLfloat const*>(values));
        break;
    case UNIFORM_PAIR::UNIFORM_MATRIX:
        sendMatrices(uniform->size, location, uniform->count, static_cast<GLfloat const*>(values));
        break;
    }
}

int Program_gl::_location(char const* name) const {
    return glGetUniformLocation(id, name != nullptr ? name : "");
}

// == Uniforms that are not cached ==

void Program_gl::setUniformSampler(char const* name, unsigned int texture, int unit) {
    glUseProgram(id);
    GLint const location = _location(name);
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    glUniform1i(location, unit);
}

void Program_gl::getUniform(char const* name, float* out) {
    glGetUniformfv(id, _location(name), out);
}

void Program_gl::getUniform(char const* name, int* out) {
    glGetUniformiv(id, _location(name), out);
}

// == Logs and support ==

std::string Program_gl::getInfoLog() {
    static std::array<char, LOG_LENGTH> log;
    log[0] = '\0';  // in case the driver reports an error and writes no text
    if (id != 0) {
        glGetProgramInfoLog(id, LOG_LENGTH, nullptr, log.data());
    }
    return log.data();
}

std::string Program_gl::getCompilationLog() {
    std::string all;
    for (SHADER_MASK_PAIR const& entry : shaders) {
        all += entry.shader->getCompilationLog();
    }
    return all;
}

void Program_gl::printShadersList() {}

bool Program_gl::checkGeometryShaderSupport() {
    GLubyte const* const text = glGetString(GL_VERSION);
    if (text == nullptr) {
        return true;
    }
    // Not atof, whose decimal point depends on the locale.
    std::string_view const number = std::string_view(reinterpret_cast<char const*>(text)).substr(0, 3);
    double version = 0;
    std::from_chars(number.data(), number.data() + number.size(), version);
    if (2.1 > version) {
        std::cout << "OpenGL 2.1 NOT ready";
        return false;
    }
    return true;
}

}  // namespace vellum
