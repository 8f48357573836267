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

/// A GLSL program that links itself when it is needed and remembers its uniforms by name.
///
/// GL keeps uniforms only in a linked program and only until it is linked again, and takes them only while
/// the program is in use. This class lifts both limits: values may be set at any time, are kept by name and
/// are sent whenever the program is enabled.
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
/// Two look-ups: the kept record of a name is found in this class, by a search or at once by a UniformKey;
/// the uniform's location is asked of GL whenever a value is sent, as linking again may move it.
///
/// It owns its GL program and the kept values, never the stages; program and stages may be deleted in any
/// order. Link failures are not detected: GL refuses the program when it is used, and getInfoLog() has the
/// reason. Names and value pointers may be null: a null name is the empty one, which names no uniform.
/// Everything must be called on the thread that owns the context.
class VL_RASTER_GL_EXPORT Program_gl {
public:
    class UniformKey;  // below

    Program_gl();  ///< An empty program. GL: none.

    /// Signs off from the stages and deletes the GL program, which detaches them in GL.
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

    /// Changes the variant of a stage; the program is linked again when it is next enabled. Does nothing when
    /// the stage is null or has no such variant.
    /// GL: glDetachShader and glAttachShader for every entry of the stage.
    void setMask(Shader_gl* shader, unsigned int mask);

    // == Use ==

    /// Makes the program current (true): links it if stages changed, and sends every kept uniform in the order
    /// in which they were first set. Without stages program 0 becomes current. Or makes program 0 current
    /// (false).
    /// GL: on: glLinkProgram if needed, glUseProgram, and per uniform glGetUniformLocation and its glUniform
    /// call; off: glUseProgram(0).  State: the current program.
    void enable(bool on);

    /// As enable(false).
    void disable();

    bool isEnabled() const;      ///< Whether enable(true) came last.
    unsigned int getId() const;  ///< The GL program, 0 before the first attach().

    // == Kept uniforms ==
    // Each keeps a copy of its values under the name and sends it at once while the program is enabled.
    // Setting a name again changes its type and length too; it keeps its place in the order of sending.
    // Lengths below 0 and missing values are ignored. Sizes above 4, which GL does not have, read no values.
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
    // By a key: the same without a search for the name.
    void setUniform(UniformKey& key, int x);
    void setUniform(UniformKey& key, float x);
    void setUniform(UniformKey& key, float x, float y);
    void setUniform(UniformKey& key, float x, float y, float z);
    void setUniform(UniformKey& key, float x, float y, float z, float w);
    /// A square matrix of order 2 to 4, column by column.
    void setUniformMatrix(char const* name, int order, float const* values);

    // == Uniforms that are not kept ==

    /// Binds a texture to a unit and lets a sampler read it. Nothing is kept: effects call it in every pass.
    /// Deliberate (sampler-leaves-program-in-use): the program stays in use, and isEnabled() does not know.
    /// GL: glUseProgram, glGetUniformLocation, glActiveTexture, glBindTexture, glUniform1i.
    /// State: the current program, the active texture unit, its 2-D texture.
    void setUniformSampler(char const* name, unsigned int texture, int unit);

    /// Reads a uniform as GL has it; a name that is unknown leaves `out` alone. `out` has room for it.
    /// GL: glGetUniformLocation, glGetUniformfv or glGetUniformiv.
    void getUniform(char const* name, float* out);
    void getUniform(char const* name, int* out);

    // == Logs and support ==

    /// What the driver says about the program, at most 4095 characters. GL: glGetProgramInfoLog, if there is a
    /// GL program.
    std::string getInfoLog();

    /// The compilation logs of the attached stages, one behind the other. GL: none.
    std::string getCompilationLog();

    /// Deliberate (silent-shader-list): prints nothing; kept for callers of the interface.
    void printShadersList();

    /// Whether the driver's version is 2.1 or later; if not, a line on the standard output says so. The
    /// version is the first three characters of its text, so "10.0.0" is 10. Does not ask for
    /// GL_EXT_geometry_shader4. Without a version text the answer is true.
    /// GL: glGetString(GL_VERSION).
    bool checkGeometryShaderSupport();

private:
    friend class Shader_gl;

    struct SHADER_MASK_PAIR {
        Shader_gl* shader;  // not owned
        unsigned int mask;  // the variant that is attached
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
    // Takes the stage off the program, in GL too. Called by the stage's destructor.
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
    bool linked = false;                  // for the present stages and variants
    bool enabled = false;                 // between enable(true) and enable(false)
    using Uniforms = std::list<std::unique_ptr<UNIFORM_PAIR>>;
    Uniforms uniforms;                               // in the order in which they were first set
    Uniforms::iterator behindLast = uniforms.end();  // behind the one that was set last
    unsigned int const serial;                       // no other program of the process has it
};

/// The name of a uniform that is set in every pass. It remembers the kept record of its program, so that the
/// name is searched for once; given to another program, it searches there.
///
///     Program_gl::UniformKey sizeKey{"size"};        // a member beside the program
///     program->setUniform(sizeKey, 2.0F);
class Program_gl::UniformKey {
public:
    /// Keeps the pointer, not the text.
    explicit UniformKey(char const* name) : name(name != nullptr ? name : "") {}

private:
    friend class Program_gl;

    char const* name;              // not owned
    UNIFORM_PAIR* kept = nullptr;  // of the program with this serial; valid as long as it lives
    unsigned int serial = 0;       // 0 before the first setting, as no program has it
};

// Inline: a pass sets dozens of uniforms that are mostly kept and not sent, at a cost near that of a call.
template <class Value, std::size_t SIZE>
inline void Program_gl::_setUniform(UniformKey& key, std::array<Value, SIZE> const& values) {
    constexpr UNIFORM_PAIR::UNIFORM_TYPE TYPE =
        std::is_same_v<Value, int> ? UNIFORM_PAIR::UNIFORM_INT : UNIFORM_PAIR::UNIFORM_FLOAT;
    UNIFORM_PAIR* const kept = key.serial == serial ? key.kept : nullptr;
    // A kept record stays where it is, but its type and length are those of the last setting.
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
