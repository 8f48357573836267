#pragma once

#include "viewport/drawing/Picked.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// What is at a pixel, in complete lines: "nothing", or the picking name and what it belongs to; then, where
/// more is known, a line for each fact, two blanks before "key: value":
///
///     16 melt.lammpstrj
///       particle: 4711
///       id: 12
///       position: 0.5, 1, 1.5
///       element: O
///       c_pe [eV]: -4.5
///
/// Numbers have all digits that they have in the file; those that are no numbers are "nan". The place where a
/// particle is drawn has a line, "shown at", where it is another one.
std::string describePick(std::optional<Picked> const& picked);

}  // namespace vellum::viewport
