#pragma once

namespace vellum {

/// The coordinate axes; picks a gizmo handle. Any number converts: some operations take 3 as the center
/// handle, and values beyond draw nothing.
enum VL_AXIS : unsigned int { VL_AXIS_X = 0, VL_AXIS_Y = 1, VL_AXIS_Z = 2 };

}  // namespace vellum
