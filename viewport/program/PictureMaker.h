#pragma once

#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/Picked.h"
#include "viewport/drawing/TiledPicture.h"
#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/live/Presentation.h"
#include "viewport/program/Console.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace vellum::viewport {

/// Draws the pictures that the options ask for, one after the other on one context, and finds what is picked
/// in them.
///
///     OffscreenContext context(PictureMaker::contextSettings(options));   // and GLEW started
///     PictureMaker maker(options, subject, context);
///     if (std::optional<Failure> const failure = maker.begin()) ...
///     for (PictureOptions const& picture : options.pictures)
///         if (std::optional<Failure> const failure = maker.make(picture, tell)) ...
///
/// All that it is given must outlive it.
class PictureMaker {
public:
    PictureMaker(Options const& options, Subject& subject, OffscreenContext& context);

    /// A buffer for the largest of the pictures.
    static OffscreenContext::Settings contextSettings(Options const& options);

    /// Prepares what all pictures share. A failure where the driver lacks what is needed, or the stages of an
    /// effect have faults.
    std::optional<Failure> begin();

    using Tell = std::function<void(std::optional<Picked> const&)>;

    /// Draws the picture, tells what is picked in it, and writes it to its file.
    /// \param tell called before the picture is drawn; only where something is to be picked
    std::optional<Failure> make(PictureOptions const& picture, Tell const& tell) {
        return make(picture, Presentation::styleOf(options, picture, *subject), tell);
    }

    /// The same in another style than Presentation::styleOf() says.
    std::optional<Failure> make(PictureOptions const& picture, ViewStyle const& style, Tell const& tell);

    /// The picture that was made last once more, from elsewhere and into another file.
    std::optional<Failure> makeAgain(PictureOptions const& picture, CameraSpec const& camera,
                                     Tell const& tell);

    /// Draws another subject from now on, which must outlive this; also the same one after it has changed.
    void show(Subject& other);

    toolkit::Layer& layer() { return *renderLayer; }

private:
    std::optional<Failure> _prepare(PictureOptions const& picture);
    std::optional<Failure> _pickAndWrite(PictureOptions const& picture, Tell const& tell);
    std::optional<Failure> _write(PictureOptions const& picture);
    void _say(PictureOptions const& picture, Fault const& what);

    Options const& options;
    Subject* subject;  // never null
    OffscreenContext& context;
    std::unique_ptr<toolkit::Layer> renderLayer;
    std::unique_ptr<Presentation> presentation;
    std::unique_ptr<Viewer> viewer;                      // of the last picture; uses all of the others
    std::set<std::pair<std::string, std::string>> said;  // the first picture of a film, and the note
};

}  // namespace vellum::viewport
