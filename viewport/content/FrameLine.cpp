#include "viewport/content/FrameLine.h"

#include "viewport/text/shortest_number.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

/// Which of the moving files are on the line: a number and a time cannot both be chosen.
std::vector<std::size_t> placesOn(Content const& content) {
    std::vector<std::size_t> numbered;
    std::vector<std::size_t> animated;
    for (std::size_t i = 0; i < content.moving.size(); ++i) {
        MovingFile const& file = content.moving[i];
        if (file.sequence.count() > 1) {
            (file.isAnimation() ? animated : numbered).push_back(i);
        }
    }
    return numbered.empty() ? animated : numbered;
}

}  // namespace

FrameLine::FrameLine(Content const& content) : places(placesOn(content)) {
    if (places.empty()) {
        return;
    }
    FrameSequence const& first = content.moving[places.front()].sequence;
    framesPerSecond = content.moving[places.front()].framesPerSecond;
    timesteps = first.timesteps();
    times = first.times();
    frameCount = first.count();
    for (std::size_t const place : places) {
        std::size_t const each = content.moving[place].sequence.count();
        isUneven = isUneven || each != frameCount;
        frameCount = std::min(frameCount, each);
    }
}

std::size_t FrameLine::shownIn(Content const& content) {
    std::vector<std::size_t> const places = placesOn(content);
    return places.empty() ? 0 : content.moving[places.front()].shown;
}

std::optional<std::size_t> FrameLine::frameOf(Options const& options) const {
    // Decimals of a time are not those of a whole number of frames.
    constexpr double SLACK = 1e-9;
    if (isAnimation()) {
        double const number = options.time.value_or(-1) * framesPerSecond;
        double const whole = std::round(number);
        bool const isOne =
            std::abs(number - whole) <= SLACK * std::max(1.0, whole) && whole >= 0 && whole < frameCount;
        return isOne ? std::optional<std::size_t>(static_cast<std::size_t>(whole)) : std::nullopt;
    }
    if (options.time || (isUneven && !options.particles.frame)) {
        return std::nullopt;
    }
    std::size_t const frame = options.particles.frame.value_or(frameCount - 1);
    return frame < frameCount ? std::optional<std::size_t>(frame) : std::nullopt;
}

void FrameLine::choose(Options& options, std::size_t frame) const {
    if (isAnimation()) {
        options.time = static_cast<double>(frame) / framesPerSecond;
    } else {
        options.particles.frame = frame;
        options.time.reset();
    }
}

std::string FrameLine::caption(std::size_t frame) const {
    if (isAnimation()) {
        return shortNumber(static_cast<double>(frame) / framesPerSecond) + " of " +
               shortNumber(static_cast<double>(frameCount - 1) / framesPerSecond) + " s";
    }
    std::string text = frame < timesteps.size() ? "step " + std::to_string(timesteps[frame]) : std::string();
    if (frame < times.size() && times[frame]) {
        text += (text.empty() ? "time " : ", time ") + shortNumber(*times[frame]);
    }
    return text;
}

}  // namespace vellum::viewport
