#pragma once

#include <string>
#include <string_view>

namespace vellum::viewport {

/// The unit of a column of LAMMPS in one of its unit styles ("metal", "real", ...); empty where the style has
/// none, is unknown, or the column is not one of lengths, velocities, forces, masses and charges.
std::string lammpsUnit(std::string_view style, std::string_view column);

}  // namespace vellum::viewport
