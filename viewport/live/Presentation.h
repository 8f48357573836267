#pragma once

#include "toolkit/Layer.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/effects/EffectRenderer.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// A subject on one context: what all its pictures share, in files and in a window.
///
///     Presentation presentation(layer, options, subject);
///     if (std::optional<Presentation::Lack> const lack = presentation.prepare(aspect)) ...
///     std::unique_ptr<Viewer> const viewer = presentation.viewer(picture);
///
/// The context is current, with GLEW started, to its end. All that it is given must outlive it.
class Presentation {
public:
    /// Why a subject cannot be drawn.
    struct Lack {
        bool isOfOpenGL;           ///< of the driver; else of a file
        std::vector<Fault> words;  ///< what leads to the fault, such as those of the driver's compiler
        Fault fault;
    };

    Presentation(toolkit::Layer& layer, Options const& options, Subject& subject);

    /// Prepares what pictures of this shape share; to be called before viewer(), again for each shape.
    std::optional<Lack> prepare(double aspect);

    /// What the user is to know of what prepare() did; each only once.
    std::vector<Fault> takeNotes();

    /// How a picture shows the subject.
    static ViewStyle styleOf(Options const& options, PictureOptions const& picture, Subject const& subject);

    std::unique_ptr<Viewer> viewer(PictureOptions const& picture) const;

private:
    std::optional<Lack> _prepareMode();
    std::optional<Lack> _prepareEffect(double aspect);
    std::optional<Lack> _stageLack() const;

    toolkit::Layer& layer;
    Options const& options;
    Subject& subject;
    std::unique_ptr<EffectRenderer> effect;
    double effectAspect = 0;  // of the pictures that it was prepared for
    bool isBegun = false;
    std::vector<Fault> notes;
};

}  // namespace vellum::viewport
