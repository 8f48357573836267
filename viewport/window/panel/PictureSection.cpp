#include "viewport/files/images/PictureFormat.h"
#include "viewport/window/panel/sections.h"

#include <utility>

#include <imgui_stdlib.h>

namespace vellum::viewport {

void PictureSection::draw(PanelContext& context) {
    if (context.workspace.scene() == nullptr || !sectionHeader("Picture", false)) {
        return;
    }
    ImGui::PushID("picture");
    ImGui::InputText("File", &path);
    hint("--out FILE: " + std::string(PICTURE_EXTENSIONS));
    bool const hasFormat = pictureFormatOf(path).has_value();
    if (!hasFormat) {
        faultLine("the name tells no format of pictures (known: " + std::string(PICTURE_EXTENSIONS) + ")");
    }
    checkBox("Own size", hasOwnSize, "--size WxH; else that of the scene in the window");
    if (hasOwnSize) {
        ImGui::InputInt2("Pixels", size);
        hint("--size WxH, each side 1 to 16384");
        for (int& side : size) {
            side = std::clamp(side, 1, PictureSize::LARGEST);
        }
    }
    checkBox("Transparent", context.options.pictures.front().background.isTransparent,
             "--background transparent");
    ImGui::BeginDisabled(!hasFormat);
    if (ImGui::Button("Save")) {
        save(context.requests);
    }
    hint("Ctrl+S");
    ImGui::SameLine();
    if (ImGui::Button("Copy command line")) {
        save(context.requests);
        context.requests.commandLine = std::exchange(context.requests.screenshot, std::nullopt);
    }
    hint("Copies the words that draw this picture without a window");
    ImGui::EndDisabled();
    ImGui::PopID();
}

void PictureSection::save(PanelRequests& requests) const {
    requests.screenshot = path;
    requests.screenshotSize = hasOwnSize ? std::optional<PictureSize>({size[0], size[1]}) : std::nullopt;
}

}  // namespace vellum::viewport
