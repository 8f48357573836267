#pragma once

#include "foundation/geometry/Color4.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include <imgui.h>

namespace vellum::viewport {

/// What the widget before is for, shown under the cursor: the option of the command line first.
void hint(char const* text);
void hint(std::string const& text);

/// A line in the color of faults, wrapped.
void faultLine(std::string const& text);
/// A paler line, wrapped.
void paleLine(std::string const& text);

/// A header of the panel; whether its section is open.
bool sectionHeader(char const* label, bool isOpenFirst);

/// The same as ImGui's, with a hint.
bool checkBox(char const* label, bool& value, char const* what);

/// Makes a color one that an option can say, so that what is saved looks the same.
void roundAsOption(Color4<float>& color);

/// Red, green and blue; a click opens the whole editor.
bool colorField(char const* label, Color4<float>& color, char const* what);

/// A number that is typed.
bool numberField(char const* label, double& value, char const* what);

/// A choice among some values.
template <class Value, std::size_t SIZE>
bool choice(char const* label, Value& value, std::array<std::pair<Value, char const*>, SIZE> const& choices,
            char const* what) {
    auto const found =
        std::find_if(choices.begin(), choices.end(), [&](auto const& entry) { return entry.first == value; });
    bool isChanged = false;
    bool const isOpen = ImGui::BeginCombo(label, found != choices.end() ? found->second : "");
    if (!isOpen) {
        hint(what);
    } else {
        for (auto const& entry : choices) {
            if (ImGui::Selectable(entry.second, entry.first == value) && !(entry.first == value)) {
                value = entry.first;
                isChanged = true;
            }
        }
        ImGui::EndCombo();
    }
    return isChanged;
}

/// A text that is taken over when it is complete: Enter, or the field is left. What is wrong with it is said
/// under the field, which keeps it.
class CheckedText {
public:
    /// Says what is wrong with a text; nothing where it may be taken.
    using Check = std::function<std::optional<std::string>(std::string const&)>;

    /// Whether `value` was changed. A value that was changed elsewhere replaces the text.
    bool draw(char const* label, std::string& value, char const* what, Check const& check);

private:
    std::string text;
    std::string taken;  // the value that the text was taken from, or became
    std::string lack;
};

/// A check for CheckedText: a file that can be read, or no text.
std::optional<std::string> lackOfFile(std::string const& path);

}  // namespace vellum::viewport
