#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/ParticleLook.h"

#include <algorithm>
#include <cmath>

/// \file
/// How far the arrows of drawParticles() reach, so that a view can frame them whole. Plain arithmetic: no GL
/// calls.

namespace vellum::toolkit {

/// The shape of an arrow from its tail to its tip, in parts of its length: its head is a ring around the axis
/// at most.
///
///            width
///              |
///     tail ----+----------- tip          near, far: where on the axis the head can be widest
///              |
struct ArrowShape {
    double near;
    double far;
    double width;  ///< of the head, from the axis

    static constexpr ArrowShape of(ParticleMode mode) {
        // Lines: the back corners of the head lie a third of the length from the tail, 0.8 radians to either
        // side on the screen; the more the arrow is foreshortened, the nearer they are to the tail. Solid:
        // the base of the head is a square of 0.1332 at a third of the length from the tip.
        return mode == ParticleMode::SOLID_ARROWS ? ArrowShape{0.667, 0.667, 0.0943}
                                                  : ArrowShape{0, 0.2323, 0.2392};
    }
};

/// Widens a box so that it holds an arrow.
/// \param mode ARROWS or SOLID_ARROWS
/// \param along from tail to tip: the particle's vector times ParticleLook::size. Vectors and positions that are not
///     finite widen nothing.
inline void includeArrow(Box3<double>& box, ParticleMode mode, Vector3<double> const& position,
                         Vector3<double> const& along) {
    double const reach = length(along);
    if (!std::isfinite(reach) || !std::isfinite(length(position))) {
        return;
    }
    auto const include = [](double& least, double& most, double value, double around) {
        least = std::min(least, value - around);
        most = std::max(most, value + around);
    };
    ArrowShape const shape = ArrowShape::of(mode);
    auto const includeAlongAxis = [&](double& least, double& most, double start, double step) {
        // A ring reaches as far along an axis as the sine of the angle between this axis and the arrow.
        double const cosine = reach > 0 ? step / reach : 1;
        double const around = shape.width * reach * std::sqrt(std::max(0.0, 1 - cosine * cosine));
        include(least, most, start, 0);
        include(least, most, start + step, 0);
        include(least, most, start + step * shape.near, around);
        include(least, most, start + step * shape.far, around);
    };
    includeAlongAxis(box.min.x, box.max.x, position.x, along.x);
    includeAlongAxis(box.min.y, box.max.y, position.y, along.y);
    includeAlongAxis(box.min.z, box.max.z, position.z, along.z);
}

}  // namespace vellum::toolkit
