#pragma once

#include "foundation/raster/Core_RL.h"

/// How drawings meet the depth buffer.
namespace vellum::viewport {

inline constexpr DepthtTestMode DEPTH_TESTED{DEPTH_LESS, true};
inline constexpr DepthtTestMode DEPTH_TESTED_ONLY{DEPTH_LESS_OR_EQUAL, false};  // writes no depth
inline constexpr DepthtTestMode DEPTH_IGNORED{DEPTH_TEST_OFF, false};

}  // namespace vellum::viewport
