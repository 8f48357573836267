#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Does the text begin with a line that names the columns of particles in a way that readCsv understands?
bool isCsvOfParticles(std::string_view text);

/// Reads a table with a line of names: one frame. Values are separated by commas, semicolons or tabulators, whichever
/// the line of names has most of, or else by BLANKS; names and values may be in double quotes.
///
/// Capitals, BLANKS and punctuation of the names do not matter. Positions are x y z, position or pos (as in "Position X",
/// "pos_x") or "Points:0"; velocities vx vy vz, "velocity x", "vel_x" or "velocity:0". Every other column whose first
/// value is a number, or missing, is a scalar channel; its missing values are not a number. An id orders the particles.
///
/// Damage is a fault, without a file.
/// \param progress may be empty.
Result<LoadedFrame> readCsv(std::string_view text, Progress const& progress);

}  // namespace vellum::viewport
