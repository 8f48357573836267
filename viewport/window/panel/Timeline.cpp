#include "viewport/window/panel/Timeline.h"

#include "viewport/drawing/view/Navigation.h"

#include <algorithm>
#include <string>

#include <imgui.h>

namespace vellum::viewport {

std::optional<Options> Timeline::draw(Workspace& workspace, std::optional<Place> const& place) {
    Clock::time_point const now = Clock::now();
    double const passed = std::chrono::duration<double>(now - last).count();
    last = now;
    FrameLine const* const line = workspace.frames();
    if (line == nullptr || workspace.scene() == nullptr) {
        clock.pause();
        return std::nullopt;
    }
    std::size_t const count = line->count();
    clock.setCount(count);
    if (line->perSecond() != ownSpeed) {
        ownSpeed = line->perSecond();
        clock.setSpeed(ownSpeed > 0 ? ownSpeed : PlaybackClock::STANDARD_SPEED);
    }
    bool const isWaiting = workspace.isFrameAwaited() || workspace.isLoading();
    if (workspace.fault()) {
        clock.pause();
    }
    if (!clock.isPlaying() && !isWaiting) {
        clock.show(workspace.shownFrame());
    }
    std::size_t const before = clock.frame();
    clock.advance(passed, !isWaiting);

    if (place) {
        _drawBar(workspace, *place);
    }
    if (clock.frame() == before) {
        return std::nullopt;
    }
    Options options = workspace.options();
    line->choose(options, clock.frame());
    _hold(options, workspace);
    return options;
}

void Timeline::togglePlaying(Workspace& workspace) {
    if (clock.isPlaying()) {
        clock.pause();
    } else if (workspace.frames() != nullptr) {
        clock.play();
    }
}

void Timeline::_drawBar(Workspace& workspace, Place const& place) {
    FrameLine const& line = *workspace.frames();
    ImGui::SetNextWindowPos(
        {static_cast<float>(place.left), static_cast<float>(place.bottom - place.height)});
    ImGui::SetNextWindowSize({static_cast<float>(place.width), static_cast<float>(place.height)});
    ImGui::SetNextWindowBgAlpha(0.6F);
    ImGui::Begin("Frames", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoSavedSettings |
                     ImGuiWindowFlags_NoBringToFrontOnFocus);
    _drawButtons(workspace);
    ImGui::SameLine();
    ImGui::SetNextItemWidth(std::max(40.0F, ImGui::GetContentRegionAvail().x));
    int number = static_cast<int>(clock.frame());
    std::string const caption = line.caption(clock.frame());
    std::string const format =
        "frame %d of 0 to " + std::to_string(line.count() - 1) + (caption.empty() ? "" : ", " + caption);
    if (ImGui::SliderInt("##frame", &number, 0, static_cast<int>(line.count()) - 1, format.c_str(),
                         ImGuiSliderFlags_AlwaysClamp)) {
        clock.show(static_cast<std::size_t>(std::max(0, number)));
    }
    ImGui::End();
}

void Timeline::_drawButtons(Workspace& workspace) {
    if (ImGui::Button(clock.isPlaying() ? "Pause" : "Play")) {
        togglePlaying(workspace);
    }
    ImGui::SameLine();
    if (ImGui::Button("<")) {
        clock.step(-1);
    }
    ImGui::SameLine();
    if (ImGui::Button(">")) {
        clock.step(1);
    }
    ImGui::SameLine();
    bool isLooping = clock.isLooping();
    if (ImGui::Checkbox("Loop", &isLooping)) {
        clock.setLooping(isLooping);
    }
    ImGui::SameLine();
    ImGui::Checkbox("Range follows", &followsRange);
    ImGui::SameLine();
    ImGui::SetNextItemWidth(ImGui::GetFontSize() * 5);
    auto speed = static_cast<float>(clock.speed());
    if (ImGui::DragFloat("##speed", &speed, 0.2F, 0.1F, 100, "%.1f/s")) {
        clock.setSpeed(static_cast<double>(speed));
    }
}

/// Keeps what would jump from frame to frame.
void Timeline::_hold(Options& options, Workspace& workspace) const {
    CameraSpec& camera = options.pictures.front().camera;
    if (!camera.isAlongAxis() && !camera.position) {
        // A move by nothing gives the camera that was chosen for this frame.
        camera = Navigation(workspace.scene()->scene(), workspace.scene()->camera()).pan(0, 0);
    }
    ParticleLook const& look = workspace.scene()->shown().look;
    auto const& scale = look.scale ? look.scale : look.meshScale;
    if (followsRange) {
        options.particles.range.reset();
    } else if (!options.particles.range && scale && scale->range.low < scale->range.high) {
        options.particles.range = scale->range;
    }
}

}  // namespace vellum::viewport
