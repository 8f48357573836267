#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/FrameIndex.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace vellum::viewport {

/// Reads XYZ and extended XYZ: a line with the number of particles, a line of comment, a line for each
/// particle.
///
/// Where the comment says "Properties=..." it names the columns: pos gives positions, id the order of the
/// particles; every other real or whole number is a channel, named as the property, with ".x" or ".1" and so
/// on where it has several (".r" where it is a color); words and truth values are labels. Lattice="..." gives
/// the edges of the box, Origin="..." its corner, pbc="T T F" along which edges it is periodic. Plain XYZ has
/// a kind and three coordinates, or the coordinates alone; a kind is an element, or a number of a type; seven
/// columns end with a velocity, all other further columns are channels or labels. See also findMeanings().
///
/// The comment gives the time step behind "Timestep" or "step", and the time behind "Time". A file that is
/// cut off gives its complete frames and a warning; all other damage is a fault, without a file.
/// \param frame counted from 0; nothing: the last complete one. See readFrame().
/// \param progress may be empty.
Result<LoadedFrame> readXyz(std::string_view text, std::optional<std::size_t> frame,
                            Progress const& progress);

/// The same for several frames of one text, which must outlive it: the text is passed once.
/// \param choose which values are kept
LoadFrame openXyz(std::string_view text, ChooseValues const& choose = {});
LoadFrame openXyz(std::unique_ptr<GrowingText> text, ChooseValues const& choose);

}  // namespace vellum::viewport
