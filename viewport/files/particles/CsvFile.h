#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Whether the first line names columns of positions that readCsv() understands.
bool isCsvOfParticles(std::string_view text);

/// Reads a table with a line of names: one frame. The separator is the one of comma, semicolon and tabulator
/// that is most frequent in the line of names, or else blanks; names and values may be in double quotes.
///
/// Capitals, blanks and punctuation of the names do not matter, and a unit may follow in parentheses or
/// brackets. Positions are x y z, position or pos (as in "Position X", "pos_x") or "Points:0". Every other
/// column is a channel if its first value is a number, else labels. Empty cells, NA, N/A, null and - are
/// missing values: NaN. An id orders the particles. See also findMeanings().
///
/// Damage is a fault, without a file.
/// \param progress may be empty.
Result<LoadedFrame> readCsv(std::string_view text, Progress const& progress);

}  // namespace vellum::viewport
