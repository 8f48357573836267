#include "toolkit/draw_with.h"

#include "foundation/raster/Core_RL.h"
#include "glsl_shader/Base_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "internal/misuse.h"
#include "toolkit/internal/gl.h"

#include <algorithm>

namespace vellum::toolkit {

namespace {

// Effects leave textures of two units at least, and every driver with shaders has as many.
constexpr int FEWEST_UNITS = 2;

/// The effect of the innermost scope; null outside of scopes.
thread_local Mesh_RL_Shader const* current = nullptr;

/// The program that an effect has, whoever uses it now; 0 for none.
int programOf(Mesh_RL_Shader const& effect) {
    struct Opened : Base_shader {
        static Program_gl const& of(Base_shader const& shader) { return *(shader.*(&Opened::program)); }
    };
    auto const* const shader = dynamic_cast<Base_shader const*>(&effect);
    return shader != nullptr ? static_cast<int>(Opened::of(*shader).getId()) : 0;
}

bool hasShaders() {
    misuse::requireLayer("drawWith");
    return VL_Raster != nullptr && VL_Raster->checkShaderSupport();
}

}  // namespace

EffectScope::EffectScope(Mesh_RL_Shader& effect)
    : effect(effect), outer(current), isUsed(current != &effect && hasShaders()) {
    if (!isUsed) {
        return;
    }
    current = &effect;
    _save();
    if (program == programOf(effect)) {
        program = 0;  // left in use by a setter, not by the application
    }
    if (program != 0) {
        // Where GL refuses the effect's program, it keeps the former one, which must not draw for the effect.
        glUseProgram(0);
    }
    if (!effect.created) {
        effect.create();
    }
    if (auto* const shader = dynamic_cast<Base_shader*>(&effect)) {
        shader->markDirty();
    }
    if (auto* const scattering = dynamic_cast<SSScattering_shader*>(&effect)) {
        // It sends its values to a program that is in use, and does not take it into use itself, dirty or
        // not.
        scattering->enable(true);
    }
    effect.init();
    effect.preprocess();
}

EffectScope::~EffectScope() {
    if (!isUsed) {
        return;
    }
    effect.postprocess();
    effect.cleanup();
    _restore();
    current = outer;
}

// By queries and not by glPushAttrib(): drivers restore nested groups of attributes incompletely
// (docs/drivers.md), and groups do not hold the program.
void EffectScope::_save() {
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    glGetIntegerv(GL_ACTIVE_TEXTURE, &activeUnit);
    glGetIntegerv(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, &units);
    units = std::clamp(units, FEWEST_UNITS, UNITS);
    // Backward, so that unit 0 is active in the end: effects bind textures to whatever unit is active, which
    // could be one that is not restored.
    for (int i = units - 1; i >= 0; --i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &textures[i]);
    }
    glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &environment);
    for (int i = 0; i < LIGHTS; ++i) {
        areLightsOn[i] = glIsEnabled(GL_LIGHT0 + static_cast<GLenum>(i)) != GL_FALSE;
    }
    glGetFloatv(GL_CURRENT_COLOR, color);
}

void EffectScope::_restore() const {
    for (int i = units - 1; i >= 0; --i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(textures[i]));
    }
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, environment);
    glActiveTexture(static_cast<GLenum>(activeUnit));
    glUseProgram(static_cast<GLuint>(program));
    // Workaround: Mesa 22.3 leaves single lights on that an effect has switched on (see docs/drivers.md).
    for (int i = 0; i < LIGHTS; ++i) {
        if (!areLightsOn[i]) {
            glDisable(GL_LIGHT0 + static_cast<GLenum>(i));
        }
    }
    glColor4fv(color);
}

}  // namespace vellum::toolkit
