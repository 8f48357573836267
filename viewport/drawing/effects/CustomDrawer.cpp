#include "viewport/drawing/effects/CustomDrawer.h"

#include "Program_gl.h"
#include "viewport/drawing/effects/ShaderFiles.h"

#include <fstream>
#include <iterator>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

char const* const PROGRAM = "the program of the stages";

bool contains(std::string const& path, std::string const& word) {
    std::ifstream file(path, std::ios::binary);
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return text.find(word) != std::string::npos;
}

}  // namespace

bool CustomDrawer::LinkedShader::isLinked() const {
    GLint linked = GL_FALSE;
    if (program->getId() != 0) {
        glGetProgramiv(program->getId(), GL_LINK_STATUS, &linked);
    }
    return linked != GL_FALSE;
}

CustomDrawer::CustomDrawer(ReportingLayer& layer, CustomEffect const& effect)
    : EffectDrawer(layer), effect(effect) {
    _setVariables();
    _setStages();
    custom.grabFrameBuffer(effect.grabsFrameBuffer);
}

EffectMaterial CustomDrawer::material() const {
    return {static_cast<float>(effect.gloss), static_cast<float>(effect.shininess)};
}

void CustomDrawer::placeLights(toolkit::ScreenAxes const& screen, double unit) const {
    effect.lights.set(screen, EffectLights::Frame::ofScene(unit));
}

std::string CustomDrawer::fileOfStage(unsigned int stage) const {
    return stage == GL_VERTEX_SHADER     ? effect.vertexShader
           : stage == GL_FRAGMENT_SHADER ? effect.fragmentShader
                                         : effect.geometryShader;
}

void CustomDrawer::_setVariables() {
    custom.setBaseColor(effect.baseColor);
    custom.setNLights(effect.lights.count);
    for (std::size_t i = 0; i < CustomEffect::VARIABLES; ++i) {
        int const index = static_cast<int>(i);
        custom.setFloatVar(static_cast<float>(effect.floats[i]), index);
        custom.setVec3Var(effect.vec3s[i], index);
        custom.setVec4Var(effect.vec4s[i], index);
    }
    for (std::size_t i = 0; i < CustomEffect::TEXTURES; ++i) {
        custom.setTexture(VL_String(effect.textures[i].c_str()), static_cast<int>(i));
    }
}

void CustomDrawer::_setStages() {
    custom.setShaders(VL_String(effect.vertexShader.c_str()), VL_String(effect.fragmentShader.c_str()),
                      VL_String(effect.geometryShader.c_str()));
    bool const hasFragmentStage = !takeReports(GL_FRAGMENT_SHADER) && !effect.fragmentShader.empty();
    std::string const& lastBeforeIt =
        effect.geometryShader.empty() ? effect.vertexShader : effect.geometryShader;
    if (!custom.isLinked()) {
        for (Fault const& line : shaderFaults(PROGRAM, custom.linkLog())) {
            stageNotes.push_back(line);
        }
        stageNotes.push_back({PROGRAM, "cannot be linked; stages that pass everything on take its place"});
        custom.setShaders("", "", "");
    } else if (!hasFragmentStage && !lastBeforeIt.empty() && !contains(lastBeforeIt, "gl_FrontColor")) {
        // Such a program links, and draws in whatever color the driver leaves in the varying.
        stageNotes.push_back(
            {lastBeforeIt, "sets no gl_FrontColor, which the fragment stage that passes everything on shows; "
                           "such a stage takes its place, too"});
        custom.setShaders("", "", "");
    }
    // GL raises an error when a program that is not linked is taken into use.
    layer.getError("CustomDrawer", __LINE__);
}

}  // namespace vellum::viewport
