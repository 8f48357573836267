#pragma once

#include "toolkit/ParticleLook.h"
#include "toolkit/View.h"
#include "viewport/scene/ParticleCloud.h"

#include <cstddef>
#include <optional>

namespace vellum::viewport {

/// How a cloud was drawn.
struct DrawnCloud {
    toolkit::ParticleLook look;
    toolkit::ParticleMode mode = toolkit::ParticleMode::POINTS;  ///< points in place of what the driver lacks
    double lineWidth = 1;                                        ///< of arrows, pixels
};

/// Finds the particle that a point of the screen shows, among millions: its record, whose particle in the
/// frame CloudRecords tells.
///
/// It looks at the particles that are drawn, at their sizes and vectors: those whose shape covers the point,
/// and of them the one whose depth there is the one that was read. So nothing is found that hides behind
/// another particle, and no particle that the drawing left out. Of points and arrows of lines at the same
/// depth, as flat data have them, it is the one whose middle is nearest.
///
/// Plain arithmetic, one pass over the particles; allocates nothing.
/// \param view that they were drawn with
/// \param x, y the point: pixels from the left and the top edge of its viewport, in the middle of one
/// \param depth what the depth buffer has there when the cloud alone was drawn
/// \return nothing where no particle covers the point.
std::optional<std::size_t> findParticle(ParticleCloud const& cloud, DrawnCloud const& drawn,
                                        toolkit::View const& view, double x, double y, double depth);

}  // namespace vellum::viewport
