#pragma once

#include "toolkit/Layer.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/Tiling.h"
#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/effects/EffectRenderer.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
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

    /// Draws another subject from now on, which must outlive this; also the same one after it has changed.
    /// There must be no viewer of the one before, and prepare() is to be called again.
    void show(Subject& other);

    /// What the user is to know of what prepare() did; each only once, whatever the number of subjects.
    std::vector<Fault> takeNotes();

    /// The tiles that a picture of this size is drawn in.
    static Tiling tilingOf(Options const& options, PictureSize const& size);

    /// How a picture shows the subject.
    static ViewStyle styleOf(Options const& options, PictureOptions const& picture, Subject const& subject);

    std::unique_ptr<Viewer> viewer(PictureOptions const& picture) const {
        return viewer(styleOf(options, picture, *subject));
    }

    /// The same in another style than styleOf() says.
    std::unique_ptr<Viewer> viewer(ViewStyle const& style) const;

private:
    std::optional<Lack> _prepareMode();
    std::optional<Lack> _prepareEffect(double aspect);
    std::optional<Lack> _stageLack() const;
    void _tell(Fault const& note);

    toolkit::Layer& layer;
    Options const& options;
    Subject* subject;  // never null
    std::unique_ptr<EffectRenderer> effect;
    double effectAspect = 0;  // of the pictures that it was prepared for
    bool isBegun = false;     // with the subject
    std::vector<Fault> notes;
    std::set<std::string> told;  // lines of all notes so far
};

}  // namespace vellum::viewport
