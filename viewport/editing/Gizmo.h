#pragma once

namespace vellum::viewport {

/// The handles over an object: for moving, turning or scaling it.
enum class Gizmo { NONE, MOVE, ROTATE, SCALE };

/// What of a gizmo can be grabbed. The values are the picking names.
enum class GizmoHandle : unsigned int {
    NONE = 0,
    X = 1,  ///< along the axis, or about it
    Y = 2,
    Z = 3,
    CENTER =
        4,  ///< moves in the plane of the screen; turns about the direction of view; scales alike along all axes
    YZ = 5,  ///< along two axes; a rotate gizmo has no planes
    XZ = 6,
    XY = 7,
};

/// Picking names of the handles are below this one.
constexpr unsigned int GIZMO_NAMES_END = 8;

/// The handle of a picking name; NONE where it is that of something else.
constexpr GizmoHandle handleNamed(unsigned int name) {
    return name < GIZMO_NAMES_END ? static_cast<GizmoHandle>(name) : GizmoHandle::NONE;
}

/// The axis of a handle along or about an axis, 0 to 2; -1 of all others.
constexpr int axisOf(GizmoHandle handle) {
    return handle >= GizmoHandle::X && handle <= GizmoHandle::Z ? static_cast<int>(handle) - 1 : -1;
}

/// The axis that is across the plane of a handle, 0 to 2; -1 of all others.
constexpr int normalAxisOf(GizmoHandle handle) {
    return handle >= GizmoHandle::YZ && handle <= GizmoHandle::XY ? static_cast<int>(handle) - 5 : -1;
}

/// How long the handles of the axes are, as a part of the shorter side of the picture.
constexpr double GIZMO_LENGTH = 118.0 / 720;

/// The radius of the circle that turns about the direction of view, in lengths of the handles.
constexpr double GIZMO_VIEW_CIRCLE = 1.18;

}  // namespace vellum::viewport
