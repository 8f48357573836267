#pragma once

#include "toolkit/Layer.h"
#include "viewport/content/ChannelCatalog.h"
#include "viewport/content/Content.h"
#include "viewport/content/FrameLine.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/editing/Gizmo.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/editing/UndoStack.h"
#include "viewport/live/Change.h"
#include "viewport/live/LiveScene.h"
#include "viewport/loading/FramePlayer.h"
#include "viewport/loading/Loader.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// What a window has open, and all that may be done with it. It knows no window system: its owner passes what
/// the user does and calls update() every frame.
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
/// Files are read on another thread. What was open stays until what replaces it is there; a fault leaves it
/// as it was. Other frames of what is open are read ahead, without opening the files again; the last one that
/// is asked for is shown in the end.
class Workspace {
public:
    /// \param wake ends a wait of the owner; called on any thread
    Workspace(Options const& options, std::function<void()> wake);

    /// What is shown, or will be shown as soon as it is loaded.
    Options const& options() const { return wanted; }

    /// Shows something else. Does what has to be done again, and no more; what has to be read or prepared is
    /// there after some update().
    void apply(Options const& options);

    /// Looks from elsewhere, at once. Where that makes no camera, nothing changes. Other files that are being
    /// loaded are seen whole all the same.
    void setCamera(CameraSpec const& spec);

    /// Writes the picture of the scene, as --out does, without a gizmo; see fault().
    void saveScreenshot(std::string const& path, PictureSize const& size);

    /// Shows other files, each seen whole and with its own defaults.
    void open(std::vector<std::string> const& files);

    /// Reads the files again and keeps the view.
    void reload();

    /// The frames of what is open; null where it has a single one, and as long as nothing is open.
    FrameLine const* frames() const { return player != nullptr ? &player->line() : nullptr; }

    /// The one that is shown.
    std::size_t shownFrame() const { return openContent != nullptr ? FrameLine::shownIn(*openContent) : 0; }

    /// Whether a frame that was asked for is still being read.
    bool isFrameAwaited() const { return player != nullptr && player->awaited(); }

    /// Takes over what has been loaded. Whether what is to be drawn has changed.
    /// \param aspect of the picture
    bool update(double aspect);

    /// Whether the objects of the scene are others since the last call: what refers to them is to be given
    /// up.
    bool takeReplaced() { return std::exchange(isReplaced, false); }

    /// Stops loading; what was open stays.
    void cancelLoading();
    bool isLoading() const { return loader.isLoading(); }
    LoadProgress progress() const { return loader.progress(); }

    // == Editing ==
    // Objects of the scene are counted from 0, the models first, then the particles.

    /// The object that the gizmo is over; nothing where none is selected.
    std::optional<std::size_t> selected() const { return chosen; }

    /// One that does not exist selects nothing.
    void select(std::optional<std::size_t> object);

    /// Where an object is drawn: identity where it was not moved, or does not exist. While it is dragged,
    /// where it was before.
    ObjectTransform transform(std::size_t object) const;

    /// Moves, turns and scales an object from where its file has it, as one step that can be undone. The
    /// camera stays. One that cannot be drawn changes nothing. \param label what is done, for a menu
    void setTransform(std::size_t object, ObjectTransform const& transform, std::string const& label);

    /// Shows an object elsewhere for the time of a drag; setTransform() makes it last.
    void preview(std::size_t object, ObjectTransform const& transform);

    /// Take back what was done last, and do it again. Nothing happens where there is none.
    void undo();
    void redo();
    bool canUndo() const { return steps.nextUndo() != nullptr; }
    bool canRedo() const { return steps.nextRedo() != nullptr; }

    /// What undo() takes back next, for a menu; empty: nothing. The same of redo().
    std::string undoLabel() const { return canUndo() ? steps.nextUndo()->label : std::string(); }
    std::string redoLabel() const { return canRedo() ? steps.nextRedo()->label : std::string(); }

    /// Which gizmo is over the selected object.
    Gizmo gizmo() const { return wanted.pictures.front().gizmo; }

    /// Where no object is selected, the first one is.
    void setGizmo(Gizmo gizmo);

    /// Whether editing has changed what is to be drawn since the last call.
    bool takeEdited() { return std::exchange(isEdited, false); }

    // == State ==

    LiveScene* scene() { return live.get(); }  ///< Null as long as nothing is open.
    toolkit::Layer& layer() { return *renderLayer; }

    /// What the files hold that are open; null as long as nothing is.
    std::shared_ptr<Content const> const& content() const { return openContent; }

    /// The values in them; to be asked every frame, never waits.
    ChannelCatalog& channels() { return catalog; }

    /// Why the last request failed; nothing where it did not.
    std::optional<Fault> const& fault() const { return lastFault; }
    void forgetFault() { lastFault.reset(); }

    /// What led to the last fault of drawing, such as the words of the driver's compiler; kept until
    /// something else is shown.
    std::vector<Fault> const& faultWords() const { return words; }

    /// A request of the owner's failed.
    void report(Fault const& fault) { lastFault = fault; }

    /// What the user is to know of what is open.
    std::vector<Fault> const& notes() const { return notesOfScene; }

private:
    void _load(Options const& options, std::shared_ptr<Content const> const& kept);
    void _showFrame(std::size_t frame);
    bool _takeOver(LoadOutcome outcome, double aspect);
    bool _takeFrame(LoadOutcome outcome, double aspect);
    void _dropMisfits(Options& options, Scene const& scene, std::vector<Fault>& notes);
    void _tellNotes(std::vector<Fault> notes);
    void _keep(std::size_t object, ObjectTransform const& transform);
    void _keepCamera(CameraSpec const& spec);
    void _forgetEdits();
    void _goBack();

    std::unique_ptr<toolkit::Layer> renderLayer;
    std::unique_ptr<LiveScene> live;
    Options shown;   // of live
    Options wanted;  // being loaded, or the same as `shown`
    std::shared_ptr<Content const> openContent;
    ChannelCatalog catalog;
    std::vector<Fault> notesOfScene;
    std::optional<Fault> lastFault;
    std::optional<std::size_t> chosen;
    UndoStack steps;
    bool isEdited = false;
    std::vector<Fault> words;
    bool isGoingBack = false;  // to `shown`, as `wanted` could not be drawn
    bool isRefused = false;    // `wanted` could not be drawn
    bool isReading = false;    // files are read by the loader; else it makes ready what is open
    bool isReplaced = false;   // see takeReplaced()
    std::function<void()> wake;
    Loader loader;
    std::unique_ptr<FramePlayer> player;   // of what is open; null: it has a single frame
    std::optional<Options> playerOptions;  // that it makes frames ready with
};

}  // namespace vellum::viewport
