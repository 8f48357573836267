#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/Span.h"
#include "toolkit/export.h"

/// \file
/// Fills particles from the arrays that an application has anyway. Each function copies the values.
///
///     std::vector<Vector3<float>> positions = ..., velocities = ...;
///     setPositions(system, positions);                       // as many particles as positions
///     setChannel(system, "velocity", velocities);
///     setChannel(system, "energy", energies);
///     particles.markChanged();                               // the renderer's: it does not look itself
///
/// Particle i is the i-th of all chunks that is not released. GL: none. One thread at a time.

namespace vellum::toolkit {

/// Sets the positions, channel "position". Particles are added or released at the end until there are as many
/// as positions. \return false, and nothing changes, where the system's first channel is another one, or
/// there are more than 2^32 - 1.
VL_TOOLKIT_EXPORT bool setPositions(ParticleSystem_v2& system, Span<Vector3<float>> positions);

/// Sets the values of a channel, which is added where the system has none of this name.
/// \return false, and nothing changes, where there are not as many values as particles, the name is null or empty, or the
///     channel has another type.
VL_TOOLKIT_EXPORT bool setChannel(ParticleSystem_v2& system, char const* name, Span<Vector3<float>> values);
VL_TOOLKIT_EXPORT bool setChannel(ParticleSystem_v2& system, char const* name, Span<float> values);

}  // namespace vellum::toolkit
