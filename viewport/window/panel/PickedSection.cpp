#include "viewport/window/panel/sections.h"

namespace vellum::viewport {

void PickedSection::draw(PanelContext& context) const {
    if (context.workspace.scene() == nullptr || text.empty() || !sectionHeader("Picked", true)) {
        return;
    }
    ImGui::PushID("picked");
    ImGui::TextWrapped("%s", text.substr(0, text.find_last_not_of('\n') + 1).c_str());
    if (ImGui::Button("Copy")) {
        ImGui::SetClipboardText(text.c_str());
    }
    hint("--pick X,Y: copies what it prints of this place");
    ImGui::PopID();
}

}  // namespace vellum::viewport
