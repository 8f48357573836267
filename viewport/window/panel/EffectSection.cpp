#include "viewport/text/numbers.h"
#include "viewport/window/panel/sections.h"

#include <cmath>
#include <type_traits>
#include <variant>

namespace vellum::viewport {

namespace {

/// A slider over so many times the usual value would be too coarse for it; those numbers are dragged.
constexpr double LARGEST_SLIDER = 20;

/// The first number of a parameter's default.
double usualValue(EffectParameter const& parameter) {
    std::string const& text = parameter.standard;
    return std::abs(toReal(text.substr(0, text.find(','))).value_or(0));
}

bool isSlider(EffectParameter const& parameter) {
    return parameter.most - parameter.least <= std::max(2.0, LARGEST_SLIDER * usualValue(parameter));
}

/// What the effect lacks to be drawn; empty: nothing.
std::string lackOf(EffectValues const& values, bool hasFiles) {
    if (auto const* const displacement = std::get_if<DisplacementEffect>(&values)) {
        if (displacement->map.empty()) {
            return "A map is required.";
        }
    }
    if (auto const* const custom = std::get_if<CustomEffect>(&values)) {
        if (custom->vertexShader.empty() && custom->fragmentShader.empty() &&
            custom->geometryShader.empty()) {
            return "A shader is required.";
        }
    }
    return hasFiles || std::holds_alternative<OceanEffect>(values) ? "" : "A model is required.";
}

bool sameSpec(std::optional<EffectSpec> const& a, std::optional<EffectSpec> const& b) {
    return a && b ? a->onlyModel == b->onlyModel && sameValues(a->values, b->values) : !a && !b;
}

/// Sizes of the sea are powers of two.
unsigned int powerOfTwo(unsigned int number, unsigned int least, unsigned int most) {
    unsigned int power = least;
    while (power < most && power < number) {
        power *= 2;
    }
    return power;
}

template <class Number>
bool numbers(EffectParameter const& parameter, Number* first, int count) {
    bool const isFloat = std::is_same_v<Number, float>;
    ImGuiDataType const type = isFloat ? ImGuiDataType_Float : ImGuiDataType_Double;
    auto const least = static_cast<Number>(parameter.least);
    auto const most = static_cast<Number>(parameter.most);
    if (isSlider(parameter)) {
        return ImGui::SliderScalarN(parameter.name.c_str(), type, first, count, &least, &most, "%.4g",
                                    ImGuiSliderFlags_AlwaysClamp);
    }
    double const size = std::max({std::abs(static_cast<double>(*first)), usualValue(parameter), 0.1});
    return ImGui::DragScalarN(parameter.name.c_str(), type, first, count, static_cast<float>(size / 100),
                              &least, &most, "%.6g", ImGuiSliderFlags_AlwaysClamp);
}

void drawField(EffectParameter const& parameter, double& value) {
    numbers(parameter, &value, 1);
}

void drawField(EffectParameter const& parameter, unsigned int& value) {
    auto const least = static_cast<unsigned int>(parameter.least);
    auto const most = static_cast<unsigned int>(parameter.most);
    bool isChanged = false;
    if (isSlider(parameter) || parameter.most <= 100) {
        isChanged = ImGui::SliderScalar(parameter.name.c_str(), ImGuiDataType_U32, &value, &least, &most,
                                        "%u", ImGuiSliderFlags_AlwaysClamp);
    } else {
        unsigned int const step = 1;
        isChanged = ImGui::InputScalar(parameter.name.c_str(), ImGuiDataType_U32, &value, &step);
    }
    if (isChanged) {
        value = std::clamp(value, least, most);
    }
}

void drawField(EffectParameter const& parameter, bool& value) {
    ImGui::Checkbox(parameter.name.c_str(), &value);
}

void drawField(EffectParameter const& parameter, Vector2<float>& value) {
    numbers(parameter, &value.x, 2);
}

void drawField(EffectParameter const& parameter, Vector2<double>& value) {
    numbers(parameter, &value.x, 2);
}

void drawField(EffectParameter const& parameter, Vector3<float>& value) {
    numbers(parameter, &value.x, 3);
}

void drawField(EffectParameter const& parameter, Color4<float>& value) {
    // Brighter colors than a screen has, and numbers that are no colors at all, are typed.
    if (parameter.most <= 1) {
        ImGui::ColorEdit3(parameter.name.c_str(), &value.r,
                          ImGuiColorEditFlags_Float | ImGuiColorEditFlags_NoTooltip);
    } else if (parameter.most <= 1000) {
        ImGui::ColorEdit3(parameter.name.c_str(), &value.r,
                          ImGuiColorEditFlags_Float | ImGuiColorEditFlags_HDR |
                              ImGuiColorEditFlags_NoTooltip);
        for (float* const part : {&value.r, &value.g, &value.b}) {
            *part =
                std::clamp(*part, static_cast<float>(parameter.least), static_cast<float>(parameter.most));
        }
    } else {
        numbers(parameter, &value.r, 4);
    }
}

void drawField(EffectParameter const& /*parameter*/, std::string& /*value*/) {}  // is drawn as a checked text

}  // namespace

void EffectSection::draw(PanelContext& context) {
    std::optional<EffectSpec>& effect = context.options.effect;
    Workspace const& workspace = context.workspace;
    std::shared_ptr<Content const> const& content = workspace.content();
    bool const hasMeshes = content != nullptr && !content->meshes.empty();
    if (!sameSpec(effect, taken) && workspace.fault() && sameSpec(effect, former)) {
        // It could not be made ready: what was typed stays, to be corrected.
        refused = draft;
        taken = effect;
    } else if (!sameSpec(effect, taken)) {
        refused.reset();
        taken = effect;
        draft = effect;
        texts.clear();
    }
    if (!sectionHeader("Effect", draft.has_value())) {
        return;
    }
    ImGui::PushID("effect");
    std::string const name = draft ? nameOf(draft->values) : "none";
    if (ImGui::BeginCombo("Effect", name.c_str())) {
        if (ImGui::Selectable("none", !draft)) {
            draft.reset();
        }
        for (std::string const& other : effectNames()) {
            if (ImGui::Selectable(other.c_str(), other == name) && other != name) {
                draft = EffectSpec{*effectNamed(other), std::nullopt};
                texts.clear();
            }
        }
        ImGui::EndCombo();
    } else {
        hint("--effect NAME");
    }
    if (draft) {
        std::size_t const count = hasMeshes ? content->meshes.size() : 0;
        bool const isOcean = std::holds_alternative<OceanEffect>(draft->values);
        std::string const all = isOcean ? "the sea" : "all models";
        std::string const only =
            draft->onlyModel && *draft->onlyModel < count ? content->meshes[*draft->onlyModel].name : all;
        if (count > 0 && ImGui::BeginCombo("On", only.c_str())) {
            if (ImGui::Selectable(all.c_str(), !draft->onlyModel)) {
                draft->onlyModel.reset();
            }
            for (std::size_t i = 0; i < count; ++i) {
                ImGui::PushID(static_cast<int>(i));
                if (ImGui::Selectable(content->meshes[i].name.c_str(), draft->onlyModel == i)) {
                    draft->onlyModel = i;
                }
                ImGui::PopID();
            }
            ImGui::EndCombo();
        } else if (count > 0) {
            hint("--effect-model N: only one of the models");
        }
        _drawShaders(workspace);
        _drawParameters();
        if (ImGui::Button("All defaults")) {
            EffectValues standard = *effectNamed(nameOf(draft->values));
            // What it cannot be drawn without stays.
            if (auto* const custom = std::get_if<CustomEffect>(&standard)) {
                auto const& former = std::get<CustomEffect>(draft->values);
                custom->vertexShader = former.vertexShader;
                custom->fragmentShader = former.fragmentShader;
                custom->geometryShader = former.geometryShader;
            } else if (auto* const displacement = std::get_if<DisplacementEffect>(&standard)) {
                displacement->map = std::get<DisplacementEffect>(draft->values).map;
            }
            draft->values = standard;
            texts.clear();
        }
        hint("Resets all parameters; a right click on one resets it alone");
        std::string const lack = lackOf(draft->values, hasMeshes);
        if (!lack.empty()) {
            paleLine(lack);
        }
    }
    bool const isComplete = !draft || lackOf(draft->values, hasMeshes).empty();
    if (refused && draft && sameSpec(refused, draft)) {
        faultLine("This cannot be drawn; what was shown before is shown.");
    } else if (isComplete && !sameSpec(draft, effect)) {
        refused.reset();
        former = context.workspace.options().effect;
        effect = draft;
        taken = draft;
    }
    ImGui::PopID();
}

void EffectSection::_drawShaders(Workspace const& workspace) {
    if (auto* const glass = std::get_if<GlassEffect>(&draft->values)) {
        texts["environment"].draw("environment", glass->environment,
                                  "--environment FILE: a picture that the glass mirrors; empty: a sky",
                                  lackOfFile);
    }
    auto* const custom = std::get_if<CustomEffect>(&draft->values);
    if (custom == nullptr) {
        return;
    }
    texts["vertex"].draw("Vertex shader", custom->vertexShader,
                         "--shader-vertex FILE; empty: passes everything on", lackOfFile);
    texts["fragment"].draw("Fragment shader", custom->fragmentShader, "--shader-fragment FILE", lackOfFile);
    texts["geometry"].draw("Geometry shader", custom->geometryShader, "--shader-geometry FILE; empty: none",
                           lackOfFile);
    checkBox("Replace faulty stages", custom->replacesStages,
             "--shader-fallback: what does not compile is replaced; else it is a fault");
    for (Fault const& line : workspace.faultWords()) {
        faultLine(line.line());
    }
    if (!workspace.faultWords().empty() && workspace.fault()) {
        faultLine(workspace.fault()->line());
    }
}

void EffectSection::_drawParameters() {
    // Custom shaders have many variables, of which few are declared.
    bool const isCustom = std::holds_alternative<CustomEffect>(draft->values);
    bool isShown = true;
    for (EffectParameter const& parameter : parametersOf(draft->values)) {
        if (isCustom && (parameter.name == "Texture0" || parameter.name == "FloatVar0" ||
                         parameter.name == "Vec3Var0" || parameter.name == "Vec4Var0")) {
            if (&parameter != &parametersOf(draft->values).front() && isShown &&
                parameter.name != "Texture0") {
                ImGui::TreePop();
            }
            std::string const group = parameter.name.substr(0, parameter.name.size() - 1);
            isShown = ImGui::TreeNode(group.c_str());
        }
        if (isShown) {
            _drawParameter(parameter);
        }
    }
    if (isCustom && isShown) {
        ImGui::TreePop();
    }
}

void EffectSection::_drawParameter(EffectParameter const& parameter) {
    ImGui::PushID(parameter.name.c_str());
    std::string const what = "--effect-param " + parameter.name + "=" + parameter.kindWord() + ": " +
                             parameter.meaning +
                             (parameter.standard.empty() ? "" : " (" + parameter.standard + ")");
    if (auto const* const file = std::get_if<std::function<std::string&(EffectValues&)>>(&parameter.field)) {
        texts[parameter.name].draw(parameter.name.c_str(), (*file)(draft->values), what.c_str(), lackOfFile);
    } else {
        std::visit([&](auto const& place) { drawField(parameter, place(draft->values)); }, parameter.field);
        hint(what);
        if (ImGui::BeginPopupContextItem("reset")) {
            if (ImGui::Selectable(("Reset to " + parameter.standard).c_str())) {
                static_cast<void>(parameter.assign(draft->values, parameter.standard));
            }
            ImGui::EndPopup();
        }
        if (auto* const ocean = std::get_if<OceanEffect>(&draft->values)) {
            ocean->sea.size = powerOfTwo(ocean->sea.size, SeaState::SMALLEST_SIZE, SeaState::LARGEST_SIZE);
        }
    }
    ImGui::PopID();
}

}  // namespace vellum::viewport
