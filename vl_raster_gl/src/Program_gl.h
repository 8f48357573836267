#pragma once

#include "raster_gl_export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace vellum {

class Shader_gl;

/// A GLSL program that links itself on use and caches its uniforms by name.
///
/// GL stores uniforms in a linked program until it is linked again, and accepts them only while the program
/// is in use. This class removes both limits: values may be set at any time, are cached by name, and are sent
/// whenever the program is enabled.
///
/// Use:
///
///     program->attach(vertex, nullptr, fragment);
///     program->setUniform("size", 2.0F);     // kept
///     program->enable(true);                 // links, uses the program, sends "size"
///     program->setUniform("size", 3.0F);     // kept and sent
///     draw();
///     program->disable();
///
/// Two look-ups happen: this class finds the cached record of a name, by a search or directly by a
/// UniformKey; and GL is queried for the location whenever a value is sent, because linking may change it.
///
/// It owns its GL program and the cached values, but not the stages; program and stages may be deleted in any
/// order. Link failures are not detected: GL rejects the program on use, and getInfoLog() has the reason.
/// Names and value pointers may be null: a null name counts as the empty name, which no uniform has. All
/// operations must be called on the thread that owns the context.
class VL_RASTER_GL_EXPORT Program_gl {
public:
    class UniformKey;  // below

    Program_gl();  ///< An empty program. GL: none.

    /// Removes itself from the stages and deletes the GL program, which detaches them in GL.
    /// GL: glDeleteProgram, if there is a GL program.
    ~Program_gl();

    Program_gl(Program_gl const&) = delete;
    Program_gl& operator=(Program_gl const&) = delete;

    // == Stages ==

    /// Attaches the plain variant of up to three stages. A stage that is null or did not compile is skipped.
    /// The names of the parameters are conventional only: each takes a stage of any type. A stage that is
    /// attached twice has two entries, and GL refuses the second with GL_INVALID_OPERATION.
    /// GL: glCreateProgram the first time, then glAttachShader for each stage.
    void attach(Shader_gl* vertex, Shader_gl* geometry, Shader_gl* fragment);

    /// Changes the variant of a stage; the next enable(true) links the program again. Does nothing if the
    /// stage is null or does not have the variant.
    /// GL: glDetachShader and glAttachShader for every entry of the stage.
    void setMask(Shader_gl* shader, unsigned int mask);

    // == Use ==

    /// Makes the program current (true): links it if stages changed, and sends every cached uniform in the
    /// order of the first settings. Without stages program 0 becomes current. With false, makes program 0
    /// current.
    /// GL: on: glLinkProgram if needed, glUseProgram, and per uniform glGetUniformLocation and its glUniform
    /// call; off: glUseProgram(0).  State: the current program.
    void enable(bool on);

    /// The same as enable(false).
    void disable();

    bool isEnabled() const;      ///< Whether the last call was enable(true).
    unsigned int getId() const;  ///< The GL program, 0 before the first attach().

    // == Cached uniforms ==
    // Each stores a copy of its values under the name, and sends it at once while the program is enabled.
    // Setting a name again may change type and length; its position in the order of sending stays. Lengths
    // below 0 and missing values are ignored. For sizes above 4, which GL does not have, no values are read.
    // GL: glGetUniformLocation and the glUniform call of type and size, while enabled; no glUniform call for
    // sizes that GL does not have.

    void setUniform(char const* name, int x);
    void setUniform(char const* name, int x, int y);
    void setUniform(char const* name, int x, int y, int z);
    void setUniform(char const* name, int x, int y, int z, int w);
    /// `count` elements of `size` components each; size 1 to 4.
    void setUniform(char const* name, int count, int size, int const* values);
    void setUniform(char const* name, float x);
    void setUniform(char const* name, float x, float y);
    void setUniform(char const* name, float x, float y, float z);
    void setUniform(char const* name, float x, float y, float z, float w);
    /// `count` elements of `size` components each; size 1 to 4.
    void setUniform(char const* name, int count, int size, float const* values);
    // By key: the same without a search for the name.
    void setUniform(UniformKey& key, int x);
    void setUniform(UniformKey& key, float x);
    void setUniform(UniformKey& key, float x, float y);
    void setUniform(UniformKey& key, float x, float y, float z);
    void setUniform(UniformKey& key, float x, float y, float z, float w);
    /// A square matrix of order 2 to 4, column by column.
    void setUniformMatrix(char const* name, int order, float const* values);

    // == Uniforms that are not cached ==

    /// Binds a texture to a unit and assigns the unit to a sampler. Not cached: effects call it in every
    /// pass.
    /// Deliberate (sampler-leaves-program-in-use): the program stays in use, and isEnabled() does not change.
    /// GL: glUseProgram, glGetUniformLocation, glActiveTexture, glBindTexture, glUniform1i.
    /// State: the current program, the active texture unit, its 2-D texture.
    void setUniformSampler(char const* name, unsigned int texture, int unit);

    /// Reads the value of a uniform in GL; an unknown name does not change `out`, which must be large enough.
    /// GL: glGetUniformLocation, glGetUniformfv or glGetUniformiv.
    void getUniform(char const* name, float* out);
    void getUniform(char const* name, int* out);

    // == Logs and support ==

    /// The info log of the program, at most 4095 characters. GL: glGetProgramInfoLog, if there is a GL
    /// program.
    std::string getInfoLog();

    /// The compilation logs of the attached stages, concatenated. GL: none.
    std::string getCompilationLog();

    /// Deliberate (silent-shader-list): prints nothing.
    void printShadersList();

    /// Whether the driver's version is 2.1 or later; if not, prints "OpenGL 2.1 NOT ready". The version is
    /// read from its first three characters, so "10.0.0" counts as 10. GL_EXT_geometry_shader4 is not
    /// queried. Without a version string the answer is true.
    /// GL: glGetString(GL_VERSION).
    bool checkGeometryShaderSupport();

private:
    friend class Shader_gl;

    struct SHADER_MASK_PAIR {
        Shader_gl* shader;  // not owned
        unsigned int mask;  // the attached variant
    };

    struct UNIFORM_PAIR {
        enum UNIFORM_TYPE : unsigned int { UNIFORM_INT = 0, UNIFORM_FLOAT = 1, UNIFORM_MATRIX = 2 };

        std::string name;
        UNIFORM_TYPE type;
        int count;                        // elements
        int size;                         // components of an element, or the order of a matrix
        std::vector<std::uint32_t> data;  // integers or floats
    };

    void _attach(Shader_gl* shader);
    // Detaches the stage, also in GL. Called by the destructor of the stage.
    void _detach(Shader_gl* shader);
    void _link();
    template <class Value, std::size_t SIZE>
    void _setUniform(UniformKey& key, std::array<Value, SIZE> const& values);
    void _setUniform(UniformKey& key, UNIFORM_PAIR::UNIFORM_TYPE type, int size, void const* values);
    void _setUniform(char const* name, UNIFORM_PAIR::UNIFORM_TYPE type, int count, int size,
                     void const* values);
    UNIFORM_PAIR* _findUniform(char const* name);
    void _applyUniform(UNIFORM_PAIR const* uniform);  // null: all, in their order
    int _location(char const* name) const;

    unsigned int id = 0;                  // 0 before the first attach()
    std::list<SHADER_MASK_PAIR> shaders;  // in the order of attaching
    bool linked = false;                  // for the current stages and variants
    bool enabled = false;                 // between enable(true) and enable(false)
    using Uniforms = std::list<std::unique_ptr<UNIFORM_PAIR>>;
    Uniforms uniforms;                               // in the order of the first settings
    Uniforms::iterator behindLast = uniforms.end();  // after the uniform that was set last
    unsigned int const serial;                       // unique among the programs of the process
};

/// The name of a uniform that is set in every pass. It stores the cached record of its program, so that the
/// name is searched for once per program.
///
///     Program_gl::UniformKey sizeKey{"size"};        // a member beside the program
///     program->setUniform(sizeKey, 2.0F);
class Program_gl::UniformKey {
public:
    /// Stores the pointer, not the text.
    explicit UniformKey(char const* uniform) : name(uniform != nullptr ? uniform : "") {}

private:
    friend class Program_gl;

    char const* name;              // not owned
    UNIFORM_PAIR* kept = nullptr;  // of the program with this serial, and valid as long as it
    unsigned int serial = 0;       // 0, which no program has, before the first setting
};

// Inline: a pass sets dozens of uniforms, most of which are cached and not sent, so a call would dominate the
// cost.
template <class Value, std::size_t SIZE>
inline void Program_gl::_setUniform(UniformKey& key, std::array<Value, SIZE> const& values) {
    constexpr UNIFORM_PAIR::UNIFORM_TYPE TYPE =
        std::is_same_v<Value, int> ? UNIFORM_PAIR::UNIFORM_INT : UNIFORM_PAIR::UNIFORM_FLOAT;
    UNIFORM_PAIR* const kept = key.serial == serial ? key.kept : nullptr;
    // A cached record does not move, but its type and length may have changed.
    if (kept == nullptr || kept->type != TYPE || kept->count != 1 || kept->size != int{SIZE}) {
        _setUniform(key, TYPE, int{SIZE}, values.data());
        return;
    }
    std::memcpy(kept->data.data(), values.data(), sizeof(values));
    if (enabled) {
        _applyUniform(kept);
    }
}

inline void Program_gl::setUniform(UniformKey& key, int x) {
    _setUniform<int, 1>(key, {x});
}
inline void Program_gl::setUniform(UniformKey& key, float x) {
    _setUniform<float, 1>(key, {x});
}
inline void Program_gl::setUniform(UniformKey& key, float x, float y) {
    _setUniform<float, 2>(key, {x, y});
}
inline void Program_gl::setUniform(UniformKey& key, float x, float y, float z) {
    _setUniform<float, 3>(key, {x, y, z});
}
inline void Program_gl::setUniform(UniformKey& key, float x, float y, float z, float w) {
    _setUniform<float, 4>(key, {x, y, z, w});
}

}  // namespace vellum
