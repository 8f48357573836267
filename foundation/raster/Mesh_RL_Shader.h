#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/export.h"

namespace vellum {

/// The abstract effect, as renderers use it: its creation, and the calls before and after a drawing.
///
/// The renderers of meshes and particles hold effects through this class. One pass of drawing with an effect
/// is
///
///     if (!effect->created) effect->create();
///     effect->init();
///     effect->preprocess();
///     draw();
///     effect->postprocess();
///     effect->cleanup();
///
/// The operations of this class are empty; effects override them. An effect documents the state that
/// cleanup() does not restore.
class VL_FOUNDATION_EXPORT Mesh_RL_Shader {
public:
    /// The type of a value that setShaderConstant() passes.
    enum UNIFORM_TYPE : unsigned int { CONSTANT_INT = 0, CONSTANT_FLOAT = 1, CONSTANT_MATRIX = 2 };

    Mesh_RL_Shader();  ///< No label, not created.
    Mesh_RL_Shader(Mesh_RL_Shader const& other);
    Mesh_RL_Shader& operator=(Mesh_RL_Shader const&) = default;

    // The order of the virtual operations is part of the interface.

    virtual ~Mesh_RL_Shader();

    virtual void create();       ///< Builds the objects that the effect draws with.
    virtual void init();         ///< Prepares a pass, before preprocess().
    virtual void preprocess();   ///< Makes the effect current; the geometry is drawn after it.
    virtual void postprocess();  ///< Ends the drawing.
    virtual void cleanup();      ///< Restores the state that preprocess() changed.

    /// Passes a value to the effect by name: `size` numbers, or a square matrix of order `size`.
    virtual void setShaderConstant(char const* name, Mesh_RL_Shader::UNIFORM_TYPE type, unsigned int size,
                                   void* values);

    VL_String label;       ///< For the application; no effect reads it.
    bool created = false;  ///< Whether create() has built the effect.
};

}  // namespace vellum
