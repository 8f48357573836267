#pragma once

#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/scene/Placement.h"

#include <string>

namespace vellum::viewport {

/// Draws a gizmo at the origin of the scene, always equally large on the screen, and names its handles.
///
/// It expects head lights to be set, and the camera's matrices. The layer must outlive it.
class GizmoDrawing {
public:
    /// Picking names of the handles are below this one.
    static constexpr unsigned int NAMES_END = 5;

    /// \param up of the files, whose axes the handles have
    GizmoDrawing(Core_RL& layer, Gizmo gizmo, UpAxis up = UpAxis::Y) : layer(layer), gizmo(gizmo), turn(up) {}

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

    Core_RL& layer;
    Gizmo gizmo;
    Turn turn;  // from the files to the scene
};

/// The colors of the axes X, Y and Z on handles.
Tuple3<Color4<float>> axisColors();

}  // namespace vellum::viewport
