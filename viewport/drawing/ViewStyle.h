#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/drawing/overlays/Background.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/subjects/ParticleStyle.h"
#include "viewport/drawing/view/CameraSpec.h"

#include <optional>

namespace vellum::viewport {

/// Where the main light comes from, in the frame of the scene as the angles of a camera are. Degrees.
struct LightSpec {
    double azimuth = 0;
    double elevation = 0;
};

/// What is drawn around a scene to explain it.
struct Explanations {
    bool hasGrid = true;
    bool hasAxes = true;
    bool hasBar = true;     ///< the colors of particles and what they stand for
    bool hasBox = true;     ///< the boxes that particles are in
    bool hasSizes = false;  ///< the box around everything, with the lengths of its edges
};

/// How a scene is shown.
struct ViewStyle {
    MeshStyle mesh;
    ParticleStyle particles;
    CameraSpec camera;
    Gizmo gizmo = Gizmo::NONE;
    Background background = {};
    Explanations explanations = {};
    std::optional<LightSpec> light = {};  ///< nothing: lights that stand with the viewer
    std::optional<Box3<double>> clip =
        {};  ///< in axes and units of the files: of the models only what is inside is shown
    std::optional<int> keyWidth =
        {};  ///< of the room beside the scene for what explains the colors, pixels; nothing: what that needs
};

}  // namespace vellum::viewport
