#include "viewport/window/Panel.h"

#include "viewport/drawing/view/Navigation.h"

#include <algorithm>
#include <array>
#include <string>

#include <imgui.h>
#include <imgui_stdlib.h>

namespace vellum::viewport {

namespace {

constexpr double WIDTH = 300;   // points
constexpr double STATUS = 26;   // points

constexpr ImGuiWindowFlags FIXED = ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoResize |
                                   ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings |
                                   ImGuiWindowFlags_NoBringToFrontOnFocus;

/// What the keys do, as help shows it.
constexpr std::array<std::array<char const*, 2>, 15> KEYS{{{"Left button", "turn about the focus"},
                                                           {"Middle or right button, Shift and left", "move"},
                                                           {"Wheel", "zoom at the cursor"},
                                                           {"F", "see everything"},
                                                           {"0", "perspective"},
                                                           {"1 2 3", "front, back, top"},
                                                           {"4 5 6", "bottom, left, right"},
                                                           {"P", "perspective or parallel projection"},
                                                           {"Tab", "show or hide the panel"},
                                                           {"F5", "read the files again"},
                                                           {"F11", "full screen"},
                                                           {"H", "this help"},
                                                           {"Ctrl+S", "save the picture"},
                                                           {"Ctrl+Q", "quit"},
                                                           {"Drop files", "open them"}}};

template <class Value, std::size_t SIZE>
bool combo(char const* label, Value& value, std::array<std::pair<Value, char const*>, SIZE> const& choices) {
    auto const found = std::find_if(choices.begin(), choices.end(),
                                    [&](auto const& choice) { return choice.first == value; });
    bool isChanged = false;
    if (ImGui::BeginCombo(label, found != choices.end() ? found->second : "")) {
        for (auto const& choice : choices) {
            if (ImGui::Selectable(choice.second, choice.first == value)) {
                value = choice.first;
                isChanged = true;
            }
        }
        ImGui::EndCombo();
    }
    return isChanged;
}

bool colorEdit(char const* label, Color4<float>& color) {
    return ImGui::ColorEdit3(label, &color.r, ImGuiColorEditFlags_NoInputs);
}

}  // namespace

double Panel::width(WindowUnits const& units) const {
    return units.pointsToUnits(WIDTH);
}

double Panel::statusHeight(WindowUnits const& units) const {
    return units.pointsToUnits(STATUS);
}

PanelRequests Panel::draw(Workspace& workspace, WindowUnits const& units, bool isShown) {
    PanelRequests requests;
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    auto const panelWidth = static_cast<float>(width(units));
    if (isShown) {
        Options options = workspace.options();
        ImGui::SetNextWindowPos({0, 0});
        ImGui::SetNextWindowSize({panelWidth, size.y});
        ImGui::Begin("Panel", nullptr, FIXED | ImGuiWindowFlags_NoTitleBar);
        ImGui::PushItemWidth(panelWidth * 0.5F);
        _drawFiles(workspace, requests);
        if (workspace.scene() != nullptr) {
            _drawMeshes(options);
            _drawParticles(workspace, options);
            _drawView(options);
        }
        ImGui::PopItemWidth();
        ImGui::End();
        if (changeBetween(workspace.options(), options) != Change::NOTHING) {
            requests.options = options;
        }
        _drawStatus(workspace, units);
    }
    _drawProgress(workspace, requests);
    _drawFault(workspace);
    if (isHelpShown) {
        _drawHelp();
    }
    return requests;
}

void Panel::_drawHelp() {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::Begin("Keys", &isHelpShown,
                 ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings);
    if (ImGui::BeginTable("keys", 2)) {
        for (auto const& key : KEYS) {
            ImGui::TableNextRow();
            ImGui::TableNextColumn();
            ImGui::TextUnformatted(key[0]);
            ImGui::TableNextColumn();
            ImGui::TextUnformatted(key[1]);
        }
        ImGui::EndTable();
    }
    ImGui::End();
}

void Panel::_drawProgress(Workspace const& workspace, PanelRequests& requests) const {
    if (!workspace.isLoading()) {
        return;
    }
    LoadProgress const progress = workspace.progress();
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::Begin("Loading", nullptr, FIXED | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::TextUnformatted(progress.file.c_str());
    double const part = progress.all > 0 ? static_cast<double>(progress.done) / static_cast<double>(progress.all) : 0;
    std::string const bytes = progress.all > 0 ? std::to_string(progress.done >> 20) + " of " +
                                                     std::to_string(progress.all >> 20) + " MB"
                                               : std::string("...");
    ImGui::ProgressBar(static_cast<float>(part), {ImGui::GetFontSize() * 20, 0}, bytes.c_str());
    if (ImGui::Button("Cancel")) {
        requests.cancelLoading = true;
    }
    ImGui::End();
}

void Panel::_drawFault(Workspace& workspace) const {
    if (!workspace.fault()) {
        return;
    }
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::SetNextWindowSizeConstraints({0, 0}, {size.x * 0.8F, size.y * 0.8F});
    ImGui::Begin("Not opened", nullptr, FIXED | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PushTextWrapPos(ImGui::GetFontSize() * 34);
    ImGui::TextUnformatted(workspace.fault()->line().c_str());
    ImGui::PopTextWrapPos();
    if (ImGui::Button("OK")) {
        workspace.forgetFault();
    }
    ImGui::End();
}

void Panel::_drawStatus(Workspace& workspace, WindowUnits const& units) const {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    auto const left = static_cast<float>(width(units));
    auto const height = static_cast<float>(statusHeight(units));
    ImGui::SetNextWindowPos({left, size.y - height});
    ImGui::SetNextWindowSize({size.x - left, height});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(8, 4));
    ImGui::Begin("Status", nullptr, FIXED | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoScrollbar);
    LiveScene* const scene = workspace.scene();
    if (scene == nullptr) {
        ImGui::TextUnformatted("Drop mesh or particle files here. H shows the keys.");
    } else if (scene->detail() < 1) {
        ImGui::Text("%.3g %% of the particles while the view moves", 100 * scene->detail());
    } else {
        ImGui::TextUnformatted("H shows the keys");
    }
    ImGui::End();
    ImGui::PopStyleVar();
}

void Panel::_drawFiles(Workspace& workspace, PanelRequests& requests) {
    if (!ImGui::CollapsingHeader("Files", ImGuiTreeNodeFlags_DefaultOpen)) {
        return;
    }
    for (std::string const& file : workspace.options().files) {
        ImGui::TextWrapped("%s", file.c_str());
    }
    for (Fault const& note : workspace.notes()) {
        ImGui::TextWrapped("%s", note.line().c_str());
    }
    if (ImGui::Button("Reload")) {
        requests.reload = true;
    }
    ImGui::SameLine();
    if (ImGui::Button("Fit")) {
        requests.fit = true;
    }
}

void Panel::_drawMeshes(Options& options) const {
    if (!ImGui::CollapsingHeader("Meshes", ImGuiTreeNodeFlags_DefaultOpen)) {
        return;
    }
    static constexpr std::array<std::pair<Shading, char const*>, 4> SHADINGS{{{Shading::SMOOTH, "smooth"},
                                                                              {Shading::FACETED, "facets"},
                                                                              {Shading::WIREFRAME, "wireframe"},
                                                                              {Shading::BOX, "box"}}};
    combo("Shading", options.mesh.shading, SHADINGS);
    ImGui::Checkbox("All edges", &options.mesh.allEdges);
    bool hasColor = options.mesh.color.has_value();
    if (ImGui::Checkbox("One color", &hasColor)) {
        options.mesh.color = hasColor ? std::optional<Color4<float>>({0.8F, 0.8F, 0.8F, 1}) : std::nullopt;
    }
    if (options.mesh.color) {
        ImGui::SameLine();
        colorEdit("##color", *options.mesh.color);
    }
    ImGui::SliderFloat("Opacity", &options.mesh.opacity, 0, 1);
}

void Panel::_drawParticles(Workspace& workspace, Options& options) {
    if (workspace.scene()->scene().clouds().empty() ||
        !ImGui::CollapsingHeader("Particles", ImGuiTreeNodeFlags_DefaultOpen)) {
        return;
    }
    ParticleMode mode = options.particles.mode.value_or(workspace.scene()->shown().look.mode);
    static constexpr std::array<std::pair<ParticleMode, char const*>, 4> MODES{
        {{ParticleMode::POINTS, "points"},
         {ParticleMode::SPHERES, "spheres"},
         {ParticleMode::ARROWS, "arrows of lines"},
         {ParticleMode::SOLID_ARROWS, "solid arrows"}}};
    if (combo("Shown as", mode, MODES)) {
        options.particles.mode = mode;
    }
    ImGui::SliderFloat("Percent", &options.particles.percent, 0, 100);
}

void Panel::_drawView(Options& options) const {
    if (!ImGui::CollapsingHeader("View", ImGuiTreeNodeFlags_DefaultOpen)) {
        return;
    }
    PictureOptions& picture = options.pictures.front();
    ImGui::Checkbox("Grid", &picture.explanations.hasGrid);
    ImGui::Checkbox("Axes", &picture.explanations.hasAxes);
    ImGui::Checkbox("Color bar", &picture.explanations.hasBar);
    ImGui::Checkbox("Box", &picture.explanations.hasBox);
    colorEdit("Background above", picture.background.top);
    colorEdit("Background below", picture.background.bottom);
}

}  // namespace vellum::viewport
