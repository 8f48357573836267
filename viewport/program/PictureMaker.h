#pragma once

#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/Picked.h"
#include "viewport/drawing/TiledPicture.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/live/Presentation.h"
#include "viewport/program/Console.h"

#include <functional>
#include <memory>
#include <optional>

namespace vellum::viewport {

/// Draws the pictures that the options ask for, one after the other on one context, and finds what is picked in them.
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

    /// Prepares what all pictures share. A failure where the driver lacks what is needed, or the stages of an effect have faults.
    std::optional<Failure> begin();

    /// Draws the picture, tells what is picked in it, and writes it to its file.
    /// \param tell called before the picture is drawn; only where something is to be picked
    std::optional<Failure> make(PictureOptions const& picture,
                                std::function<void(std::optional<Picked> const&)> const& tell);

    toolkit::Layer& layer() { return *renderLayer; }

private:
    std::optional<Failure> _prepare(PictureOptions const& picture);
    std::optional<Failure> _write(PictureOptions const& picture, Viewer& viewer);

    Options const& options;
    Subject& subject;
    OffscreenContext& context;
    std::unique_ptr<toolkit::Layer> renderLayer;
    std::unique_ptr<Presentation> presentation;
};

}  // namespace vellum::viewport
