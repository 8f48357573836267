#pragma once

#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/points.h"
#include "viewport/files/particles/ParticleFrame.h"

#include <array>
#include <cstddef>
#include <optional>

namespace vellum::viewport {

/// The places of a frame's particles, in units of the file: as the file has them, or moved into the box by
/// whole multiples of its periodic edges. A particle that is in the box already keeps its place to the last
/// digit. The frame must outlive it.
class ParticlePlaces {
public:
    /// \param isWrapped moved into the box; without an effect where canWrap() is false
    ParticlePlaces(ParticleFrame const& frame, bool isWrapped);

    Vector3<double> operator[](std::size_t particle) const {
        Vector3<double> const& place = (*positions)[particle];
        return periodic ? periodic->wrapped(place) : place;
    }

    /// Whether there is a box whose edges span its directions. Edges without a length have no direction: a
    /// flat box is one.
    static bool canWrap(ParticleFrame const& frame);

private:
    struct PeriodicBox {
        Vector3<double> origin;
        std::array<Vector3<double>, 3> edges;
        std::array<Vector3<double>, 3> inverse;  // the product with a place counts edges
        std::array<bool, 3> isPeriodic;

        Vector3<double> wrapped(Vector3<double> place) const;
    };

    static std::optional<PeriodicBox> _periodicBoxOf(ParticleFrame const& frame);

    ValueList<Vector3<double>> const* positions;
    std::optional<PeriodicBox> periodic;  // nothing: places stay
};

/// Whether all of a box is finite.
bool isFinite(ParticleBox const& box);

}  // namespace vellum::viewport
