#pragma once

#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/overlays/ColorKey.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/ocean/OceanScene.h"
#include "viewport/ocean/SurroundingSea.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Where everything is in a picture of one size: what explains the colors, and the camera that frames the
/// scene beside it. Makes no GL calls, so that a camera can be told without OpenGL.
struct ViewLayout {
    /// What the colors of particles and meshes mean; null: nothing, or it is not wanted.
    std::unique_ptr<ColorKey> key;
    ViewCamera camera;
    std::optional<Fault> fault;  ///< of a camera that is none; it must not be used
    std::vector<Fault> notes;    ///< what there is no room for

    /// \param ocean that is shown in place of the scene, or null
    /// \param sea that the scene stands in, or null
    /// \param transforms of all objects of the scene; none: all are where the scene has them
    static ViewLayout of(Scene const& scene, ViewStyle const& style, OceanScene const* ocean,
                         PictureSize const& size, SurroundingSea const* sea = nullptr,
                         std::vector<ObjectTransform> const& transforms = {});

    /// The same scene from elsewhere. Where the camera makes none it has the fault, and keeps its place.
    void setCamera(CameraSpec const& spec, Scene const& scene);

    FramedPoints framedPoints = {};               ///< what is to be seen, in the frame of the scene
    std::optional<Box3<double>> bounds = {};      ///< of what is moved; nothing: the scene's
    Box3<double> shownBox{{0, 0, 0}, {0, 0, 0}};  ///< around what is shown, in the frame of the scene
    PictureSize framedSize = {};                  ///< of the area beside the key
    PictureSize size = {};                        ///< of the picture
    SurroundingSea const* sea = nullptr;          ///< that the scene stands in, or null

private:
    std::optional<Fault> _frame(ViewCamera& view, Scene const& scene) const;
    std::optional<Fault> _surround(ViewCamera& view) const;
};

}  // namespace vellum::viewport
