#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Whether the text begins like a data file of LAMMPS: a line of comment, then counts and limits of a box.
bool isLammpsData(std::string_view text);

/// Reads a data file of LAMMPS (for "read_data", by "write_data"): one frame.
///
/// The section "Atoms" names its style in a comment ("Atoms # full"), which tells the columns; without one
/// only rows of five columns are certain ("atomic"), all others are a fault. Three further columns are image
/// flags. Rows of "Velocities" are joined by their ids. Types have the names of the section "Atom Type
/// Labels", or of comments in "Masses". Bonds, coefficients and shapes are skipped.
///
/// Damage is a fault, without a file.
/// \param progress may be empty.
Result<LoadedFrame> readLammpsData(std::string_view text, Progress const& progress);

}  // namespace vellum::viewport
