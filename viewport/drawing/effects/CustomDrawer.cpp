#include "viewport/drawing/effects/CustomDrawer.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

using Replacement = toolkit::StageReport::Replacement;

/// Whether a stage does not compile or the stages do not link. Stages that are replaced for another reason
/// could be used.
bool isBroken(toolkit::StageReport const& report) {
    return report.replacement != Replacement::NOTHING &&
           (report.stage == toolkit::Stage::PROGRAM || report.replacement != Replacement::ALL_STAGES);
}

std::string namesOf(toolkit::StageFiles const& files) {
    std::string names;
    for (std::string const& file : {files.vertex, files.fragment, files.geometry}) {
        names += (names.empty() || file.empty() ? "" : ", ") + file;
    }
    return names;
}

}  // namespace

CustomDrawer::CustomDrawer(toolkit::Layer& layer, CustomEffect const& effect)
    : EffectDrawer(layer), effect(effect), custom(layer) {
    _setVariables();
    reports = custom.load({effect.vertexShader, effect.fragmentShader, effect.geometryShader});
    custom.grabFrameBuffer(effect.grabsFrameBuffer);
}

EffectMaterial CustomDrawer::material() const {
    return {static_cast<float>(effect.gloss), static_cast<float>(effect.shininess)};
}

void CustomDrawer::placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const {
    toolkit::setEffectLights(custom, effect.lights, view, scene);
}

bool CustomDrawer::isPlain() const {
    auto const isReplaced = [](toolkit::StageReport const& report) {
        return report.replacement != Replacement::NOTHING;
    };
    auto const isAll = [](toolkit::StageReport const& report) {
        return report.replacement == Replacement::ALL_STAGES;
    };
    auto const fileCount = static_cast<std::ptrdiff_t>(!effect.vertexShader.empty()) +
                           static_cast<std::ptrdiff_t>(!effect.fragmentShader.empty()) +
                           static_cast<std::ptrdiff_t>(!effect.geometryShader.empty());
    std::ptrdiff_t const replaced = std::count_if(reports.begin(), reports.end(), isReplaced);
    return replaced > 0 && (replaced >= fileCount || std::any_of(reports.begin(), reports.end(), isAll));
}

std::vector<Fault> CustomDrawer::stageFaults() const {
    auto const broken = std::find_if(reports.begin(), reports.end(), isBroken);
    if (effect.replacesStages || broken == reports.end()) {
        return {};
    }
    std::vector<Fault> faults;
    for (toolkit::StageReport report : reports) {
        if (isBroken(report) && !report.log.empty()) {
            report.replacement = Replacement::NOTHING;
            std::vector<Fault> const words = linesOf(report);
            faults.insert(faults.end(), words.begin(), words.end());
        }
    }
    bool const isProgram = broken->stage == toolkit::Stage::PROGRAM;
    std::string const reason = isProgram ? "cannot be linked" : "does not compile";
    faults.push_back({isProgram ? namesOf(custom.files()) : broken->file,
                      broken->log.empty() ? broken->messages.front().text : reason});
    return faults;
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

}  // namespace vellum::viewport
