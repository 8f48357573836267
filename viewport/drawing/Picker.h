#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/View.h"
#include "viewport/drawing/Picked.h"
#include "viewport/drawing/effects/EffectRenderer.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"
#include "viewport/drawing/subjects/CloudDrawing.h"
#include "viewport/drawing/subjects/ModelRenderer.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/scene/Scene.h"

#include <array>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Finds what is at a pixel, or within two pixels of it. Handles of the gizmo come before everything else,
/// then what is nearer to the viewer. What is below the water of a sea is not found; the water itself is
/// nothing.
///
/// Where the scene keeps what the files say, it also finds the particle, or the place on a mesh: the one that
/// the pixel itself shows, or else the nearest pixel within reach. Meshes that are drawn as wireframes or
/// boxes have no places.
///
/// It draws with everything that it was given, all of which must outlive it. Where there are particles or a
/// sea, it draws into the lower left corner of the current framebuffer, of five pixels: what was drawn before
/// is lost there.
class Picker {
public:
    /// \param hasSurfaces the triangles of models are drawn filled
    /// \param clip of the models, in axes and units of the files
    /// \param sea that the scene stands in, framed for the camera; null where there is none
    Picker(Core_RL& layer, Scene const& scene, ViewCamera& camera, std::vector<ModelRenderer>& models,
           std::vector<CloudDrawing>& clouds, GizmoDrawing const& gizmo, bool hasSurfaces,
           std::optional<Box3<double>> const& clip = std::nullopt, EffectRenderer* sea = nullptr)
        : layer(layer)
        , scene(scene)
        , camera(camera)
        , models(models)
        , clouds(clouds)
        , gizmo(gizmo)
        , hasSurfaces(hasSurfaces)
        , clip(clip)
        , sea(sea) {}

    /// \param size of the whole picture; the camera has framed the scene for it.
    /// State: the viewport, both matrices, the depth buffer; the scissor test is off, multisampling is on.
    std::optional<Picked> pick(PictureSize const& size, Pixel pixel);

    /// The handle of the gizmo alone, which takes no longer in a large scene.
    /// State: both matrices, the viewport.
    GizmoHandle pickHandle(PictureSize const& size, Pixel pixel);

private:
    static constexpr int SIDE = 5;  // of the pixels within reach

    /// What a cloud alone leaves in the depth buffer, the lowest row first.
    using Depths = std::array<float, SIDE * SIDE>;

    struct Hit {
        unsigned int name;
        double depth;        // of the nearest point, as toolkit::PickHit has it
        Depths depths = {};  // only of clouds
    };

    toolkit::View _lookAround(PictureSize const& size, double x, double y);
    std::vector<Hit> _selectModelsAndGizmo(PictureSize const& size, double x, double y);
    void _drawModelsAndGizmo(PictureSize const& size);
    std::vector<Hit> _drawClouds(PictureSize const& size, double x, double y);
    double _waterDepth(PictureSize const& size, double x, double y);
    Picked _toPicked(unsigned int name) const;
    std::optional<PickedParticle> _particleOf(Hit const& hit, PictureSize const& size,
                                              toolkit::View const& view, double most) const;
    unsigned int _firstCloudName() const;
    Vector3<double> _movedInFile(Matrix4<double> const& place, Vector3<double> const& position) const;

    static bool _comesBefore(Hit const& a, Hit const& b);

    Core_RL& layer;
    Scene const& scene;
    ViewCamera& camera;
    std::vector<ModelRenderer>& models;
    std::vector<CloudDrawing>& clouds;
    GizmoDrawing const& gizmo;
    bool hasSurfaces;
    std::optional<Box3<double>> clip;
    EffectRenderer* sea;  // may be null
};

}  // namespace vellum::viewport
