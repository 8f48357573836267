#include "viewport/window/panel/sections.h"

namespace vellum::viewport {

void PickedSection::draw(PanelContext& context) const {
    if (context.workspace.scene() == nullptr || text.empty() || !sectionHeader("Picked", true)) {
        return;
    }
    ImGui::PushID("picked");
    // Broken behind commas: ImGui would break long numbers at their points.
    std::string lines;
    for (char const letter : text.substr(0, text.find_last_not_of('\n') + 1)) {
        bool const isBehindComma = letter == ' ' && !lines.empty() && lines.back() == ',';
        lines += isBehindComma ? std::string("\n      ") : std::string(1, letter);
    }
    ImGui::TextUnformatted(lines.c_str());
    if (ImGui::Button("Copy")) {
        ImGui::SetClipboardText(text.c_str());
    }
    hint("--pick X,Y: copies what it prints of this place");
    ImGui::PopID();
}

}  // namespace vellum::viewport
