#pragma once

#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/text/Fault.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Content that is ready to be drawn.
struct LoadedContent {
    Options options;                         ///< it was made with
    std::shared_ptr<Content const> content;  ///< whole, so that another subject can be made of it
    Subject subject;
};

/// How a loading ended.
struct LoadOutcome {
    std::optional<LoadedContent> loaded;  ///< nothing where it failed or was cancelled
    std::optional<Fault> fault;           ///< where it failed
    bool isCancelled = false;
    std::vector<Fault> notes;  ///< what the user is to know, in order; also those before a fault
};

/// How far a loading is.
struct LoadProgress {
    std::string file;        ///< the one that is read; empty: none yet
    std::uint64_t done = 0;  ///< bytes; decreases only where a file is read again
    std::uint64_t all = 0;   ///< bytes; 0: not known
};

/// Reads files and makes them ready on a thread of its own, while the owner's thread draws:
///
///     Loader loader;
///     loader.start(options);
///     while (...)                                            // each frame
///         if (std::optional<LoadOutcome> outcome = loader.poll())
///             if (outcome->loaded) ...                       // else what is shown stays as it is
///
/// No call waits, except for the destructor. All of them may come from any thread. It makes no OpenGL call.
class Loader {
public:
    /// \param wake is called on the loading thread each time an outcome is ready, so that an owner that waits for events looks;
    ///     may be empty. It must not call the loader.
    explicit Loader(std::function<void()> wake = {});

    /// Cancels, and waits for the thread: a few milliseconds, or until the picture that is being decoded is
    /// done.
    ~Loader();
    Loader(Loader const&) = delete;
    Loader& operator=(Loader const&) = delete;

    /// Begins to load. What was loading before is cancelled and gives no outcome. Two loadings never run at
    /// once: the new one begins once the thread of the one before has ended. \param kept what the files of
    /// the options hold, if that is known; null: they are read
    void start(Options const& options, std::shared_ptr<Content const> kept = nullptr);

    /// The outcome, once for each loading, or nothing as long as there is none.
    std::optional<LoadOutcome> poll();

    /// Whether an outcome is to come.
    bool isLoading() const;

    /// How far it is; empty where nothing is loading.
    LoadProgress progress() const;

    /// Gives up what is loading. Its outcome then says so, even where it was ready already. Nothing where
    /// nothing is loading.
    void cancel();

    /// The same, without an outcome.
    void forget();

private:
    struct Job;
    class JobObserver;

    static void _run(Job& job, std::function<void()> const& wake);
    static void _load(Job& job);
    static void _finish(Job& job);

    std::function<void()> wake;
    mutable std::mutex mutex;  // of what follows; held for moments only
    std::shared_ptr<Job> job;  // the one started last; null: none was
    bool isAwaited = false;    // its outcome was not taken yet
};

}  // namespace vellum::viewport
