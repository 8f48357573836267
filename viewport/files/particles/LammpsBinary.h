#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/FrameIndex.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace vellum::viewport {

/// Whether the bytes begin like a binary dump of LAMMPS ("dump ... custom ... *.bin").
bool isLammpsBinary(std::string_view bytes);

/// Reads a binary dump of LAMMPS of either byte order: the newer format, which names its columns, units and
/// time, and the older one, which names nothing. The columns of an older dump are known where it is one of
/// "dump atom": id, type and scaled positions, perhaps with image flags. Any other older dump is a fault.
///
/// Columns mean what they mean in a text (see readLammpsDump()). A dump that is cut off gives its complete
/// frames and a warning; all other damage is a fault, without a file.
/// \param frame counted from 0; nothing: the last complete one. Behind the last frame the result has a count
///              and no particles.
/// \param progress may be empty.
Result<LoadedFrame> readLammpsBinary(std::string_view bytes, std::optional<std::size_t> frame,
                                     Progress const& progress);

/// The same for several frames of one dump, whose bytes must outlive it: the dump is passed once.
/// \param choose which values are kept
LoadFrame openLammpsBinary(std::string_view bytes, ChooseValues const& choose = {});

}  // namespace vellum::viewport
