#pragma once

#include "Tracker.h"

#include <set>

namespace gl_spy {

/// Answers when there is no driver: keeps objects, bindings and the state that the Tracker follows.
class Model {
public:
    enum class Kind { buffer, texture, query, list, shader, program };

    using Bytes = std::vector<unsigned char>;

    /// Bytes of a buffer before the first write.
    static constexpr unsigned char unwritten = 0xA5;

    // == Objects ==

    unsigned int create(Kind kind);
    void destroy(Kind kind, unsigned int name);
    bool isAlive(Kind kind, unsigned int name) const { return _alive.count({kind, name}) != 0; }
    std::size_t liveObjects() const { return _alive.size(); }

    // == Buffers ==

    /// The buffer bound to the target; null when none is.
    Bytes* bound(unsigned int target);
    Bytes const* buffer(unsigned int name) const;
    void bind(unsigned int target, unsigned int name);

    /// Memory for writing; null when no buffer is bound or it is mapped already.
    void* map(unsigned int target);

    /// False when it was not mapped.
    bool unmap(unsigned int target);

    // == Shaders and programs ==

    std::string& source(unsigned int shader) { return _sources[shader]; }
    unsigned int& shaderType(unsigned int shader) { return _shaderTypes[shader]; }

    /// The same name has the same location in one program; -1 for what GL reserves ("gl_...").
    int location(unsigned int program, std::string const& name);

    /// The values that glUniform set last; {0} before.
    std::vector<double> uniform(unsigned int program, int location) const;

    // == State ==

    void follow(Call const& call);

    /// The answers of glGetIntegerv and its variants.
    std::vector<double> query(unsigned int name) const;

private:
    Tracker _tracker;
    unsigned int _lastName = 0;
    std::set<std::pair<Kind, unsigned int>> _alive;

    std::map<unsigned int, Bytes> _buffers;                                   // by name
    std::map<unsigned int, unsigned int> _boundBuffers;                       // by target
    std::set<unsigned int> _mapped;                                           // names of buffers
    std::map<unsigned int, std::string> _sources;                             // by shader
    std::map<unsigned int, unsigned int> _shaderTypes;                        // by shader
    std::map<std::pair<unsigned int, std::string>, int> _locations;           // by program and name
    std::map<std::pair<unsigned int, int>, std::vector<double>> _uniforms;    // by program and location
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> _textures;  // by unit and target
    unsigned int _program = 0;
    unsigned int _unit = 0x84C0;  // GL_TEXTURE0
};

}  // namespace gl_spy
