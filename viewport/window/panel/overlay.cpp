#include "viewport/text/shortest_number.h"
#include "viewport/window/panel/sections.h"

#include <cmath>
#include <cstdio>

namespace vellum::viewport {

namespace {

char const* nameOf(toolkit::ParticlePath path) {
    switch (path) {
    case toolkit::ParticlePath::BUFFER_AND_EFFECT:
        return "buffer, shader";
    case toolkit::ParticlePath::CHUNKS_AND_EFFECT:
        return "chunks, shader";
    case toolkit::ParticlePath::BUFFER:
        return "buffer";
    case toolkit::ParticlePath::MEMORY:
        return "memory";
    case toolkit::ParticlePath::NONE:
        break;
    }
    return "nothing";
}

void row(char const* name, std::string const& value) {
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::TextDisabled("%s", name);
    ImGui::TableNextColumn();
    ImGui::TextUnformatted(value.c_str());
}

/// With three digits, which is as much as can be read while they change.
std::string rounded(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", number);
    return text;
}

/// As the driver tells it; asked once in a second.
unsigned int freeMegabytes(toolkit::Layer& layer) {
    static unsigned int kilobytes = 0;
    static double askedAt = -1;
    double const now = ImGui::GetTime();
    if (askedAt < 0 || now - askedAt > 1) {
        askedAt = now;
        kilobytes = layer.Core_RL_GL::getFreeGpuMemory();
    }
    return kilobytes / 1024;
}

}  // namespace

void drawOverlay(Workspace& workspace, float right, float top) {
    LiveScene* const scene = workspace.scene();
    if (scene == nullptr) {
        return;
    }
    float const gap = ImGui::GetFontSize() * 0.6F;
    ImGui::SetNextWindowPos({right - gap, top + gap}, ImGuiCond_Always, {1, 0});
    ImGui::SetNextWindowBgAlpha(0.8F);
    ImGui::Begin("Facts", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                     ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoInputs | ImGuiWindowFlags_NoNav |
                     ImGuiWindowFlags_NoFocusOnAppearing);
    DrawingFacts const& facts = scene->facts();
    if (ImGui::BeginTable("facts", 2, ImGuiTableFlags_SizingFixedFit)) {
        if (facts.framesPerSecond > 0) {
            row("Frames", rounded(facts.framesPerSecond) + " per second");
        }
        row("CPU", rounded(facts.cpuSeconds * 1000) + " ms");
        row("Drawing", rounded(facts.seconds * 1000) + " ms");
        if (facts.particles) {
            row("Particles", std::to_string(facts.particles->count));
            row("Path", nameOf(facts.particles->path));
        }
        unsigned int const megabytes = freeMegabytes(workspace.layer());
        row("GPU memory", megabytes > 0 ? std::to_string(megabytes) + " MB free" : "unknown");
        // Turned back into the axes of the files, where edges may have become negative.
        Box3<double> const& box = scene->scene().box();
        Vector3<double> const edges =
            scene->scene().directionToFile(box.max - box.min) * (1 / scene->scene().unitsPerFileUnit());
        row("Size", shortNumber(std::abs(edges.x)) + " x " + shortNumber(std::abs(edges.y)) + " x " +
                        shortNumber(std::abs(edges.z)));
        ImGui::EndTable();
    }
    ImGui::End();
}

}  // namespace vellum::viewport
