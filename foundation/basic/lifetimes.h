#pragma once

/// \file
/// What debug builds know about objects that others refer to by pointer: render layers, meshes and effects.
/// Not part of the interface. Without VL_CHECK_LIFETIMES, which debug builds define, nothing is kept and
/// every object counts as alive.

#include "foundation/export.h"

namespace vellum::lifetimes {

#if defined(VL_CHECK_LIFETIMES)

VL_FOUNDATION_EXPORT void begin(void const* object);  ///< Called by constructors; on any thread.
VL_FOUNDATION_EXPORT void end(void const* object);    ///< Called by destructors; on any thread.

/// Whether an object that begin() was called for is still there.
VL_FOUNDATION_EXPORT bool isAlive(void const* object);

#else

inline void begin(void const* /*object*/) {}
inline void end(void const* /*object*/) {}
inline bool isAlive(void const* /*object*/) {
    return true;
}

#endif

}  // namespace vellum::lifetimes
