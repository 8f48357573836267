#pragma once

#include "foundation/raster/Mesh_RL_Shader.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Makes an effect current while it lives, and leaves GL as it was before: the program, the active texture unit, the 2-D
/// textures of its first eight units, the current color, and what the effect itself restores.
///
/// drawWith() is the usual way to use it. Effect and render layer must outlive it. Scopes of this class do not nest.
/// GL: at its beginning glGetIntegerv and glGetFloatv for what is saved, the effect's create() if it is not created,
/// init() and preprocess(), the program taken into use; at its end postprocess(), cleanup(), and the calls that restore
/// what was saved.
class VL_TOOLKIT_EXPORT EffectScope {
public:
    /// The effect sends all of its values, as the viewport may have changed since the last time.
    explicit EffectScope(Mesh_RL_Shader& effect);
    ~EffectScope();
    EffectScope(EffectScope const&) = delete;
    EffectScope& operator=(EffectScope const&) = delete;

private:
    static constexpr int UNITS = 8;  // that effects use

    Mesh_RL_Shader& effect;
    int program;
    int activeUnit;
    int textures[UNITS];
    float color[4];
};

/// Draws with an effect: whatever `draw` sends to GL goes through it.
///
///     drawWith(glass, [&] { drawMesh(renderer, {}); });
///
/// What is seen through the effect must have been drawn before. The effect gets its light from lights 0 and 1; see
/// setEffectLights(). Meshes are drawn with drawMesh() or the renderer's operations, without
/// MeshShadingFlags_ns::GPU_SHADER, which would begin a pass of its own.
///
/// The state is restored also when `draw` throws.
template <class Draw>
void drawWith(Mesh_RL_Shader& effect, Draw const& draw) {
    EffectScope const scope(effect);
    draw();
}

}  // namespace vellum::toolkit
