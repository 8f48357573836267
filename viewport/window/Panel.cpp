#include "viewport/window/Panel.h"

#include <algorithm>
#include <array>
#include <string>

#include <imgui.h>

namespace vellum::viewport {

namespace {

constexpr double WIDTH = 320;               // points
constexpr double STATUS = 26;               // points
constexpr double LONGEST_WHILE_HELD = 0.1;  // seconds of a drawing

constexpr double TIMELINE = 34;  // points, its height
constexpr std::chrono::milliseconds UNTIL_PROGRESS{400};

constexpr ImGuiWindowFlags FIXED = ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoResize |
                                   ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings |
                                   ImGuiWindowFlags_NoBringToFrontOnFocus;

/// What the keys do, as help shows it.
constexpr std::array<std::array<char const*, 2>, 21> KEYS{
    {{"Left button", "turn about the focus"},
     {"Click", "select, and keep the values of the place in the panel"},
     {"Middle or right button, Shift and left", "move"},
     {"Wheel", "zoom at the cursor"},
     {"F", "see everything"},
     {"0", "perspective"},
     {"1 2 3", "front, back, top"},
     {"4 5 6", "bottom, left, right"},
     {"P", "perspective or parallel projection"},
     {"Tab", "show or hide the panel"},
     {"Space", "play the frames of a file, a series or an animation, or stop"},
     {"G T S", "handles that move, turn, scale what is selected"},
     {"Ctrl+Z, Ctrl+Shift+Z", "take a step back, and do it again"},
     {"F5", "read the files again"},
     {"F11", "full screen"},
     {"I", "how long the drawing takes"},
     {"H", "this help"},
     {"Ctrl+S", "save the picture"},
     {"Ctrl+Shift+S", "save what is seen as a view"},
     {"Ctrl+Q", "quit"},
     {"Drop files", "open them"}}};

/// Whether two sets of options differ in the range of colors, and in nothing else.
bool isOnlyRange(Options const& before, Options const& after) {
    Options same = after;
    same.particles.range = before.particles.range;
    return changeBetween(before, same) == Change::NOTHING;
}

}  // namespace

double Panel::width(WindowUnits const& units) const {
    return units.pointsToUnits(WIDTH);
}

double Panel::footHeight(Workspace const& workspace, WindowUnits const& units) const {
    return units.pointsToUnits(workspace.frames() != nullptr ? STATUS + TIMELINE : STATUS);
}

PanelRequests Panel::draw(Workspace& workspace, WindowUnits const& units, bool isShown) {
    PanelRequests requests;
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    auto const panelWidth = static_cast<float>(width(units));
    covered = isShown ? panelWidth : 0;
    std::optional<Timeline::Place> bar;
    if (isShown) {
        _drawSections(workspace, panelWidth, requests);
        _drawStatus(workspace, units);
        double const left = static_cast<double>(panelWidth);
        bar = {left, static_cast<double>(size.x) - left,
               static_cast<double>(size.y) - units.pointsToUnits(STATUS), units.pointsToUnits(TIMELINE)};
    }
    std::optional<Options> const next = timeline.draw(workspace, bar);
    if (next && !requests.options) {
        requests.options = next;
    }
    if (isOverlayShown) {
        drawOverlay(workspace, size.x, 0);
    }
    _drawProgress(workspace, requests);
    _drawFault(workspace);
    if (isHelpShown) {
        _drawHelp();
    }
    return requests;
}

void Panel::_drawSections(Workspace& workspace, float width, PanelRequests& requests) {
    Options options = draft.value_or(workspace.options());
    options.pictures.front().camera = workspace.options().pictures.front().camera;
    ImGui::SetNextWindowPos({0, 0});
    ImGui::SetNextWindowSize({width, ImGui::GetIO().DisplaySize.y});
    ImGui::Begin("Panel", nullptr,
                 FIXED | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysVerticalScrollbar);
    ImGui::PushItemWidth(width * 0.52F);
    PanelContext context{workspace, options, requests};
    data.draw(context);
    picked.draw(context);
    particles.draw(context);
    meshes.draw(context);
    effect.draw(context);
    view.draw(context);
    object.draw(context);
    picture.draw(context);
    checkBox("Facts of the drawing", isOverlayShown, "I: how long it takes, at the upper right of the scene");
    ImGui::PopItemWidth();
    ImGui::End();

    Change const change = changeBetween(workspace.options(), options);
    LiveScene* const scene = workspace.scene();
    // What takes long waits until the mouse is released: else every step of a slider would begin it anew.
    bool const takesLong =
        change >= Change::SUBJECT || (scene != nullptr && scene->facts().seconds > LONGEST_WHILE_HELD);
    // The ends of a range are dragged by what is seen: the picture follows as fast as it is made ready,
    // without a queue.
    bool const follows =
        change == Change::SUBJECT && !workspace.isLoading() && isOnlyRange(workspace.options(), options);
    draft.reset();
    if (change != Change::NOTHING && takesLong && !follows && ImGui::IsAnyItemActive()) {
        draft = options;
    } else if (change != Change::NOTHING) {
        requests.options = options;
    }
}

void Panel::_drawHelp() {
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({(size.x + covered) * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::Begin("Keys", &isHelpShown,
                 ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoCollapse |
                     ImGuiWindowFlags_NoSavedSettings);
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

void Panel::_drawProgress(Workspace const& workspace, PanelRequests& requests) {
    if (!workspace.isLoading()) {
        loadingSince.reset();
        return;
    }
    // What is there at once needs no bar, which would flicker.
    auto const now = std::chrono::steady_clock::now();
    loadingSince = loadingSince.value_or(now);
    if (now - *loadingSince < UNTIL_PROGRESS) {
        return;
    }
    LoadProgress const progress = workspace.progress();
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({(size.x + covered) * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::Begin("Loading", nullptr, FIXED | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::TextUnformatted(progress.file.c_str());
    double const part =
        progress.all > 0 ? static_cast<double>(progress.done) / static_cast<double>(progress.all) : 0;
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
    ImGui::SetNextWindowPos({(size.x + covered) * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::SetNextWindowSizeConstraints({0, 0}, {(size.x - covered) * 0.95F, size.y * 0.8F});
    ImGui::Begin("Not opened", nullptr, FIXED | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PushTextWrapPos(
        std::clamp(ImGui::GetFontSize() * 34, 1.0F, std::max(1.0F, (size.x - covered) * 0.9F)));
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
    auto const height = static_cast<float>(units.pointsToUnits(STATUS));
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
        ImGui::TextUnformatted(underCursor.empty() ? "H shows the keys" : underCursor.c_str());
    }
    ImGui::End();
    ImGui::PopStyleVar();
}

}  // namespace vellum::viewport
