#include "viewport/scene/ParticleLook.h"

#include "viewport/scene/Quantity.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr float LARGEST_MAGNITUDE = 1e18F;  // its square is still a float

/// Renderers take floats.
bool isFinite(Vector3<double> const& v) {
    constexpr double MOST = std::numeric_limits<float>::max();
    return std::abs(v.x) <= MOST && std::abs(v.y) <= MOST && std::abs(v.z) <= MOST;
}

std::string joined(std::vector<std::string> const& names) {
    std::string text;
    for (std::string const& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

/// The likeliest quantity that all files have; empty where there is none. The color of an id says nothing.
std::string commonQuantity(std::vector<ParticleFrame> const& frames) {
    for (std::string const& name : Quantity::names(frames.front())) {
        bool const isCommon = std::all_of(frames.begin(), frames.end(), [&name](ParticleFrame const& frame) {
            return Quantity::find(frame, name).has_value();
        });
        if (isCommon && name != "id") {
            return name;
        }
    }
    return {};
}

struct Ends {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
    bool hasBeyond = false;  // there is an infinity or NaN

    bool isEmpty() const { return !(least <= most); }
};

/// Adds the values of all particles that have a place. Infinite values have no part in a range: it would have
/// no colors left for the others.
void include(Ends& ends, ParticleFrame const& frame, Quantity const& quantity) {
    for (std::size_t i = 0; i < frame.positions.size(); ++i) {
        double const value = quantity[i];
        if (!std::isfinite(value)) {
            ends.hasBeyond = ends.hasBeyond || !(value < 0);
        } else if (isFinite(frame.positions[i])) {
            ends.least = std::min(ends.least, value);
            ends.most = std::max(ends.most, value);
        }
    }
}

ParticleScale scaleOf(std::string const& name, bool hasArrows, std::vector<ParticleFrame> const& frames,
                      std::optional<ValueRange> const& range) {
    Ends ends;
    bool isSpeed = false;
    for (ParticleFrame const& frame : frames) {
        // Arrows show the velocities, whatever a column of the name "speed" holds.
        Quantity const quantity = hasArrows ? *Quantity::speed(frame) : *Quantity::find(frame, name);
        isSpeed = isSpeed || quantity.isSpeed();
        include(ends, frame, quantity);
    }
    if (ends.isEmpty()) {
        ends.least = ends.most = range ? range->low : 0;
    }
    ParticleScale scale;
    scale.name = name;
    scale.range = range.value_or(ValueRange{ends.least, ends.most});
    scale.isExceeded = ends.hasBeyond || ends.most > scale.range.high;
    // Speeds cannot be shifted: renderers get the velocities themselves, whose lengths they are.
    scale.offset = isSpeed ? 0 : std::min(ends.least, scale.range.low);
    double const reach = scale.range.high - scale.offset;
    scale.unit = reach > 0 && std::isfinite(reach) ? reach : 1;
    return scale;
}

std::optional<Fault> missingIn(ParticleFrame const& frame, bool hasArrows, std::string const& channel) {
    if (hasArrows && frame.velocity() == nullptr) {
        return Fault{frame.file, "has no velocities to be shown as arrows"};
    }
    if (!channel.empty() && !Quantity::find(frame, channel)) {
        return Fault{frame.file,
                     "has no channel '" + channel + "' (it has: " + joined(Quantity::names(frame)) + ")"};
    }
    return std::nullopt;
}

std::optional<Fault> lossOf(ParticleFrame const& frame, ParticleMode mode) {
    std::size_t const all = frame.positions.size();
    std::size_t lost = 0;
    for (std::size_t i = 0; i < all; ++i) {
        lost += isDrawable(frame, i, mode) ? 0 : 1;
    }
    if (lost == 0) {
        return std::nullopt;
    }
    return Fault{frame.file, std::to_string(lost) + " of " + std::to_string(all) +
                                 " particles are left out: their positions" +
                                 (isOfArrows(mode) ? " or velocities" : "") + " are not finite"};
}

}  // namespace

float ParticleScale::toMagnitude(double value) const {
    if (!std::isfinite(value)) {
        return value < 0 ? 0.0F : LARGEST_MAGNITUDE;
    }
    double const magnitude = (value - offset) / unit;
    return static_cast<float>(std::min(magnitude, static_cast<double>(LARGEST_MAGNITUDE)));
}

float ParticleScale::highMagnitude() const {
    float const extent = toMagnitude(range.high) - lowMagnitude();
    return extent > 0 ? toMagnitude(range.high) + 1e-5F * extent : lowMagnitude() + 1;
}

bool isDrawable(ParticleFrame const& frame, std::size_t particle, ParticleMode mode) {
    return isFinite(frame.positions[particle]) &&
           (!isOfArrows(mode) || isFinite(vectorOf(frame, *frame.velocity(), particle)));
}

Result<ParticleLook> lookOf(std::vector<ParticleFrame> const& frames, ParticleOptions const& options) {
    ParticleLook look;
    if (frames.empty()) {
        return look;
    }
    std::size_t count = 0;
    for (ParticleFrame const& frame : frames) {
        count += frame.positions.size();
    }
    look.mode = options.mode.value_or(count > MOST_SPHERES ? ParticleMode::POINTS : ParticleMode::SPHERES);
    look.size = options.size;
    look.isThinned = options.percent < 100;
    bool const hasArrows = isOfArrows(look.mode);
    if (hasArrows && !options.channel.empty() && options.channel != Quantity::SPEED_NAME) {
        return Fault{frames.front().file, "arrows are colored by speed, not by '" + options.channel + "'"};
    }
    for (ParticleFrame const& frame : frames) {
        if (std::optional<Fault> const missing = missingIn(frame, hasArrows, options.channel)) {
            return *missing;
        }
    }
    std::string name = hasArrows ? Quantity::SPEED_NAME : options.channel;
    if (name.empty()) {
        name = commonQuantity(frames);
    }
    if (!name.empty()) {
        look.scale = scaleOf(name, hasArrows, frames, options.range);
    }
    for (ParticleFrame const& frame : frames) {
        if (std::optional<Fault> const loss = lossOf(frame, look.mode)) {
            look.notes.push_back(*loss);
        }
    }
    return look;
}

}  // namespace vellum::viewport
