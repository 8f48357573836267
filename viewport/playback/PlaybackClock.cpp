#include "viewport/playback/PlaybackClock.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

void PlaybackClock::play() {
    if (!looping && _isAtEnd()) {
        number = framesPerSecond > 0 ? 0 : count - 1;
    }
    playing = count > 1;
    phase = 0;
}

void PlaybackClock::pause() {
    playing = false;
    phase = 0;
}

void PlaybackClock::setCount(std::size_t count) {
    this->count = std::max<std::size_t>(count, 1);
    number = std::min(number, this->count - 1);
    playing = playing && this->count > 1;
}

void PlaybackClock::setSpeed(double framesPerSecond) {
    if (std::isfinite(framesPerSecond) && framesPerSecond != 0) {
        this->framesPerSecond = framesPerSecond;
    }
}

void PlaybackClock::show(std::size_t frame) {
    number = std::min(frame, count - 1);
    phase = 0;
}

void PlaybackClock::step(std::int64_t frames) {
    pause();
    _go(static_cast<double>(frames));
}

bool PlaybackClock::advance(double seconds, bool isFrameShown) {
    if (!playing || !isFrameShown || !std::isfinite(seconds) || seconds <= 0) {
        return false;
    }
    std::size_t const before = number;
    double const passed = phase + seconds * std::abs(framesPerSecond);
    double const whole = std::floor(passed);
    phase = std::isfinite(passed) ? passed - whole : 0;
    if (whole >= 1) {
        _go(framesPerSecond > 0 ? whole : -whole);
        playing = looping || !_isAtEnd();
    }
    return number != before;
}

void PlaybackClock::_go(double frames) {
    auto const all = static_cast<double>(count);
    double const target = static_cast<double>(number) + frames;
    double const inside = looping && std::isfinite(target) ? target - all * std::floor(target / all) : target;
    number = static_cast<std::size_t>(std::clamp(inside, 0.0, all - 1));
}

std::vector<std::size_t> PlaybackClock::upcoming(std::size_t most) const {
    std::vector<std::size_t> frames;
    bool const isForward = framesPerSecond > 0;
    std::size_t next = number;
    for (std::size_t i = 0; i < std::min(most, count); ++i) {
        frames.push_back(next);
        bool const isLast = isForward ? next + 1 == count : next == 0;
        if (isLast && !looping) {
            break;
        }
        next = isForward ? (isLast ? 0 : next + 1) : (isLast ? count - 1 : next - 1);
    }
    return frames;
}

}  // namespace vellum::viewport
