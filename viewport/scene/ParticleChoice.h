#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/scene/ParticlePlaces.h"
#include "viewport/scene/ParticleSelection.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Which particles of a frame are shown, and how far they spread.
struct ParticleChoice {
    bool isAll = true;                       ///< all of the frame, else those of `particles`
    std::vector<unsigned int> particles;     ///< their indices, ascending; empty where all are shown
    std::size_t count = 0;                   ///< of the particles that are shown, without copies
    std::size_t unplacedCount = 0;           ///< of those left out because they have no place, or no arrow
    Box3<double> box{{0, 0, 0}, {0, 0, 0}};  ///< around their places, in units of the file, without copies
    double spacing = 1;                      ///< an estimate of the mean distance of neighbors; above 0

    std::size_t operator[](std::size_t place) const { return isAll ? place : particles[place]; }
};

/// Chooses the particles that have a finite place and are selected.
/// \param arrow the vector that arrows are along, which must be finite too; null: there are no arrows
/// \param selection null: all
Result<ParticleChoice> choose(ParticleFrame const& frame, ParticlePlaces const& places,
                              ParticleVector const* arrow, ParticleSelection const* selection,
                              std::optional<Box3<double>> const& clip);

}  // namespace vellum::viewport
