#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"
#include "viewport/drawing/subjects/CloudDrawing.h"
#include "viewport/drawing/subjects/ModelRenderer.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/scene/Scene.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A thing at a pixel.
struct Picked {
    unsigned int
        name;  ///< the picking name: 1 to 4 the gizmo's handles, from 16 on the models, then the clouds
    std::string owner;  ///< what the name belongs to: a handle like "gizmo move X", or a file's name

    bool operator==(Picked const& other) const { return name == other.name && owner == other.owner; }
};

/// Finds what is at a pixel, or within two pixels of it. Handles of the gizmo come before everything else,
/// then what is nearer to the viewer. Particles are found by their file, like models.
///
/// It draws with everything that it was given, all of which must outlive it. Where there are particles, it
/// draws into the lower left corner of the current framebuffer: what was drawn before is lost there.
class Picker {
public:
    Picker(Core_RL& layer, Scene const& scene, ViewCamera& camera, std::vector<ModelRenderer>& models,
           std::vector<CloudDrawing>& clouds, GizmoDrawing const& gizmo,
           std::optional<Box3<double>> const& clip = std::nullopt)
        : layer(layer)
        , scene(scene)
        , camera(camera)
        , models(models)
        , clouds(clouds)
        , gizmo(gizmo)
        , clip(clip) {}

    /// \param size of the whole picture; the camera has framed the scene for it.
    /// State: the viewport, both matrices, the depth buffer.
    std::optional<Picked> pick(PictureSize const& size, Pixel pixel);

private:
    struct Hit {
        unsigned int name;
        double depth;  // of the nearest point, as toolkit::PickHit has it
    };

    std::vector<Hit> _selectModelsAndGizmo(PictureSize const& size, double x, double y);
    void _drawModelsAndGizmo(PictureSize const& size);
    std::vector<Hit> _drawClouds(PictureSize const& size, double x, double y);
    Picked _toPicked(unsigned int name) const;
    unsigned int _firstCloudName() const;

    static bool _comesBefore(Hit const& a, Hit const& b);

    Core_RL& layer;
    Scene const& scene;
    ViewCamera& camera;
    std::vector<ModelRenderer>& models;
    std::vector<CloudDrawing>& clouds;
    GizmoDrawing const& gizmo;
    std::optional<Box3<double>> clip;  // of the models, in axes and units of the files
};

}  // namespace vellum::viewport
