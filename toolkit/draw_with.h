#pragma once

#include "foundation/raster/Mesh_RL_Shader.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Makes an effect current while it lives, and leaves GL as it was before: the program, the active texture
/// unit, the 2-D textures of the first eight units, the texture environment of the first one, which lights
/// are on, the current color, and what the effect itself restores.
///
/// drawWith() is the usual way to use it. Effect and render layer must outlive it.
///  - Setters of SSScattering_shader and Custom_shader leave their program in use. If it is that of the scope's own
///    effect, no program is in use afterwards.
///  - Scopes of different effects nest: inside the inner one its effect alone counts, afterwards the outer one goes on.
///    Inside a scope of the same effect a scope does nothing, as the effect is in use already.
///  - On a driver without shaders (before OpenGL 2.0), or without a render layer, the scope does nothing: what is drawn
///    in it is drawn without the effect.
///  - Where GL refuses the effect's program, what is drawn is drawn without a program, and GL's errors stay pending.
///
/// GL: the layer's checkShaderSupport(); glGetIntegerv(GL_CURRENT_PROGRAM), (GL_ACTIVE_TEXTURE) and
/// (GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS); per unit from the last to the first glActiveTexture and
/// glGetIntegerv(GL_TEXTURE_BINDING_2D); glGetTexEnviv, glIsEnabled per light, glGetFloatv(GL_CURRENT_COLOR);
/// glUseProgram(0) if there is a program; the effect's create() if it is not created,
/// Base_shader::enable(true) of a SSScattering_shader, init() and preprocess(). At its end postprocess(),
/// cleanup(); per unit glActiveTexture and glBindTexture, glTexEnvi, glActiveTexture, glUseProgram, glDisable
/// per light that was off, glColor4fv. State: none.
class VL_TOOLKIT_EXPORT EffectScope {
public:
    /// The effect sends all of its values, as the viewport may have changed since the last time.
    explicit EffectScope(Mesh_RL_Shader& effect);
    ~EffectScope();
    EffectScope(EffectScope const&) = delete;
    EffectScope& operator=(EffectScope const&) = delete;

private:
    static constexpr int UNITS = 8;   // that effects use
    static constexpr int LIGHTS = 8;  // that every driver has

    void _save();
    void _restore() const;

    Mesh_RL_Shader& effect;
    Mesh_RL_Shader const* outer;  // of the scope around it; null outside of scopes
    bool isUsed;                  // the effect, by this scope
    int program = 0;
    int activeUnit = 0;
    int units = 0;  // of the driver, at most UNITS
    int textures[UNITS] = {};
    int environment = 0;
    bool areLightsOn[LIGHTS] = {};
    float color[4] = {};
};

/// Draws with an effect: whatever `draw` sends to GL goes through it.
///
///     drawWith(glass, [&] { drawMesh(renderer, {}); });
///
/// What is seen through the effect must have been drawn before. The effect gets its light from lights 0 and
/// 1; see setEffectLights(). Meshes are drawn with drawMesh() or the renderer's operations, without
/// MeshShadingFlags_ns::GPU_SHADER, which would begin a pass of its own.
///
/// The state is restored also when `draw` throws.
/// GL, State: as EffectScope.
template <class Draw>
void drawWith(Mesh_RL_Shader& effect, Draw const& draw) {
    EffectScope const scope(effect);
    draw();
}

}  // namespace vellum::toolkit
