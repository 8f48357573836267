#pragma once

#include "viewport/files/common/InputFile.h"

#include <string>

namespace vellum::viewport {

/// Whether a file that a user named is read as a particle file; otherwise it is a mesh file.
///
/// The content decides where it has a signature: LAMMPS dumps and data files, LAS, and PLY files with or
/// without faces. An OBJ file holds particles where it has vertices and nothing that joins them. XYZ and CSV
/// have none, and other texts can look like them; there the name of a mesh format outranks the content. A
/// file that is unreadable or of no known format is of the kind that its name says, so that the fault speaks
/// of the right formats.
///
/// The path of a pipe or of standard input is not opened, since it could not be read again: its name decides.
/// Open it as an InputFile and ask for that.
bool isParticleFile(std::string const& path);
bool isParticleFile(InputFile const& file);

}  // namespace vellum::viewport
