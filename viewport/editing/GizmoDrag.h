#pragma once

#include "foundation/geometry/Vector3.h"
#include "toolkit/View.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/scene/Scene.h"

#include <cstddef>
#include <optional>

namespace vellum::viewport {

/// The directions of a gizmo's handles, in axes of the files: a gizmo that moves has the axes of the files,
/// those that turn and scale have the axes of the object, which turn with it.
Rotation handlesOf(Gizmo gizmo, ObjectTransform const& transform);

/// A drag of a handle of a gizmo, from the press of the button to its release. What is grabbed stays under
/// the cursor.
///
///     GizmoDrag drag(scene, object, Gizmo::MOVE, handleNamed(picked.name), transform, view, x, y);     // pressed
///     viewer.setTransform(object, drag.update(x, y, isControlDown));                                    // moved
///     undo.push({object, "Move", drag.before(), drag.after()});                                         // released
///
/// A handle that is seen edge on, a cursor beyond the horizon of a plane, and numbers that are not finite
/// leave the object as it is. No result has a scale of 0, or of another sign than before.
class GizmoDrag {
public:
    /// \param object of the scene; it must exist
    /// \param handle that was pressed; one that the gizmo does not have moves nothing
    /// \param view with which the picture was drawn; its world is the frame of the scene
    /// \param x, y where the button was pressed, in pixels from the upper left corner of the view; the middle of a pixel
    ///     is at one half
    GizmoDrag(Scene const& scene, std::size_t object, Gizmo gizmo, GizmoHandle handle,
              ObjectTransform const& before, toolkit::View const& view, double x, double y);

    /// The object's transform when the cursor is at a place.
    /// \param snaps whether it goes in steps: moves in moveStep(), turns in 15 degrees, scales by tenths of what there was
    ///     when the button was pressed, at least by one
    ObjectTransform update(double x, double y, bool snaps);

    ObjectTransform const& before() const { return start; }
    ObjectTransform const& after() const { return now; }

    /// The step of moves that snap, in units of the files: 1, 2 or 5 times a power of ten, about a twentieth
    /// of the object.
    double moveStep() const { return step; }

private:
    ObjectTransform _moved(double x, double y, bool snaps) const;
    ObjectTransform _turned(double x, double y, bool snaps) const;
    ObjectTransform _scaled(double x, double y, bool snaps) const;

    double _angleOfLine(Vector3<double> const& axis, double x, double y) const;
    std::optional<double> _factor(double x, double y) const;

    Vector3<double> _direction(int axis) const;
    bool _isEndOn(Vector3<double> const& axis) const;
    bool _isEdgeOn(Vector3<double> const& normal) const;
    bool _isMissed(Vector3<double> const& normal, double x, double y) const;

    Scene const* scene;
    Gizmo gizmo;
    GizmoHandle handle;
    ObjectTransform start;
    ObjectTransform now;
    toolkit::View view;
    double pressedX;
    double pressedY;
    Vector3<double> pivot;            // in the frame of the scene, where the object was at the press
    Vector3<double> sight{0, 0, -1};  // from the viewer to the pivot, of unit length
    double reach = 0;  // of a handle, in units of the scene; 0: the pivot is not in front of the viewer
    double step = 1;
};

}  // namespace vellum::viewport
