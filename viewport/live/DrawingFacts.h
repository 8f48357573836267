#pragma once

#include "toolkit/ParticleRenderer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace vellum::viewport {

/// What the last drawing of a scene took.
struct DrawingFacts {
    double framesPerSecond = 0;  ///< while they follow each other; 0: the last one stands alone
    double cpuSeconds = 0;       ///< until OpenGL had all calls
    double seconds = 0;          ///< until it had drawn
    /// How the first cloud of particles was drawn, with the number of those of all clouds; nothing: there is
    /// none.
    std::optional<toolkit::ParticleDrawing> particles;
};

/// How many frames follow each other in a second. A pause begins the count anew: frames that are drawn only
/// when something changes say nothing about how fast they could be.
class FrameRate {
public:
    static constexpr double LONGEST_PAUSE = 0.5;  ///< seconds

    /// A frame is drawn.
    /// \param time seconds, of any clock that never goes back
    void count(double time) {
        if (length > 0 && time - times[(next + SIZE - 1) % SIZE] > LONGEST_PAUSE) {
            length = 0;
        }
        times[next] = time;
        next = (next + 1) % SIZE;
        length = std::min(length + 1, SIZE);
    }

    /// Of the last frames without a pause; 0 where there are fewer than two.
    double perSecond() const {
        double const taken = times[(next + SIZE - 1) % SIZE] - times[(next + SIZE - length) % SIZE];
        return length > 1 && taken > 0 ? static_cast<double>(length - 1) / taken : 0;
    }

private:
    static constexpr std::size_t SIZE = 16;

    std::array<double, SIZE> times{};  // a ring
    std::size_t next = 0;
    std::size_t length = 0;
};

}  // namespace vellum::viewport
