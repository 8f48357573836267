#pragma once

#include "toolkit/Layer.h"
#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/live/Change.h"
#include "viewport/live/LiveScene.h"
#include "viewport/loading/Loader.h"
#include "viewport/text/Fault.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What a window has open, and all that may be done with it. It knows no window system: its owner passes what the user does and
/// calls update() every frame.
///
///     Workspace workspace(options);                 // a context is current, GLEW started
///     while (...) {
///         if (workspace.update(aspect)) redraw;
///         ...
///         Options options = workspace.options();
///         options.mesh.allEdges = true;
///         workspace.apply(options);
///     }
///
/// Files are read on another thread. What was open stays until what replaces it is there; a fault leaves it as it was.
class Workspace {
public:
    /// \param wake ends a wait of the owner; called on any thread
    Workspace(Options const& options, std::function<void()> wake);

    /// What is shown, or will be shown as soon as it is loaded.
    Options const& options() const { return wanted; }

    /// Shows something else. Does what has to be done again, and no more; what has to be read or prepared is there after some update().
    void apply(Options const& options);

    /// Looks from elsewhere, at once. Where that makes no camera, nothing changes.
    void setCamera(CameraSpec const& spec);

    /// Writes the picture of the scene, as --out does; see fault().
    void saveScreenshot(std::string const& path, PictureSize const& size);

    /// Shows other files, each seen whole and with its own defaults.
    void open(std::vector<std::string> const& files);

    /// Reads the files again and keeps the view.
    void reload();

    /// Takes over what has been loaded. Whether what is to be drawn has changed.
    /// \param aspect of the picture
    bool update(double aspect);

    /// Stops loading; what was open stays.
    void cancelLoading();
    bool isLoading() const { return loader.isLoading(); }
    LoadProgress progress() const { return loader.progress(); }

    LiveScene* scene() { return live.get(); }  ///< Null as long as nothing is open.
    toolkit::Layer& layer() { return *renderLayer; }

    /// Why the last request failed; nothing where it did not.
    std::optional<Fault> const& fault() const { return lastFault; }
    void forgetFault() { lastFault.reset(); }

    /// What the user is to know of what is open.
    std::vector<Fault> const& notes() const { return notesOfScene; }

private:
    void _load(Options const& options, std::shared_ptr<Content const> const& kept);
    bool _takeOver(LoadOutcome outcome, double aspect);

    std::unique_ptr<toolkit::Layer> renderLayer;
    std::unique_ptr<LiveScene> live;
    Options shown;   // of live
    Options wanted;  // being loaded, or the same as `shown`
    std::shared_ptr<Content const> content;
    std::vector<Fault> notesOfScene;
    std::optional<Fault> lastFault;
    Loader loader;
};

}  // namespace vellum::viewport
