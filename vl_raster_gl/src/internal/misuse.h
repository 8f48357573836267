#pragma once

/// \file
/// The checks of debug builds (VL_CHECK_LIFETIMES): a pointer to something that is gone, a missing render
/// layer or context. Each prints one line to the standard error stream, which names the operation and the
/// misuse, and ends the process as a failed assertion does. In other builds the checks are empty, and a
/// misuse has the consequences that it has.

#include "raster_gl_export.h"

namespace vellum {

class Mesh;
class Mesh_RL_Shader;

namespace misuse {

#if defined(VL_CHECK_LIFETIMES)

constexpr bool ARE_LIFETIMES_CHECKED = true;

/// A render layer must exist.
VL_RASTER_GL_EXPORT void requireLayer(char const* operation);

/// The render layer may be missing, but VL_Raster must not point to one that is gone.
VL_RASTER_GL_EXPORT void refuseDeadLayer(char const* operation);

/// A context must be current. GL: glGetString(GL_VERSION).
VL_RASTER_GL_EXPORT void requireContext(char const* operation);

/// The mesh of a renderer must exist, if it has one.
VL_RASTER_GL_EXPORT void requireMesh(char const* operation, Mesh const* mesh);

/// The effect of a renderer must exist, if it has one.
VL_RASTER_GL_EXPORT void requireEffect(char const* operation, Mesh_RL_Shader const* effect);

/// Replaces the question whether a context is current, for programs that replace OpenGL; null: asks GL again.
VL_RASTER_GL_EXPORT void setContextProbe(bool (*isCurrent)());

#else

constexpr bool ARE_LIFETIMES_CHECKED = false;

inline void requireLayer(char const* /*operation*/) {}
inline void refuseDeadLayer(char const* /*operation*/) {}
inline void requireContext(char const* /*operation*/) {}
inline void requireMesh(char const* /*operation*/, Mesh const* /*mesh*/) {}
inline void requireEffect(char const* /*operation*/, Mesh_RL_Shader const* /*effect*/) {}

#endif

}  // namespace misuse

}  // namespace vellum
