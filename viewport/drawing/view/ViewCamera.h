#pragma once

#include "Camera_RL_GL.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"
#include "viewport/ocean/OceanScene.h"
#include "viewport/scene/Scene.h"

#include <vector>

namespace vellum::viewport {

/// The camera of a view: frames what is to be seen, loads the matrices, and knows how the screen lies in the scene.
///
///     ViewCamera camera({toolkit::ViewKind::TOP});
///     camera.frame(scene, points, size);      // whenever the scene or the size of the picture has changed
///     camera.load(Region::whole(size));       // before drawing
///
/// Only load() makes GL calls.
class ViewCamera {
public:
    explicit ViewCamera(CameraSpec const& spec) : spec(spec) {}

    /// Frames the scene whole.
    /// \param points what a perspective view must show, in the frame of the scene
    /// \param size of the area that the scene is framed in
    void frame(Scene const& scene, std::vector<Vector3<double>> const& points, PictureSize const& size);

    /// Takes the place of the viewer of an open sea.
    void frame(OceanScene const& ocean, PictureSize const& size);

    /// Loads both matrices for a part of the framed area, which may reach over its edges.
    /// State: the projection and the model-view matrix; GL_MODELVIEW selected.
    void load(Region const& region);

    toolkit::ViewKind view() const { return spec.view; }
    bool isPerspective() const { return spec.view == toolkit::ViewKind::PERSPECTIVE; }

    /// The screen's axes in the scene.
    toolkit::ScreenAxes const& screen() const { return axes; }

    /// What a pixel's side measures at the origin of the scene, in units of the scene.
    double unitsPerPixel() const;

    /// Half of what the width of the area shows, in units of the scene. Orthographic views only.
    double halfWidth() const;

    /// The camera itself, for layers that ask for it.
    Camera_RL_GL& camera() { return viewCamera; }

private:
    void _updateScreen();

    CameraSpec spec;
    PictureSize area;         // that the scene is framed in
    Camera_RL_GL viewCamera;  // its parameters are those of the last framing
    toolkit::ScreenAxes axes = toolkit::screenAxes(toolkit::ViewKind::FRONT);
    Vector3<double> eye{0, 0, 0};  // perspective only
};

}  // namespace vellum::viewport
