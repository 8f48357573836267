#pragma once

#include "foundation/geometry/Vector3.h"

#include <algorithm>

/// How foam and the colors of skies blend. A color is red, green and blue, 0 to 1, and may exceed 1.
namespace vellum::viewport {

/// 0 up to `from`, 1 beyond `to`, and a smooth step between them.
template <class Real>
Real smoothStep(Real from, Real to, Real value) {
    Real const t = std::clamp((value - from) / (to - from), Real(0), Real(1));
    return t * t * (3 - 2 * t);
}

/// The color `part` of the way from one color to another.
inline Vector3<double> blend(Vector3<double> const& from, Vector3<double> const& to, double part) {
    return from * (1 - part) + to * part;
}

}  // namespace vellum::viewport
