#pragma once

#include "Core_RL_GL.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"

#include <string>

namespace vellum::viewport {

/// What a file holds, in complete lines for --info.
std::string describeMesh(std::string const& path, MeshData const& mesh);

/// What a particle file holds, and which frame of it the picture shows.
std::string describeParticles(LoadedFrame const& loaded);

/// What the driver of the current context offers, in complete lines for --info.
std::string describeDriver(Core_RL_GL& layer);

}  // namespace vellum::viewport
