#include "viewport/window/panel/widgets.h"

#include <cmath>
#include <filesystem>
#include <system_error>

#include <imgui_stdlib.h>

namespace vellum::viewport {

void hint(char const* text) {
    if (*text == '\0' || !ImGui::IsItemHovered()) {
        return;
    }
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(ImGui::GetFontSize() * 26);
    ImGui::TextUnformatted(text);
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
}

void hint(std::string const& text) {
    hint(text.c_str());
}

void faultLine(std::string const& text) {
    ImGui::PushStyleColor(ImGuiCol_Text, ImVec4(1.0F, 0.45F, 0.40F, 1));
    ImGui::TextWrapped("%s", text.c_str());
    ImGui::PopStyleColor();
}

void paleLine(std::string const& text) {
    ImGui::PushStyleColor(ImGuiCol_Text, ImGui::GetStyleColorVec4(ImGuiCol_TextDisabled));
    ImGui::TextWrapped("%s", text.c_str());
    ImGui::PopStyleColor();
}

bool sectionHeader(char const* label, bool isOpenFirst) {
    return ImGui::CollapsingHeader(label, isOpenFirst ? ImGuiTreeNodeFlags_DefaultOpen : 0);
}

bool checkBox(char const* label, bool& value, char const* what) {
    bool const isChanged = ImGui::Checkbox(label, &value);
    hint(what);
    return isChanged;
}

void roundAsOption(Color4<float>& color) {
    for (float* const part : {&color.r, &color.g, &color.b}) {
        *part = std::round(*part * 255.0F) / 255.0F;
    }
}

bool colorField(char const* label, Color4<float>& color, char const* what) {
    bool const isChanged =
        ImGui::ColorEdit3(label, &color.r, ImGuiColorEditFlags_NoInputs | ImGuiColorEditFlags_NoTooltip);
    if (isChanged) {
        roundAsOption(color);
    }
    hint(what);
    return isChanged;
}

bool numberField(char const* label, double& value, char const* what) {
    bool const isChanged = ImGui::InputDouble(label, &value, 0, 0, "%.6g");
    hint(what);
    return isChanged;
}

bool CheckedText::draw(char const* label, std::string& value, char const* what, Check const& check) {
    if (value != taken) {
        taken = value;
        text = value;
        lack.clear();
    }
    bool const isEntered = ImGui::InputText(label, &text, ImGuiInputTextFlags_EnterReturnsTrue);
    bool const isLeft = ImGui::IsItemDeactivatedAfterEdit();
    hint(what);
    bool isChanged = false;
    if (isEntered || isLeft) {
        lack = check(text).value_or("");
        if (lack.empty() && text != value) {
            value = text;
            taken = text;
            isChanged = true;
        }
    }
    if (!lack.empty()) {
        faultLine(lack);
    }
    return isChanged;
}

std::optional<std::string> lackOfFile(std::string const& path) {
    std::error_code error;
    if (path.empty() || std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    return std::filesystem::is_directory(path, error) ? "is a folder" : "there is no such file";
}

}  // namespace vellum::viewport
