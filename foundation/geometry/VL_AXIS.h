#pragma once

namespace vellum {

/// The coordinate axes; selects a gizmo handle. Any number converts: in some operations 3 is the center
/// handle; larger values are not drawn.
enum VL_AXIS : unsigned int { VL_AXIS_X = 0, VL_AXIS_Y = 1, VL_AXIS_Z = 2 };

}  // namespace vellum
