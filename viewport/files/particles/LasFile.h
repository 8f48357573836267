#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Whether the bytes begin like a LAS file of a laser scanner, or a compressed one (LAZ).
bool isLas(std::string_view bytes);

/// Reads the points of a LAS file, version 1.0 to 1.4, all formats of points: one frame.
///
/// Channels are intensity, return number, number of returns, type (the classification, with the names of the
/// standard), scan angle in degrees, user data, point source, and where the format has them gps time, red,
/// green, blue and near infrared. The standard has colors of 16 bits, but many files hold those of 8: where
/// no value is above 255, the brightest is 255. Waveforms and records of further data are skipped.
///
/// A file that is cut off gives the points that are there and a warning; all other damage is a fault, as is
/// LAZ, without a file.
/// \param progress may be empty.
Result<LoadedFrame> readLas(std::string_view bytes, Progress const& progress);

}  // namespace vellum::viewport
