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

/// Reads the text of a LAMMPS dump ("dump custom", "dump atom").
///
/// The line "ITEM: ATOMS ..." names the columns. Positions are the first of these that exist: x y z, xu yu
/// zu, xs ys zs, xsu ysu zsu; scaled ones are put into the box, tilted or not. Every other column of numbers
/// is a channel, also the id, by which the particles are sorted; columns of words are labels. "ITEM: UNITS"
/// gives the units of the columns that LAMMPS itself defines. Columns, boxes and counts may change from frame
/// to frame.
///
/// A dump that is cut off gives its complete frames and a warning; all other damage is a fault, without a
/// file.
/// \param frame counted from 0; nothing: the last complete one. See readFrame().
/// \param progress may be empty.
Result<LoadedFrame> readLammpsDump(std::string_view text, std::optional<std::size_t> frame,
                                   Progress const& progress);

/// The same for several frames of one text, which must outlive it: the text is passed once.
/// \param choose which values are kept
LoadFrame openLammpsDump(std::string_view text, ChooseValues const& choose = {});
LoadFrame openLammpsDump(std::unique_ptr<GrowingText> text, ChooseValues const& choose);

}  // namespace vellum::viewport
