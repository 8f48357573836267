#pragma once

#include "foundation/geometry/Color4.h"
#include "toolkit/ColorMap.h"
#include "viewport/scene/ParticleOptions.h"

#include <cstddef>
#include <string>

namespace vellum::viewport {

/// Which values colors stand for, and how they are handed to renderers.
///
/// Renderers color by the length of a vector, in single precision. Lengths are never negative and their
/// squares must be floats. Values, or their logarithms, are therefore shifted and scaled first: the smallest
/// value that needs a color of its own becomes 0 or more, and the range ends near 1, whatever the units of
/// the file.
struct ValueScale {
    std::string name;                ///< of the quantity
    std::string unit;                ///< of the file; may be empty
    ValueRange range{0, 0};          ///< the values (no logarithms) of the colors at both ends
    bool isLogarithmic = false;      ///< colors are spread over the logarithms; the range begins above 0 then
    bool isWhole = false;            ///< all values are whole numbers
    bool isExceeded = false;         ///< some value is above the range
    std::size_t undefinedCount = 0;  ///< values without a place on the scale; they have a color of their own
    double offset = 0;               ///< the value, or the logarithm, that renderers get as 0
    double reach = 1;                ///< the difference that renderers get as 1; above 0

    /// Whether a value has a place on the scale: NaN has none, and on a logarithmic one only what is above 0
    /// has one.
    bool isDefined(double value) const;

    /// 0 at the range's low end, 1 at the high one; below 0 and above 1 outside the range. Infinities are
    /// outside of all ranges. NaN where the value is not defined. Without an extent of the range its value is
    /// at 0.
    double place(double value) const;

    /// The value at a place of the range, 0 to 1.
    double valueAt(double place) const;

    /// The length that renderers get for a value. Infinity is above all ranges, negative infinity is below;
    /// what is not defined gives 0.
    float toMagnitude(double value) const;

    float lowMagnitude() const { return toMagnitude(range.low); }

    /// A hair above the range's end, so that rounding leaves the largest value itself inside. Without an
    /// extent of the range all values have the low color.
    float highMagnitude() const;

    /// "temperature [K]"
    std::string title() const { return unit.empty() ? name : name + " [" + unit + "]"; }
};

/// The colors of places on a scale: those of a named map, or a ramp of two colors, which goes on below the
/// range.
class ValueColors {
public:
    ValueColors() : ValueColors(RampColors{}, {}) {}

    /// \param colorMap one of toolkit::ColorMap::names(); empty: the ramp
    ValueColors(RampColors const& ramp, std::string const& colorMap);

    /// See ValueScale::place().
    Color4<float> at(double place) const;

    Color4<float> above() const { return map.above; }
    Color4<float> undefined() const { return map.undefined; }  ///< of what has no place

private:
    toolkit::ColorMap map;
    bool isRamp;
};

}  // namespace vellum::viewport
