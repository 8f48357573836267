#pragma once

#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "toolkit/View.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/files/images/Picture.h"
#include "viewport/live/DrawingFacts.h"
#include "viewport/live/Presentation.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// A scene that is looked at for a while, on one context: drawn fast while something moves, and with all its
/// pixels, as in a picture on the disk, when it rests. It knows no window system.
///
///     Result<std::unique_ptr<LiveScene>> live = LiveScene::make(layer, options, std::move(subject), aspect);
///     scene.setCamera(Navigation(scene.scene(), scene.camera()).orbit(dx, dy));
///     scene.draw(size);                                   // while the mouse moves
///     Result<Picture> const picture = scene.picture(size); // when it rests; the same as with --out
///
/// Of the options it takes the first picture's. The layer must outlive it, and the context is current to its
/// end.
class LiveScene {
public:
    /// A fault where the subject cannot be drawn here.
    /// \param words takes what leads to the fault, such as those of the driver's compiler; may be null
    static Result<std::unique_ptr<LiveScene>> make(toolkit::Layer& layer, Options options, Subject subject,
                                                   double aspect, std::vector<Fault>* words = nullptr);

    LiveScene(LiveScene const&) = delete;
    LiveScene& operator=(LiveScene const&) = delete;

    /// Draws another subject, such as another frame of the same files. A fault where it cannot be drawn: the
    /// scene then draws nothing and is to be replaced. \param words as in make()
    std::optional<Fault> show(Options const& options, Subject other, double aspect,
                              std::vector<Fault>* words = nullptr);

    /// Draws the same subject otherwise. The options must differ from the former ones only in what
    /// `LookChange` calls a look.
    void setLook(Options const& options);

    /// A fault, and the former camera, where that makes none.
    std::optional<Fault> setCamera(CameraSpec const& spec);
    ViewCamera const& camera() const { return viewer->camera(); }

    // == Editing ==

    /// Moves, turns and scales an object from where its file has it; one that cannot be drawn changes
    /// nothing. The camera stays.
    void setTransform(std::size_t object, ObjectTransform const& transform);

    /// The object that the gizmo is over; nothing: no gizmo is shown.
    void select(std::optional<std::size_t> object);
    void setGizmo(Gizmo gizmo);

    /// The handle that is drawn as the one under the cursor.
    void highlight(GizmoHandle handle);

    /// The handle at a pixel of a picture of this size.
    GizmoHandle handleAt(PictureSize const& size, Pixel pixel) { return viewer->handleAt(size, pixel); }

    /// The view that a picture of this size is drawn with.
    toolkit::View view(PictureSize const& size) { return viewer->view(size); }

    // == State ==

    Options const& options() const { return asked; }
    Scene const& scene() const { return subject.scene; }
    Subject const& shown() const { return subject; }

    /// Draws into the current framebuffer, one sample for each of its pixels, without labels. Particles thin
    /// out where a frame takes longer than the budget. What is transparent is drawn as checkers. State: that
    /// of Viewer::draw().
    void draw(PictureSize const& size);

    /// How long draw() may take until particles thin out.
    void setBudget(double seconds) { budget = seconds; }

    /// The part of the particles that draw() shows, 0 to 1.
    double detail() const { return drawnPart; }

    /// What the last draw() took, and how fast they follow each other.
    DrawingFacts const& facts() const { return drawingFacts; }

    /// The next draw() shows this part of them, 0 to 1: that of a scene which stands in for one that moves.
    void setDetail(double part);

    /// The next draw() shows all particles.
    void rest() { setDetail(1); }

    /// What explains the colors, alone: a picture with opacities, of what drawLabels() of a viewer draws.
    /// Nothing where there is nothing.
    std::optional<Picture> labels(PictureSize const& size);

    /// The scene as --out draws it, whatever has been drawn before. With the background of the options, which
    /// may be transparent. A fault where the driver has no buffer for it.
    Result<Picture> picture(PictureSize const& size);

    /// What is at a pixel of a picture of this size. The framebuffer is used up.
    std::optional<Picked> pick(PictureSize const& size, Pixel pixel) { return viewer->pick(size, pixel); }

    /// What the user is to know; each only once.
    std::vector<Fault> takeNotes() { return presentation.takeNotes(); }

private:
    LiveScene(toolkit::Layer& layer, Options options, Subject subject);
    void _makeViewer();
    void _showGizmo();

    toolkit::Layer& layer;
    Options asked;
    Subject subject;
    Presentation presentation;
    std::unique_ptr<Viewer> viewer;
    CameraSpec cameraSpec;
    std::unique_ptr<OffscreenContext> beside;  // for pictures; null: none has been drawn yet
    PictureSize drawnSize{0, 0};
    std::optional<std::size_t> selected;
    GizmoHandle highlighted = GizmoHandle::NONE;
    double budget = 0.06;  // seconds
    double drawnPart = 1;  // of the particles
    DrawingFacts drawingFacts;
    FrameRate frameRate;
};

}  // namespace vellum::viewport
