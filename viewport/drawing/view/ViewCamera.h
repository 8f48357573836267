#pragma once

#include "Camera_RL_GL.h"
#include "foundation/geometry/Box3.h"
#include "viewport/drawing/view/CameraPlacement.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/FramedPoints.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"
#include "viewport/ocean/OceanScene.h"
#include "viewport/ocean/WaterSheet.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The camera of a view: frames what is to be seen, loads the matrices, and knows how the screen lies in the
/// scene.
///
///     ViewCamera camera({toolkit::ViewKind::TOP});
///     camera.frame(scene, points, size);      // whenever the scene or the size of the picture has changed
///     camera.load(Region::whole(size));       // before drawing
///
/// Only load() makes GL calls.
class ViewCamera {
public:
    explicit ViewCamera(CameraSpec const& spec) : asked(spec) {}

    /// Takes its place. A fault, with the camera of the last framing, where what is asked for makes no
    /// camera.
    /// \param points what is to be seen, in the frame of the scene
    /// \param size of the area that the scene is framed in
    /// \param bounds around everything, for views along an axis; null: the scene's
    std::optional<Fault> frame(Scene const& scene, FramedPoints const& points, PictureSize const& size,
                               Box3<double> const* bounds = nullptr);

    /// Takes the place of the viewer of an open sea.
    void frame(OceanScene const& ocean, PictureSize const& size);

    /// How a sea is looked at by the camera.
    /// \param size of the whole picture, which may be wider than the framed area
    SeaView seaView(PictureSize const& size) const;

    /// Sees all of what is between two distances from the eye along the direction of view, too; in units of
    /// the scene. The views along an axis have a range that is fixed.
    void include(double nearest, double farthest);

    /// Loads both matrices for a part of the framed area, which may reach over its edges.
    /// State: the projection and the model-view matrix; GL_MODELVIEW selected.
    void load(Region const& region);

    CameraSpec const& spec() const { return asked; }  ///< What was asked for.

    toolkit::ViewKind view() const { return asked.view; }
    bool isAlongAxis() const { return asked.isAlongAxis(); }
    bool isPerspective() const { return !isAlongAxis() && asked.projection == Projection::PERSPECTIVE; }

    /// The options of the command line that give this camera; empty on an open sea.
    std::string const& options() const { return optionWords; }

    /// All choices of the last framing; nothing along an axis and on an open sea.
    std::optional<CameraPlacement> const& placement() const { return chosen; }

    /// The size of the area that the scene is framed in.
    PictureSize const& framedArea() const { return area; }

    /// The screen's axes in the scene.
    toolkit::ScreenAxes const& screen() const { return axes; }

    /// What a pixel's side measures at the origin of the scene, in units of the scene.
    double unitsPerPixel() const { return unitsPerPixel({0, 0, 0}); }

    /// The same at a point of the scene.
    double unitsPerPixel(Vector3<double> const& at) const;

    /// The direction from the viewer to a point of the scene, of unit length.
    Vector3<double> sightTo(Vector3<double> const& point) const;

    /// Half of what the width of the area shows, in units of the scene. Not in perspective.
    double halfWidth() const;

    /// Half of what the height of the area shows at the distance of the focus, in units of the scene. Not on
    /// an open sea.
    double halfHeightAtFocus() const;

    /// What is in the middle of the picture, in the frame of the scene. Not on an open sea.
    Vector3<double> focusInScene(Scene const& scene) const;

    /// The distance from the eye along the direction of view, in units of the scene, of a value of the depth
    /// buffer. The eye of a view along an axis stands three radii of the scene before its middle.
    double distanceOf(double depth) const;

    /// The camera itself, for layers that ask for it.
    Camera_RL_GL& camera() { return viewCamera; }

private:
    /// A camera that knows parallel projections in any direction as well.
    class FreeCamera : public Camera_RL_GL {
    public:
        void updateProjectionMatrix() override;
        void updateProjectionMatrixZBias() override;

        std::optional<double> halfHeight;  // of a free parallel projection
    };

    void _frameAxisView(Scene const& scene, Box3<double> const& bounds);
    void _frameFreely(CameraPlacement const& placement, Scene const& scene, FramedPoints const& points);
    void _updateScreen();

    CameraSpec asked;
    PictureSize area;       // that the scene is framed in
    FreeCamera viewCamera;  // its parameters are those of the last framing
    toolkit::ScreenAxes axes = toolkit::screenAxes(toolkit::ViewKind::FRONT);
    Vector3<double> eye{0, 0, 0};           // not of a view along an axis
    std::optional<CameraPlacement> chosen;  // in the last framing
    double focusDistance = 1;               // in units of the scene; perspective only
    std::string optionWords;
};

}  // namespace vellum::viewport
