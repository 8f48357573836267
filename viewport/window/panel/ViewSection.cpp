#include "viewport/drawing/view/Navigation.h"
#include "viewport/window/panel/sections.h"

#include <cmath>

namespace vellum::viewport {

namespace {

constexpr std::array<std::pair<toolkit::ViewKind, char const*>, 7> VIEWS{
    {{toolkit::ViewKind::FRONT, "Front"},
     {toolkit::ViewKind::BACK, "Back"},
     {toolkit::ViewKind::TOP, "Top"},
     {toolkit::ViewKind::BOTTOM, "Bottom"},
     {toolkit::ViewKind::LEFT, "Left"},
     {toolkit::ViewKind::RIGHT, "Right"},
     {toolkit::ViewKind::PERSPECTIVE, "Perspective"}}};

constexpr std::array<std::pair<Gizmo, char const*>, 4> GIZMOS{
    {{Gizmo::NONE, "none"}, {Gizmo::MOVE, "move"}, {Gizmo::ROTATE, "rotate"}, {Gizmo::SCALE, "scale"}}};

/// Next to the button before, where there is room for it.
bool buttonInRow(char const* label, bool isFirst) {
    ImGuiStyle const& style = ImGui::GetStyle();
    float const width = ImGui::CalcTextSize(label).x + 2 * style.FramePadding.x;
    if (!isFirst) {
        ImGui::SameLine();
        if (ImGui::GetContentRegionAvail().x < width) {
            ImGui::NewLine();
        }
    }
    return ImGui::Button(label);
}

}  // namespace

void ViewSection::draw(PanelContext& context) {
    if (context.workspace.scene() == nullptr || !sectionHeader("View", true)) {
        return;
    }
    ImGui::PushID("view");
    _drawCamera(context);
    _drawSurroundings(context.options.pictures.front());
    ImGui::PopID();
}

void ViewSection::_drawCamera(PanelContext& context) const {
    LiveScene& scene = *context.workspace.scene();
    Navigation const navigation(scene.scene(), scene.camera());
    for (auto const& [view, name] : VIEWS) {
        if (buttonInRow(name, view == VIEWS.front().first)) {
            context.requests.camera = navigation.lookAlong(view);
        }
        hint("--view VIEW");
    }
    CameraSpec const& spec = scene.camera().spec();
    bool isParallel = !scene.camera().isPerspective();
    if (!spec.isAlongAxis()) {
        if (checkBox("Parallel", isParallel, "--projection parallel; P")) {
            context.requests.camera = navigation.otherProjection();
        }
        if (!isParallel) {
            auto degrees = static_cast<float>(spec.fieldOfView.value_or(CameraSpec::FIELD_OF_VIEW));
            if (ImGui::SliderFloat("Angle", &degrees, 1, 170, "%.4g\xC2\xB0", ImGuiSliderFlags_AlwaysClamp)) {
                CameraSpec changed = spec;
                changed.fieldOfView = static_cast<double>(degrees);
                context.requests.camera = changed;
            }
            hint("--fov DEGREES: the vertical angle of view; Ctrl+click to type");
        }
    }
    std::string const& words = scene.camera().options();
    if (words.empty()) {
        return;
    }
    if (ImGui::TreeNode("Camera as text")) {
        // Broken between options and behind commas, not within numbers.
        std::string lines;
        for (std::size_t i = 0; i < words.size(); ++i) {
            bool const isBetween = words[i] == ' ' && words.compare(i, 3, " --") == 0;
            lines += isBetween ? std::string("\n") : std::string(1, words[i]) + (words[i] == ',' ? " " : "");
        }
        paleLine(lines);
        ImGui::TreePop();
    }
    if (ImGui::Button("Copy camera")) {
        ImGui::SetClipboardText(words.c_str());
    }
    hint("Copies the options of the command line that give this camera");
}

void ViewSection::_drawSurroundings(PictureOptions& picture) {
    Background& background = picture.background;
    bool isChanged = colorField("Above", background.top, "--background TOP,BOTTOM");
    ImGui::SameLine();
    isChanged = colorField("Below", background.bottom, "--background TOP,BOTTOM") || isChanged;
    if (isChanged) {
        background.isTransparent = false;
        // One option says both.
        roundAsOption(background.top);
        roundAsOption(background.bottom);
    }
    ImGui::SameLine();
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("background");
    checkBox("Transparent", background.isTransparent,
             "--background transparent: for pictures that are saved");
    bool hasLight = picture.light.has_value();
    if (checkBox("Light from a place", hasLight, "--light AZ,EL; else lights stand with the viewer")) {
        picture.light = hasLight ? std::optional<LightSpec>(LightSpec{40, 40}) : std::nullopt;
    }
    if (picture.light) {
        auto azimuth = static_cast<float>(picture.light->azimuth);
        auto elevation = static_cast<float>(picture.light->elevation);
        bool isTurned =
            ImGui::SliderFloat("Azimuth", &azimuth, -360, 360, "%.4g\xC2\xB0", ImGuiSliderFlags_AlwaysClamp);
        hint("--light AZ,EL: 0 in front, 90 from the right");
        isTurned = ImGui::SliderFloat("Elevation", &elevation, -90, 90, "%.4g\xC2\xB0",
                                      ImGuiSliderFlags_AlwaysClamp) ||
                   isTurned;
        hint("--light AZ,EL: above the horizon");
        if (isTurned) {
            picture.light = LightSpec{static_cast<double>(azimuth), static_cast<double>(elevation)};
        }
    }
    if (ImGui::BeginTable("shown", 2)) {
        Explanations& shown = picture.explanations;
        ImGui::TableNextColumn();
        checkBox("Grid", shown.hasGrid, "--no-grid: leaves it out");
        ImGui::TableNextColumn();
        checkBox("Axes", shown.hasAxes, "--no-axes: leaves them out");
        ImGui::TableNextColumn();
        checkBox("Color bar", shown.hasBar, "--no-bar: leaves it out");
        ImGui::TableNextColumn();
        checkBox("Box", shown.hasBox, "--no-box: leaves out the boxes of particles");
        ImGui::TableNextColumn();
        checkBox("Sizes", shown.hasSizes,
                 "--sizes: the box around everything, with the lengths of its edges");
        ImGui::EndTable();
    }
    choice("Gizmo", picture.gizmo, GIZMOS, "--gizmo MODE");
}

}  // namespace vellum::viewport
