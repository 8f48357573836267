#pragma once

#include "viewport/files/particles/ParticleFrame.h"

namespace vellum::viewport {

/// Finds what the names of the channels and labels say, the same for all formats: vectors, colors, sizes and
/// elements. Overwrites these members of the frame.
///
/// Vectors are three channels of one name that ends with x, y and z ("fx fy fz", "force.x", "Force X") or
/// with a separator and 0, 1 and 2 ("Force:0"). The first of the names v, velocity, vel, velo and velocities
/// is the velocity. Image flags, rows of tensors and colors are no vectors.
///
/// Colors are "r g b", "red green blue", "Color.R" and the like. Where no value is above 1 the brightest is
/// 1, else 255, or 65535 where some value is above that. Sizes are radius or radii, else diameter or size.
void findMeanings(ParticleFrame& frame);

}  // namespace vellum::viewport
