#include "viewport/window/Interface.h"

#include "viewport/drawing/overlays/TextMask.h"

#include <filesystem>
#include <system_error>

#include <imgui.h>
#include <imgui_impl_glfw.h>
#include <imgui_impl_opengl2.h>

namespace vellum::viewport {

namespace {

constexpr float LETTERS = 15;  // points

// First and last characters of the blocks that texts use: of European scripts, marks, arrows, mathematics and
// symbols.
constexpr ImWchar RANGES[] = {0x0020, 0x024F, 0x0370, 0x052F, 0x2010, 0x2027, 0x2030,
                              0x205E, 0x2070, 0x209F, 0x20A0, 0x20BF, 0x2190, 0x21FF,
                              0x2200, 0x22FF, 0x25A0, 0x25FF, 0x2600, 0x267F, 0};

/// The letters of the texts in pictures, or ImGui's own where there are none.
void addFont(ImGuiIO& io, float pixels) {
    for (std::string const& file : TextWriter::systemFonts()) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(file, ignored) &&
            io.Fonts->AddFontFromFileTTF(file.c_str(), pixels, nullptr, RANGES) != nullptr) {
            return;
        }
    }
    ImFontConfig config;
    config.SizePixels = pixels;
    io.Fonts->AddFontDefault(&config);
}

ImGuiStyle styleOfScale(float scale) {
    ImGuiStyle style;
    ImGui::StyleColorsDark(&style);
    style.WindowRounding = 0;
    style.FrameRounding = 3;
    style.GrabRounding = 3;
    style.WindowBorderSize = 0;
    style.FramePadding = {6, 3};
    style.ItemSpacing = {7, 5};
    style.Colors[ImGuiCol_WindowBg] = {0.11F, 0.12F, 0.14F, 0.97F};
    style.Colors[ImGuiCol_Header] = {0.20F, 0.24F, 0.30F, 1};
    style.ScaleAllSizes(scale);
    return style;
}

}  // namespace

Interface::Interface(Window& window) {
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;  // the layout is fixed; the program keeps what is worth keeping
    ImGui::GetIO().ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    ImGui_ImplGlfw_InitForOpenGL(window.handle(), true);
    ImGui_ImplOpenGL2_Init();
}

Interface::~Interface() {
    ImGui_ImplOpenGL2_Shutdown();
    ImGui_ImplGlfw_Shutdown();
    ImGui::DestroyContext();
}

void Interface::begin(WindowUnits const& units) {
    _setScale(units.pixelsPerPoint, units.pixelsPerUnit);
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
}

void Interface::end() {
    ImGui::Render();
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
}

bool Interface::hasMouse() const {
    return ImGui::GetIO().WantCaptureMouse;
}

bool Interface::hasKeys() const {
    return ImGui::GetIO().WantTextInput;
}

bool Interface::isActive() const {
    return ImGui::IsAnyItemActive();
}

void Interface::_setScale(double pixelsPerPoint, double pixelsPerUnit) {
    double const newScale = pixelsPerPoint / pixelsPerUnit;
    if (newScale == scale) {
        return;
    }
    scale = newScale;
    auto const factor = static_cast<float>(newScale);
    ImGuiIO& io = ImGui::GetIO();
    io.Fonts->Clear();
    // As many pixels as the letters cover; ImGui measures in units of the window.
    addFont(io, LETTERS * static_cast<float>(pixelsPerPoint));
    io.FontGlobalScale = static_cast<float>(1 / pixelsPerUnit);
    ImGui::GetStyle() = styleOfScale(factor);
    ImGui_ImplOpenGL2_DestroyDeviceObjects();
}

}  // namespace vellum::viewport
