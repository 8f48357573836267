#pragma once

#include "Core_RL_GL.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrames.h"

#include <string>

namespace vellum::viewport {

/// What a file holds, in complete lines for --info.
std::string describeMesh(std::string const& path, MeshData const& mesh);

/// What a file of particles holds, and of which frame the picture is.
std::string describeParticles(std::string const& path, ParticleFrames const& frames, std::size_t shown);

/// What the driver of the current context offers, in complete lines for --info.
std::string describeDriver(Core_RL_GL& layer);

}  // namespace vellum::viewport
