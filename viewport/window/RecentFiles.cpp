#include "viewport/window/RecentFiles.h"

#include <cstddef>
#include <filesystem>

#include <imgui.h>

namespace vellum::viewport {

std::optional<std::string> drawRecentFiles(std::vector<std::string> const& files, double left) {
    std::optional<std::string> clicked;
    ImVec2 const size = ImGui::GetIO().DisplaySize;
    auto const start = static_cast<float>(left);
    ImGui::SetNextWindowPos({start + (size.x - start) * 0.5F, size.y * 0.5F}, ImGuiCond_Always, {0.5F, 0.5F});
    ImGui::Begin("Recent files", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoSavedSettings |
                     ImGuiWindowFlags_NoBackground | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::TextUnformatted("Drop files here to open them.");
    if (!files.empty()) {
        ImGui::Spacing();
        ImGui::TextDisabled("Recent files");
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::filesystem::path const path(files[i]);
        ImGui::PushID(static_cast<int>(i));
        if (ImGui::SmallButton(path.filename().string().c_str())) {
            clicked = files[i];
        }
        ImGui::SameLine();
        ImGui::TextDisabled("%s", path.parent_path().string().c_str());
        ImGui::PopID();
    }
    ImGui::End();
    return clicked;
}

}  // namespace vellum::viewport
