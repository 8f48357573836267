#pragma once

#include "foundation/geometry/VL_AXIS.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/Rotation.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/scene/Placement.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// Where a gizmo stands: over an object.
struct GizmoPlace {
    Vector3<double> pivot;                        ///< in the frame of the scene
    Rotation handles;                             ///< their directions, in axes of the files
    GizmoHandle highlighted = GizmoHandle::NONE;  ///< the handle under the cursor, drawn in yellow
};

/// Draws a gizmo, always equally large on the screen, and names its handles: at the origin of the scene as it
/// is shown in pictures, or over an object with all that can be grabbed. There it leaves out handles that are
/// seen edge on.
///
/// It expects head lights to be set, and the camera's matrices. The layer must outlive it.
class GizmoDrawing {
public:
    /// Picking names of the handles are below this one.
    static constexpr unsigned int NAMES_END = GIZMO_NAMES_END;

    /// \param up of the files, whose axes the handles have
    /// \param place over an object; nothing: at the origin of the scene, without handles of planes
    GizmoDrawing(Core_RL& layer, Gizmo gizmo, UpAxis up = UpAxis::Y,
                 std::optional<GizmoPlace> const& place = std::nullopt)
        : layer(layer), gizmo(gizmo), turn(up), place(place) {}

    bool isShown() const { return gizmo != Gizmo::NONE; }

    /// Draws it; nothing for Gizmo::NONE.
    /// State: that of Lit.
    void draw(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling) const;

    /// Draws what can be hit of it, with the handles' picking names.
    void drawForPicking(ViewCamera const& camera, PictureSize const& size) const;

    /// What a picking name from 1 to NAMES_END - 1 stands for, like "gizmo move X".
    std::string handle(unsigned int name) const;

private:
    void _draw(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling,
               bool isPicking) const;
    void _drawCircles(ViewCamera const& camera, Sampling const& sampling, bool isPicking) const;

    // == Over an object ==
    void _drawPlaced(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling,
                     bool isPicking) const;
    void _drawAxis(VL_AXIS axis) const;
    void _drawPlanes(Vector3<double> const& sight) const;
    void _drawPlacedCircles(Vector3<double> const& sight, Sampling const& sampling, bool isPicking) const;
    void _drawViewCircle(ViewCamera const& camera, double length) const;
    Color4<float> _color(GizmoHandle handle) const;

    Core_RL& layer;
    Gizmo gizmo;
    Turn turn;  // from the files to the scene
    std::optional<GizmoPlace> place;
};

/// The colors of the axes X, Y and Z on handles.
Tuple3<Color4<float>> axisColors();

}  // namespace vellum::viewport
