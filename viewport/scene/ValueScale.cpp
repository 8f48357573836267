#include "viewport/scene/ValueScale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr float LARGEST_MAGNITUDE = 1e18F;  // its square is still a float

/// What is spread evenly.
double spread(double value, bool isLogarithmic) {
    return isLogarithmic ? std::log10(value) : value;
}

}  // namespace

bool ValueScale::isDefined(double value) const {
    return isLogarithmic ? value > 0 : !std::isnan(value);
}

double ValueScale::place(double value) const {
    if (!isDefined(value)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    double const low = spread(range.low, isLogarithmic);
    double const high = spread(range.high, isLogarithmic);
    double const at = spread(value, isLogarithmic);
    if (!(high > low)) {
        return at == low ? 0 : at < low ? -1 : 2;
    }
    // Halved, the whole extent of a double's range does not overflow.
    return (at / 2 - low / 2) / (high / 2 - low / 2);
}

double ValueScale::valueAt(double place) const {
    if (isLogarithmic) {
        return std::pow(10.0, std::log10(range.low) * (1 - place) + std::log10(range.high) * place);
    }
    return range.low * (1 - place) + range.high * place;
}

float ValueScale::toMagnitude(double value) const {
    if (!isDefined(value)) {
        return 0;
    }
    double const at = spread(value, isLogarithmic);
    if (!std::isfinite(at)) {
        return at < 0 ? 0.0F : LARGEST_MAGNITUDE;
    }
    double const distance = at - offset;
    double const magnitude = std::isfinite(distance) ? distance / reach : at / reach - offset / reach;
    return static_cast<float>(std::min(magnitude, static_cast<double>(LARGEST_MAGNITUDE)));
}

float ValueScale::highMagnitude() const {
    float const extent = toMagnitude(range.high) - lowMagnitude();
    return extent > 0 ? toMagnitude(range.high) + 1e-5F * extent : lowMagnitude() + 1;
}

ValueColors::ValueColors(RampColors const& ramp, std::string const& colorMap) : isRamp(colorMap.empty()) {
    if (isRamp) {
        map.colors = {ramp.low, ramp.high};
        map.above = ramp.above;
    } else {
        map = toolkit::ColorMap::named(colorMap);
    }
}

Color4<float> ValueColors::at(double place) const {
    if (isRamp && place < 0) {
        auto const t = static_cast<float>(std::max(place, -1e6));
        auto const onward = [t](float low, float high) {
            return std::clamp(low + (high - low) * t, 0.0F, 1.0F);
        };
        Color4<float> const& low = map.colors[0];
        Color4<float> const& high = map.colors[1];
        return {onward(low.r, high.r), onward(low.g, high.g), onward(low.b, high.b), 1};
    }
    return map.at(place);
}

}  // namespace vellum::viewport
