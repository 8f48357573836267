#pragma once

#include "viewport/content/LoadObserver.h"
#include "viewport/content/Options.h"
#include "viewport/program/InfoDocument.h"
#include "viewport/program/ProgressBar.h"

#include <functional>
#include <optional>
#include <string>

namespace vellum::viewport {

/// Tells the user of the command line what is loaded: notes and progress on standard error, unless the
/// options silence them. Keeps what --info prints.
class ConsoleObserver : public LoadObserver {
public:
    /// \param options must outlive it.
    /// \param whenFileIsOpen called for each file that is there, before it is read; may not throw
    ConsoleObserver(Options const& options, std::function<void()> whenFileIsOpen);

    void note(Fault const& what) override;
    void progress(std::string const& file, std::uint64_t done, std::uint64_t all) override;
    void meshRead(std::string const& file, MeshData const& mesh) override;
    void particlesRead(LoadedFrame const& loaded) override;

    std::string texts;      ///< the description of the content, for --info
    InfoDocument document;  ///< the same as JSON; filled only where it is asked for

private:
    Options const& options;
    std::function<void()> whenFileIsOpen;
    std::string shownFile;
    std::optional<ProgressBar> bar;  // of the file that is read
};

}  // namespace vellum::viewport
