#pragma once

#include "foundation/geometry/Color4.h"
#include "toolkit/export.h"

#include <string>
#include <vector>

namespace vellum::toolkit {

/// The colors of a range of values: equally spaced over it, blended in between.
///
///     look.colors = ColorMap::named("viridis");
///     look.colors = {{blue, red}, white};                  // two colors: what the library's ramp does itself
struct VL_TOOLKIT_EXPORT ColorMap {
    std::vector<Color4<float>> colors{{0, 0, 1, 1},
                                      {1, 0, 0, 1}};  ///< opacity is ignored; without any all is `above`
    Color4<float> above{1, 1, 1, 1};                  ///< of values above the range
    Color4<float> undefined{0.5F, 0.5F, 0.5F, 1};     ///< of values that are not a number

    /// The color of a place in the range.
    /// \param t 0 at the low end, 1 at the high one. Below 0 the first color, above 1 `above`, for NaN
    /// `undefined`.
    Color4<float> at(double t) const;

    /// A map by its name; another name gives "viridis". Above the range they are white, "gray" is red.
    ///
    ///     "viridis", "plasma", "magma", "inferno", "cividis"   as published; from dark to light in even steps
    ///     "glacier", "ember", "moss"                           blue, red and green, from dark to light in even steps
    ///     "turbo"                                              as published: a rainbow; not for small differences
    ///     "coolwarm", "tealrust"                               two hues, light in the middle: for values around a
    ///                                                          center; the first one as published
    ///     "gray"                                               from black to white
    ///
    /// The published ones are within 5/255 of their tables.
    static ColorMap named(std::string const& name);

    static std::vector<std::string> names();  ///< Of all maps, in the order above.

    bool operator==(ColorMap const& other) const {
        return colors == other.colors && above == other.above && undefined == other.undefined;
    }
    bool operator!=(ColorMap const& other) const { return !(*this == other); }
};

}  // namespace vellum::toolkit
