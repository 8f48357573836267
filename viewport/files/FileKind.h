#pragma once

#include <string>

namespace vellum::viewport {

/// Whether a file that a user named is read as one of particles. Names decide where they can: those of particle
/// files and compressed files are, those of mesh files are not. Where both kinds share a name, as PLY files do, or
/// the name says nothing, the content decides.
bool isParticleFile(std::string const& path);

}  // namespace vellum::viewport
