#pragma once

#include "foundation/raster/Core_RL.h"
#include "toolkit/View.h"
#include "viewport/drawing/Picker.h"
#include "viewport/drawing/ViewLayout.h"
#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/effects/EffectRenderer.h"
#include "viewport/drawing/overlays/Backdrop.h"
#include "viewport/drawing/overlays/ColorKey.h"
#include "viewport/drawing/overlays/CornerAxes.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"
#include "viewport/drawing/overlays/SizeBox.h"
#include "viewport/drawing/subjects/BlendedParts.h"
#include "viewport/drawing/subjects/CloudDrawing.h"
#include "viewport/drawing/subjects/ModelRenderer.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/files/images/Picture.h"
#include "viewport/scene/Scene.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Draws a scene through the render layer into the current framebuffer: background, ground, models,
/// particles, the gizmo over them, and the axes in the corner; or finds what is at a pixel.
///
///     std::unique_ptr<Core_RL> layer(new Core_RL_GL);                 // a context is current, GLEW initialized
///     Viewer viewer(*layer, scene, style);
///     glViewport(0, 0, size.width, size.height);
///     viewer.draw(size);                                              // every frame; the size may change
///
/// A picture that is larger than the framebuffer is drawn part by part, see TiledPicture.
///
/// It expects the state of a fresh context, or that of its last drawing, and leaves it changed. Scene, layer
/// and effect must outlive it, and the context must be current until its end.
class Viewer {
public:
    /// \param effect what draws the models that have an effect, or null if there is none.
    Viewer(Core_RL& layer, Scene const& scene, ViewStyle const& style, EffectRenderer* effect = nullptr);

    Viewer(Viewer const&) = delete;
    Viewer& operator=(Viewer const&) = delete;

    /// Draws the whole picture into the viewport.
    void draw(PictureSize const& size);

    /// Draws a part of the picture so that it fills the viewport.
    /// \param size of the whole picture
    /// \param samplesPerSide of the viewport for each pixel of the picture, at least 1
    void draw(PictureSize const& size, Region const& region, int samplesPerSide);

    /// Changes what is behind the scene. Lines and letters keep the color that suits the first background.
    void setBackground(Background const& background) { style.background = background; }
    Background const& background() const { return style.background; }

    /// Looks from elsewhere, beginning with the next drawing. Where that makes no camera, the fault is
    /// returned and the former one stays. Not on an open sea, whose camera is the effect's.
    std::optional<Fault> setCamera(CameraSpec const& spec);

    /// Draws only a part, 0 to 1, of points and spheres; see CloudDrawing::setDetail().
    void setDetail(double part);

    /// How the first cloud was drawn last, with the number of the particles of all clouds; nothing where
    /// there is none.
    std::optional<toolkit::ParticleDrawing> drawnParticles() const;

    /// The camera of the last drawing, which framed the scene.
    ViewCamera const& camera() const { return layout.camera; }

    // == Editing ==

    /// Moves, turns and scales an object from where its file has it; a transform that is not isDrawable()
    /// changes nothing. Unless the camera was given a place, it frames what is shown anew. \param object of
    /// the scene, the models first, then the clouds; others change nothing
    void setTransform(std::size_t object, ObjectTransform const& transform);
    std::vector<ObjectTransform> const& transforms() const { return objectTransforms; }

    /// Which gizmo is drawn: over the object that is selected, with all its handles; at the origin of the
    /// scene without the handles of planes, where no object is.
    void setGizmo(Gizmo gizmo) { style.gizmo = gizmo; }
    void setSelected(std::optional<std::size_t> object) { selected = object; }

    /// The handle that is drawn as the one under the cursor, from handleNamed() of what was picked.
    void setHighlighted(GizmoHandle handle) { highlighted = handle; }

    /// The handle at a pixel of a picture of this size; see Picker.
    GizmoHandle handleAt(PictureSize const& size, Pixel pixel);

    /// The view that a picture of this size is drawn with, for drags of handles.
    /// State: that of ViewCamera::load().
    toolkit::View view(PictureSize const& size);

    /// Draws models and particles alone, for the depths that they leave behind: each pixel of the viewport
    /// has one.
    void drawDepths(PictureSize const& size, Region const& region, int samplesPerSide);

    /// The distance from the eye along the direction of view, in units of the files, of a value of the depth
    /// buffer; infinite for 1. For pictures of the size that was drawn last.
    double distanceOf(double depth) const;

    /// The fault of a camera that does not suit the scene, in pictures of this size. Nothing can be drawn
    /// then.
    std::optional<Fault> cameraFault(PictureSize const& size);

    /// What a picture of this size has no room for.
    std::vector<Fault> const& notes(PictureSize const& size);

    /// Draws what colors mean, a bar of values or a list of kinds, into a finished picture; nothing where
    /// there is neither or no room for it.
    void drawLabels(Picture& picture);

    /// What is at the pixel of a picture of this size, or nothing; see Picker.
    std::optional<Picked> pick(PictureSize const& size, Pixel pixel);

private:
    void _layOut(PictureSize const& size);
    void _layOutBehind();
    GizmoDrawing _gizmo() const;
    Picker _picker(GizmoDrawing const& gizmo);
    bool _isGroundShown() const;
    std::optional<SizeBox> _sizeBox() const;

    void _placeLights() const;
    void _drawBehind(Region const& region, PictureSize const& size, Sampling const& sampling);
    void _drawSubjects(Sampling const& sampling);
    OceanScene const* _ocean() const;
    SurroundingSea const* _sea() const;
    void _drawModels(Sampling const& sampling);
    void _drawClouds(Sampling const& sampling);

    Core_RL& layer;
    Scene const& scene;
    ViewStyle style;
    Color4<float> ink;       // of lines and letters
    EffectRenderer* effect;  // may be null
    TextureStore textures;
    BlendedParts blended;
    std::vector<ModelRenderer> models;
    std::vector<CloudDrawing> clouds;
    std::vector<ObjectTransform> objectTransforms;  // of all objects
    std::optional<std::size_t> selected;
    GizmoHandle highlighted = GizmoHandle::NONE;
    CornerAxes cornerAxes;

    // For pictures of one size.
    std::optional<PictureSize> layoutSize;  // nothing: nothing has been drawn yet
    ViewLayout layout;
    SeaView seaView;  // of the camera; only in a sea
    Backdrop backdrop;
};

}  // namespace vellum::viewport
