#pragma once

#include "gl_spy.h"

#include <map>

namespace gl_spy {

/// Follows the state that GL keeps on behalf of the calls noted: matrices, current values, names, viewport.
/// It knows a small part of GL, enough to say where a vertex lands and what it looks like.
class Tracker {
public:
    using Matrix = std::array<double, 16>;  ///< column by column, as GL has it

    Tracker();

    /// Changes the state as the call does; calls that it does not know change nothing.
    void follow(Call const& call);

    unsigned int matrixMode() const { return _saved.matrixMode; }
    std::array<int, 4> const& viewport() const { return _saved.viewport; }

    /// The top matrix of a stack: GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE (one for all units).
    Matrix const& matrix(unsigned int mode) const;

    /// The primitives completed so far.
    std::vector<Primitive> const& primitives() const { return _primitives; }

private:
    using Handler = void (Tracker::*)(Call const&);

    // The state that glPushAttrib saves, by its bit.
    struct Saved {
        unsigned int mask = 0;
        unsigned int matrixMode = 0;    // GL_TRANSFORM_BIT
        std::array<int, 4> viewport{};  // GL_VIEWPORT_BIT; all 0 until set
        Vertex current;                 // GL_CURRENT_BIT; normal, color and texture coordinate only
    };

    static std::map<std::string, Handler> const& _handlers();

    std::vector<Matrix>& _stack() { return _stacks[_saved.matrixMode]; }
    void _multiply(Matrix const& matrix);

    void _vertex(Call const& call);
    void _normal(Call const& call);
    void _color(Call const& call);
    void _textureCoordinate(Call const& call);
    void _begin(Call const& call);
    void _end(Call const& call);

    void _setMatrixMode(Call const& call);
    void _pushMatrix(Call const& call);
    void _popMatrix(Call const& call);
    void _loadIdentity(Call const& call);
    void _loadMatrix(Call const& call);
    void _loadTransposed(Call const& call);
    void _multMatrix(Call const& call);
    void _multTransposed(Call const& call);
    void _rotate(Call const& call);
    void _scale(Call const& call);
    void _translate(Call const& call);
    void _ortho(Call const& call);
    void _frustum(Call const& call);
    void _perspective(Call const& call);
    void _lookAt(Call const& call);
    void _pickMatrix(Call const& call);

    void _setViewport(Call const& call);
    void _pushAttrib(Call const& call);
    void _popAttrib(Call const& call);

    void _initNames(Call const& call);
    void _loadName(Call const& call);
    void _pushName(Call const& call);
    void _popName(Call const& call);

    Saved _saved;  // the current values
    std::vector<Saved> _attribStack;
    std::map<unsigned int, std::vector<Matrix>> _stacks;  // by matrix mode, never empty
    std::vector<unsigned int> _names;
    std::optional<Primitive> _open;  // between glBegin and glEnd
    std::vector<Primitive> _primitives;
};

}  // namespace gl_spy
